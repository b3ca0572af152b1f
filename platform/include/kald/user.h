/// @file The appliance's user records.
#pragma once

#include <cstdint>

/// The first members of a user record.
struct KALDUser {
    std::uint32_t gid;
    std::uint32_t uid; ///< all ones if the record has no uid
};

/// Looks up an account by name. Returns 0 and a record that the caller releases with
/// KALDUserFree(), or -1 on failure.
int KALDUserGet(char const* name, KALDUser** out);

/// Releases a record from KALDUserGet(). `user` is never null.
void KALDUserFree(KALDUser* user);
