/// @file Accounts and groups, read from the passwd and group files with the C library.
#include "platform/standin/accounts.h"

#include "kald/user.h"
#include "platform/appliance_paths.h"

#include <grp.h>
#include <pwd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

namespace standin {

namespace {

struct CloseFile {
    void operator()(FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

/// The account's entry, in the C library's static storage, or null.
passwd const* FindAccount(char const* name)
{
    File const file(std::fopen(appliance::kPasswordFile, "re"));
    if (!file) {
        return nullptr;
    }
    while (passwd const* entry = ::fgetpwent(file.get())) {
        if (std::strcmp(entry->pw_name, name) == 0) {
            return entry;
        }
    }
    return nullptr;
}

bool Lists(group const& entry, std::string const& name)
{
    for (char** member = entry.gr_mem; *member != nullptr; ++member) {
        if (name == *member) {
            return true;
        }
    }
    return false;
}

} // namespace

bool IsLocked(std::string const& name)
{
    passwd const* const account = FindAccount(name.c_str());
    return account != nullptr && account->pw_passwd[0] == '!';
}

bool IsMember(std::string const& name, char const* group)
{
    File const file(std::fopen(appliance::kGroupFile, "re"));
    if (!file) {
        return false;
    }
    while (::group const* entry = ::fgetgrent(file.get())) {
        if (std::strcmp(entry->gr_name, group) == 0 && Lists(*entry, name)) {
            return true;
        }
    }
    return false;
}

} // namespace standin

int KALDUserGet(char const* name, KALDUser** out)
{
    passwd const* const account = standin::FindAccount(name);
    if (account == nullptr) {
        return -1;
    }
    *out = new KALDUser{account->pw_gid, account->pw_uid};
    return 0;
}

void KALDUserFree(KALDUser* user)
{
    delete user;
}
