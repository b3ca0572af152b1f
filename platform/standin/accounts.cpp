/// @file Reading accounts and groups from the passwd and group files with the C library.
#include "platform/standin/accounts.h"

#include "kald/user.h"
#include "platform/appliance_paths.h"
#include "platform/standin/files.h"
#include "platform/standin/transaction.h"

#include <grp.h>
#include <pwd.h>

#include <cstdio>
#include <cstring>
#include <memory>

namespace standin {

namespace {

/// Calls `use` with each entry of an account file, in order, until it returns true. Returns whether
/// it did; false if the file is empty or unreadable. `read` is fgetpwent_r() or fgetgrent_r().
///
/// The file is read into memory because the C library seeks in the stream for every entry. In a
/// real file each seek is a system call, and if a seek fails, the library accesses memory out of
/// bounds. The buffer is large enough for any entry of the file, because otherwise an entry must be
/// read again from its start with a larger one, which takes minutes for a line of several
/// megabytes.
template <class Entry, class Use>
bool FindEntry(char const* path, int (*read)(FILE*, Entry*, char*, std::size_t, Entry**),
               Use const& use)
{
    std::string text;
    if (!ReadFile(path, text)) {
        Transaction::NoteFailure();
        return false;
    }
    if (text.empty()) {
        return false;
    }
    auto const close = [](FILE* stream) { std::fclose(stream); };
    std::unique_ptr<FILE, decltype(close)> const stream(::fmemopen(text.data(), text.size(), "r"));
    // An entry needs its text and a pointer for each group member, which takes at least two
    // characters, name and comma. The margin is for alignment and the null pointer at the end.
    constexpr std::size_t kMargin = 64;
    std::size_t const size = text.size() * (1 + sizeof(char*) / 2) + kMargin;
    auto const buffer = std::make_unique_for_overwrite<char[]>(size);
    Entry entry{};
    Entry* next = nullptr;
    while (stream && read(stream.get(), &entry, buffer.get(), size, &next) == 0) {
        if (use(entry)) {
            return true;
        }
    }
    return false;
}

/// Calls `use` with the entry of an account. Returns false if there is no such account.
template <class Use>
bool WithAccount(char const* name, Use const& use)
{
    return FindEntry(appliance::kPasswordFile, ::fgetpwent_r, [&](passwd const& account) {
        bool const isFound = std::strcmp(account.pw_name, name) == 0;
        if (isFound) {
            use(account);
        }
        return isFound;
    });
}

} // namespace

bool IsLocked(std::string const& name)
{
    bool isLocked = false;
    WithAccount(name.c_str(),
                [&](passwd const& account) { isLocked = account.pw_passwd[0] == '!'; });
    return isLocked;
}

bool IsMember(std::string const& name, char const* group)
{
    return FindEntry(appliance::kGroupFile, ::fgetgrent_r, [&](::group const& entry) {
        bool isMember = false;
        bool const isGroup = std::strcmp(entry.gr_name, group) == 0;
        for (char** member = entry.gr_mem; isGroup && *member != nullptr; ++member) {
            isMember = isMember || name == *member;
        }
        return isMember;
    });
}

} // namespace standin

int KALDUserGet(char const* name, KALDUser** out)
{
    bool const isFound = standin::WithAccount(name, [&](passwd const& account) {
        *out = new KALDUser{account.pw_gid, account.pw_uid};
    });
    return isFound ? 0 : -1;
}

void KALDUserFree(KALDUser* user)
{
    delete user;
}
