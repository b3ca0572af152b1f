/// @file The host and the port at which a client outside the local network reaches the appliance.
///
/// A request that came through the relay service keeps the address that it used. Any other request
/// gets the configured address. The functions never fail: if a source has no value, the next one is
/// tried.
#pragma once

#include <string>

namespace Tremolane::network_utils {

/// The domain of all relay names. RFC 2606 reserves it, so it belongs to nobody.
inline constexpr char kRelayDomain[] = "tvr.example.com";
static_assert(sizeof kRelayDomain - 1 == 15, "the relay domain must have 15 characters");

/// The two parts of a network location.
struct HostAndPort {
    std::string host; ///< an IPv6 address keeps its square brackets (RFC 3986)
    std::string port; ///< may be no number
};

/// Splits `host[:port][/path]` and drops the path. Null is treated as empty text. Each part is cut
/// to 4095 characters.
HostAndPort SplitHostPort(char const* text);

/// Returns whether `host` is this appliance's name at the relay service: it contains the relay
/// domain, and its first label equals that of the relay name, case-sensitively. Always calls
/// GetRelayName(), whatever `host` holds.
bool IsRelayHost(std::string host);

/// Returns whether the request came over TLS: whether HTTPS is "on", case-insensitively.
bool IsHttps();

/// Returns the external port. For a request to the relay host it is the port of the request, even
/// if that is empty. Otherwise it is the first of these that is not empty: the configured port, the
/// web server's port, the port of the request.
std::string GetExternalPort();

/// Returns the external host. For a request to the relay host it is the host of the request.
/// Otherwise it is the first of these that is available: the configured host, the dynamic-DNS host
/// name, the relay name, the host of the request. A name that a tool printed can end with a line
/// break.
std::string GetExternalHost();

} // namespace Tremolane::network_utils
