/// @file Accounts and groups, read from the passwd and group files with the C library.
#include "platform/standin/accounts.h"

#include "kald/user.h"
#include "platform/appliance_paths.h"
#include "platform/standin/files.h"

#include <grp.h>
#include <pwd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

namespace standin {

namespace {

/// A file read into memory and as a stream. The C library goes back in such a stream for every
/// entry; on the disk that is a system call each, and one that fails drives it out of its bounds.
class TextStream {
public:
    explicit TextStream(char const* path)
    {
        UniqueFd const fd = OpenRegularFile(path);
        if (fd && ReadToEnd(fd.Get(), m_text) && !m_text.empty()) {
            m_stream.reset(::fmemopen(m_text.data(), m_text.size(), "r"));
        }
    }

    /// Null if the file cannot be read or is empty.
    FILE* Get() const { return m_stream.get(); }

private:
    struct Close {
        void operator()(FILE* stream) const { std::fclose(stream); }
    };
    std::string m_text;
    std::unique_ptr<FILE, Close> m_stream;
};

/// The account's entry, in the C library's static storage, or null.
passwd const* FindAccount(char const* name)
{
    TextStream const file(appliance::kPasswordFile);
    while (passwd const* entry = file.Get() != nullptr ? ::fgetpwent(file.Get()) : nullptr) {
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
    TextStream const file(appliance::kGroupFile);
    while (::group const* entry = file.Get() != nullptr ? ::fgetgrent(file.Get()) : nullptr) {
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
