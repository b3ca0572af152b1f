/// @file Reading the variables of the CGI environment (RFC 3875).
#pragma once

#include <cstdlib>
#include <string>

namespace appliance {

/// Returns the value of an environment variable; empty if it is unset.
inline std::string Environment(char const* name)
{
    char const* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

} // namespace appliance
