/// @file Queries for the appliance's external names: its dynamic-DNS host name, and its name at the
/// relay service, which forwards remote connections to it.
///
/// A query that finds nothing returns false and logs nothing. The tools and Web APIs need root.
/// Only GetDdnsHostName() and GetRelayName() become root; the other functions run as the caller.
#pragma once

#include <string>

namespace Tremolane::network_utils {

/// Reads the host name from the dynamic-DNS tool. The name is the first line of output up to the
/// first space. A line without a space is used whole, including its line break. If the tool prints
/// nothing, leaves `host` untouched and returns false.
bool ReadDdnsHostName(std::string& host);

/// Calls ReadDdnsHostName() as root.
bool GetDdnsHostName(std::string& host);

/// Reads the relay name from the relay tool. The name is the first line of output, including its
/// line break. If the tool prints nothing, leaves `name` untouched and returns false.
bool ReadRelayName(std::string& name);

/// Returns whether the relay service is switched on.
bool IsRelayEnabled();

/// Returns whether the relay service may forward to this package's portal.
bool IsRelayPortalEnabled();

/// Reads the relay name if the service is switched on and may forward to this package. Otherwise
/// returns false without running the tool.
bool QueryRelayName(std::string& name);

/// Calls QueryRelayName() as root on the first call in a process. Later calls return the cached
/// result, including a failure. Empties `name` if there is no relay name.
bool GetRelayName(std::string& name);

} // namespace Tremolane::network_utils
