/// @file The appliance's accounts and groups.
#pragma once

#include <string>

namespace standin {

/// Whether the account exists and its password field is locked with a leading "!".
bool IsLocked(std::string const& name);

/// Whether `group` lists the account as a member.
bool IsMember(std::string const& name, char const* group);

} // namespace standin
