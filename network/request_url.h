/// @file URLs of the Web API's own location, from the environment of the request.
#pragma once

#include <string>

namespace Tremolane::network_utils {

/// The path that leads to the Web API: REQUEST_URI up to its first "/webapi", or all of it, query
/// string included, if it has none.
std::string GetBasePath();

/// The location's URL as the client sees it; empty without HTTP_HOST. Secure under the relay
/// domain, and wherever HTTPS is set to anything, "off" too.
std::string GetRequestUrl();

/// The location's URL for a client outside. Behind the relay service it is always secure, has no
/// port, and leads through "/direct".
std::string GetExternalUrl();

} // namespace Tremolane::network_utils
