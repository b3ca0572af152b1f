/// @file The variables that the web server hands over (RFC 3875).
#pragma once

#include <cstdlib>
#include <string>

namespace Tremolane::network_utils {

/// The value of an environment variable; empty if it is unset.
inline std::string Environment(char const* name)
{
    char const* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace Tremolane::network_utils
