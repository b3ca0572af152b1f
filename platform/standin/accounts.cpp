/// @file Reading accounts and groups from the passwd and group files with the C library.
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

/// A stream over an account file in memory, with a buffer that is large enough for any entry of it.
///
/// The C library seeks in the stream for every entry. In a real file each seek is a system call,
/// and if a seek fails, the library accesses memory out of bounds. If the buffer is too small for
/// an entry, the entry must be read again from its start with a larger one, which takes minutes for
/// a line of several megabytes.
class EntryFile {
public:
    explicit EntryFile(char const* path)
    {
        UniqueFd const fd = OpenRegularFile(path);
        if (fd && ReadToEnd(fd.Get(), m_text) && !m_text.empty()) {
            m_stream.reset(::fmemopen(m_text.data(), m_text.size(), "r"));
            m_size = m_text.size() * (1 + sizeof(char*) / 2) + kMargin;
            m_buffer = std::make_unique_for_overwrite<char[]>(m_size);
        }
    }

    /// Reads the next entry with `read`, which is fgetpwent_r() or fgetgrent_r(). The entry is
    /// valid until the next call. Returns null at the end, and if the file is empty or unreadable.
    template <class Entry>
    Entry* Next(int (*read)(FILE*, Entry*, char*, std::size_t, Entry**), Entry& entry)
    {
        Entry* found = nullptr;
        if (!m_stream || read(m_stream.get(), &entry, m_buffer.get(), m_size, &found) != 0) {
            return nullptr;
        }
        return found;
    }

private:
    struct Close {
        void operator()(FILE* stream) const { std::fclose(stream); }
    };
    /// An entry needs its text and one pointer for each group member, which takes at least two
    /// characters of text, name and comma. The margin is for alignment and for the null pointer
    /// that ends the list.
    static constexpr std::size_t kMargin = 64;

    std::string m_text;
    std::unique_ptr<FILE, Close> m_stream;
    std::unique_ptr<char[]> m_buffer;
    std::size_t m_size = 0;
};

/// Calls `use` with the entry of an account. Returns false if there is no such account.
template <class Use>
bool WithAccount(char const* name, Use const& use)
{
    EntryFile file(appliance::kPasswordFile);
    passwd storage{};
    while (passwd const* entry = file.Next(::fgetpwent_r, storage)) {
        if (std::strcmp(entry->pw_name, name) == 0) {
            use(*entry);
            return true;
        }
    }
    return false;
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
    bool isLocked = false;
    WithAccount(name.c_str(),
                [&](passwd const& account) { isLocked = account.pw_passwd[0] == '!'; });
    return isLocked;
}

bool IsMember(std::string const& name, char const* group)
{
    EntryFile file(appliance::kGroupFile);
    ::group storage{};
    while (::group const* entry = file.Next(::fgetgrent_r, storage)) {
        if (std::strcmp(entry->gr_name, group) == 0 && Lists(*entry, name)) {
            return true;
        }
    }
    return false;
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
