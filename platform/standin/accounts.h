/// @file Queries about the appliance's accounts and groups.
#pragma once

#include <string>

namespace standin {

/// Returns whether the account exists and is locked: its password field starts with "!".
bool IsLocked(std::string const& name);

/// Returns whether `group` lists the account as a member.
bool IsMember(std::string const& name, char const* group);

} // namespace standin
