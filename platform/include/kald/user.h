/// @file The appliance's user records.
#pragma once

#include <cstdint>

/// The head of a user record.
struct KALDUser {
    std::uint32_t gid;
    std::uint32_t uid; ///< all ones: the record has no uid
};

/// Looks an account up by name. 0 and a record that the caller gives to KALDUserFree, or -1.
int KALDUserGet(char const* name, KALDUser** out);

/// Releases a record of KALDUserGet. Never given null.
void KALDUserFree(KALDUser* user);
