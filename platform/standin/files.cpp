/// @file Whole files over POSIX calls.
#include "platform/standin/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace standin {

namespace {

constexpr mode_t kNewFileMode = 0640;
constexpr mode_t kTemporaryMode = 0600; ///< until it has the mode of the file that it replaces
constexpr mode_t kPermissionBits = 0777;

int g_saves = 0;

bool IsSameFile(int fd, char const* path)
{
    struct stat opened {};
    struct stat named {};
    return ::fstat(fd, &opened) == 0 && ::lstat(path, &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// Opens the temporary file of a replacement and locks it. There is one name for it, so a file that
/// a killed process has left is taken over here and never piles up; the lock keeps two processes
/// that replace the same file apart.
UniqueFd OpenTemporary(std::string const& path)
{
    while (true) {
        UniqueFd fd(::open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                           kTemporaryMode));
        if (!fd || ::flock(fd.Get(), LOCK_EX) != 0) {
            return UniqueFd();
        }
        if (IsSameFile(fd.Get(), path.c_str())) { // else its last owner renamed or removed it
            return fd;
        }
    }
}

/// Gives a new file the mode of the file at `path` and, as root, its owner and group. Without an
/// old file it gets the mode of a new store.
bool CopyOwnerAndMode(int fd, std::string const& path)
{
    struct stat old {};
    if (::stat(path.c_str(), &old) != 0) {
        return errno == ENOENT && ::fchmod(fd, kNewFileMode) == 0;
    }
    bool const isOwnerKept = ::geteuid() != 0 || ::fchown(fd, old.st_uid, old.st_gid) == 0;
    return isOwnerKept && ::fchmod(fd, old.st_mode & kPermissionBits) == 0;
}

bool SyncFolderOf(std::string const& path)
{
    std::string const folder = path.substr(0, path.find_last_of('/') + 1);
    UniqueFd const fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return fd && ::fsync(fd.Get()) == 0;
}

/// Locks the old file, if it can change places with the temporary one: that name then belongs to
/// it, and another process must not take it over. A link to it, by either kind of name, cannot: a
/// process killed halfway would leave it where the next one writes.
UniqueFd LockOld(std::string const& path)
{
    struct stat old {};
    UniqueFd fd(::open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    bool const isAlone =
        fd && ::fstat(fd.Get(), &old) == 0 && S_ISREG(old.st_mode) && old.st_nlink == 1;
    return isAlone && ::flock(fd.Get(), LOCK_EX | LOCK_NB) == 0 ? std::move(fd) : UniqueFd();
}

bool Exchange(std::string const& one, std::string const& other)
{
    return ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) == 0;
}

/// Moves the temporary file to its place durably. It changes places with the old one, so that they
/// can change back if the folder does not reach the disk; on a file system that has no exchange, or
/// without an old file, that is not undone.
bool Commit(std::string const& temporary, std::string const& path)
{
    UniqueFd const old = LockOld(path);
    bool const exchanged = old && Exchange(temporary, path);
    bool const moved = exchanged || std::rename(temporary.c_str(), path.c_str()) == 0;
    bool const synced = moved && SyncFolderOf(path);
    if (exchanged && !synced) {
        Exchange(temporary, path);
    }
    if (exchanged || !moved) {
        ::unlink(temporary.c_str());
    }
    return synced;
}

} // namespace

UniqueFd OpenRegularFile(char const* path)
{
    UniqueFd fd(::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat info {};
    if (!fd || ::fstat(fd.Get(), &info) != 0) {
        return UniqueFd();
    }
    if (!S_ISREG(info.st_mode)) {
        errno = EINVAL;
        return UniqueFd();
    }
    return fd;
}

std::size_t SizeOf(int fd)
{
    struct stat info {};
    return ::fstat(fd, &info) == 0 && info.st_size > 0 ? static_cast<std::size_t>(info.st_size) : 0;
}

bool ReadToEnd(int fd, std::string& text)
{
    constexpr std::size_t kStep = 4096; // by which a file that grows is read on
    std::size_t used = text.size();
    std::size_t room = SizeOf(fd) + 1; // one more shows the end at once
    while (true) {
        text.resize(used + room);
        ssize_t const got = ::read(fd, text.data() + used, room);
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            text.resize(used);
            return got == 0;
        }
        used += static_cast<std::size_t>(got);
        room = kStep;
    }
}

bool WriteAll(int fd, std::string_view text)
{
    while (!text.empty()) {
        ssize_t const put = ::write(fd, text.data(), text.size());
        if (put < 0 && errno == EINTR) {
            continue;
        }
        if (put < 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(put));
    }
    return true;
}

int SavesOfThisProcess()
{
    return g_saves;
}

bool ReplaceFile(std::string const& path, std::string_view text)
{
    ++g_saves;
    std::string const temporary = path + ".tmp";
    UniqueFd fd = OpenTemporary(temporary);
    if (!fd) {
        return false;
    }
    if (::ftruncate(fd.Get(), 0) != 0 || !WriteAll(fd.Get(), text) ||
        !CopyOwnerAndMode(fd.Get(), path) || ::fsync(fd.Get()) != 0) {
        ::unlink(temporary.c_str());
        return false;
    }
    return Commit(temporary, path);
}

} // namespace standin
