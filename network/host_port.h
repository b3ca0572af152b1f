/// @file The host and the port under which a client outside reaches the appliance.
///
/// A request that came in through the relay service keeps the address it came by; any other gets
/// the configured one. Nothing here fails: a source that gives nothing yields to the next.
#pragma once

#include <string>

namespace Tremolane::network_utils {

/// The domain of all names under the relay service. RFC 2606 keeps it from being anybody's.
inline constexpr char kRelayDomain[] = "tvr.example.com";
static_assert(sizeof kRelayDomain - 1 == 15, "a relay domain has 15 characters");

/// The two parts of a network location.
struct HostAndPort {
    std::string host; ///< an IPv6 literal keeps its square brackets (RFC 3986)
    std::string port; ///< not tested for being a number
};

/// Splits `host`, optional `:port`, optional `/path`, and drops the path; null counts as empty.
/// Each part is cut to 4095 characters.
HostAndPort SplitHostPort(char const* text);

/// Whether `host` is this appliance's name under the relay service: the relay domain stands
/// somewhere in it, and its first label is that of the relay name, case counted. Runs the relay
/// query of the process whatever `host` holds.
bool IsRelayHost(std::string host);

/// Whether the request came over TLS: HTTPS is "on" in any case of letters.
bool IsHttps();

/// The port of the request on a relay host, also if it has none; else the first that is not empty
/// of the configured port, the web server's own and the request's.
std::string GetExternalPort();

/// The host of the request if it is a relay host; else the first to be had of the configured host,
/// the dynamic-DNS host name, the relay name and the request's host. A name that a tool gave can
/// end in a line end.
std::string GetExternalHost();

} // namespace Tremolane::network_utils
