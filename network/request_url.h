/// @file URLs of the Web API itself, derived from the environment of the request.
#pragma once

#include <string>

namespace Tremolane::network_utils {

/// Returns the path in front of the Web API: REQUEST_URI up to its first "/webapi". Returns all of
/// REQUEST_URI, including the query string, if it does not contain "/webapi".
std::string GetBasePath();

/// Returns the URL of the base path as the client sees it; empty without HTTP_HOST. The scheme is
/// https if the host ends with the relay domain or if HTTPS is set, even to "off".
std::string GetRequestUrl();

/// Returns the URL of the base path for a client outside the local network. Behind the relay
/// service the scheme is always https, there is no port, and the path starts with "/direct".
std::string GetExternalUrl();

} // namespace Tremolane::network_utils
