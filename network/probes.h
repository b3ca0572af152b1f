/// @file What the appliance knows of its names outside: its dynamic-DNS host name, and the name
/// under which the relay service, its remote-connection service, reaches it.
///
/// A probe that finds nothing logs nothing and returns false. Tools and Web APIs need root; the two
/// operations that see to it are GetDdnsHostName() and GetRelayName().
#pragma once

#include <string>

namespace Tremolane::network_utils {

/// Asks the dynamic-DNS tool. The name ends at the first blank of the tool's first line; in a line
/// without one it keeps the line end. `host` is untouched if the tool prints nothing.
bool ReadDdnsHostName(std::string& host);

/// The same as root.
bool GetDdnsHostName(std::string& host);

/// Asks the relay tool. The name is its first line as it stands, line end included; `name` is
/// untouched if the tool prints nothing.
bool ReadRelayName(std::string& name);

/// Whether the relay service is switched on.
bool IsRelayEnabled();

/// Whether the relay service may lead to this package's portal.
bool IsRelayPortalEnabled();

/// The relay name, if the service is on and may lead here; the tool runs in no other case.
bool QueryRelayName(std::string& name);

/// The same as root, and once in a process: what was found then, or not found, is the answer ever
/// after. `name` is emptied if there is none.
bool GetRelayName(std::string& name);

} // namespace Tremolane::network_utils
