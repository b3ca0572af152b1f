/// @file Reading and replacing whole files with POSIX calls.
#include "platform/standin/files.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace standin {

namespace {

constexpr mode_t kTemporaryMode = 0600; ///< until CopyOwnerAndMode() sets the final mode
constexpr mode_t kPermissionBits = 0777;

std::string TemporaryOf(std::string const& path)
{
    return path + ".tmp";
}

/// Creates the temporary file of a replacement, after deleting one that a killed process left. Only
/// ever opens a new file: it follows no link and writes to no file of another user.
UniqueFd OpenTemporary(std::string const& path)
{
    ::unlink(path.c_str());
    return UniqueFd(
        ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kTemporaryMode));
}

/// As root, gives a file the owner and group of another one.
bool CopyOwner(int fd, struct stat const& other)
{
    return ::geteuid() != 0 || ::fchown(fd, other.st_uid, other.st_gid) == 0;
}

/// Gives the open file the mode of the file at `path` and, as root, its owner and group. If there
/// is no file at `path`, sets `newMode` and, as root, the owner of the folder.
bool CopyOwnerAndMode(int fd, std::string const& path, mode_t newMode)
{
    struct stat old {};
    if (::stat(path.c_str(), &old) != 0) {
        return errno == ENOENT && GiveToOwnerOfFolder(fd, path) && ::fchmod(fd, newMode) == 0;
    }
    if (!S_ISREG(old.st_mode)) {
        errno = EINVAL; // otherwise RENAME_EXCHANGE would swap even a folder with the new file
        return false;
    }
    return CopyOwner(fd, old) && ::fchmod(fd, old.st_mode & kPermissionBits) == 0;
}

/// Exchanges two files atomically. On failure returns false and sets errno.
bool Exchange(std::string const& one, std::string const& other)
{
    return ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE) == 0;
}

/// Moves the temporary file to `path` durably. Exchanges it with the old file, so that the exchange
/// can be reversed if the folder cannot be synced. If there was no old file, deletes the new one in
/// that case. On a file system that cannot exchange files, a failed sync is not undone.
bool Commit(std::string const& path)
{
    std::string const temporary = TemporaryOf(path);
    struct stat old {};
    bool const isNew = ::lstat(path.c_str(), &old) != 0 && errno == ENOENT;
    bool const isExchanged = !isNew && Exchange(temporary, path);
    bool const isMoved = isExchanged || MoveTemporary(path);
    bool const isSynced = isMoved && SyncFolderOf(path);
    int const error = errno;
    if (isExchanged && !isSynced) {
        Exchange(temporary, path);
    }
    if (isNew && isMoved && !isSynced) {
        ::unlink(path.c_str());
    }
    RemoveTemporaryOf(path);
    errno = error;
    return isSynced;
}

/// Opens a file, which must be a regular one, for reading.
UniqueFd OpenRegularFile(char const* path)
{
    UniqueFd fd(::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    struct stat info {};
    if (!fd || ::fstat(fd.Get(), &info) != 0) {
        if (errno == ENOENT && ::lstat(path, &info) == 0) {
            errno = ENXIO; // a dangling link: the volume that holds its target may come back
        }
        return UniqueFd();
    }
    if (!S_ISREG(info.st_mode)) {
        errno = EINVAL;
        return UniqueFd();
    }
    return fd;
}

} // namespace

bool ReadFile(char const* path, std::string& text)
{
    UniqueFd const fd = OpenRegularFile(path);
    return fd && ReadText(fd.Get(), text);
}

bool ReadText(int fd, std::string& text, std::size_t limit)
{
    struct stat info {};
    if (::fstat(fd, &info) == 0 && S_ISREG(info.st_mode)) {
        text.reserve(text.size() + static_cast<std::size_t>(info.st_size));
    }
    char block[std::size_t{16} * 1024];
    while (limit > 0) {
        ssize_t const got = TEMP_FAILURE_RETRY(::read(fd, block, std::min(limit, sizeof block)));
        if (got <= 0) {
            return got == 0;
        }
        text.append(block, static_cast<std::size_t>(got));
        limit -= static_cast<std::size_t>(got);
    }
    return true;
}

bool WriteAll(int fd, std::string_view text)
{
    while (!text.empty()) {
        ssize_t const put = TEMP_FAILURE_RETRY(::write(fd, text.data(), text.size()));
        if (put < 0) {
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(put));
    }
    return true;
}

bool GiveToOwnerOfFolder(int fd, std::string const& path)
{
    struct stat folder {};
    return ::stat(FolderOf(path).c_str(), &folder) == 0 && CopyOwner(fd, folder);
}

std::string FolderOf(std::string const& path)
{
    return path.substr(0, path.find_last_of('/') + 1);
}

bool SyncFile(std::string const& path)
{
    UniqueFd const fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
    return fd && ::fsync(fd.Get()) == 0;
}

bool SyncFolderOf(std::string const& path)
{
    return SyncFile(FolderOf(path));
}

void RemoveTemporaryOf(std::string const& path)
{
    int const error = errno;
    ::unlink(TemporaryOf(path).c_str());
    errno = error;
}

UniqueFd WriteTemporary(std::string const& path, std::string_view text, unsigned newMode)
{
    UniqueFd fd = OpenTemporary(TemporaryOf(path));
    if (!fd || !WriteAll(fd.Get(), text) || !CopyOwnerAndMode(fd.Get(), path, newMode)) {
        RemoveTemporaryOf(path);
        return UniqueFd();
    }
    return fd;
}

bool MoveTemporary(std::string const& path)
{
    return std::rename(TemporaryOf(path).c_str(), path.c_str()) == 0;
}

bool WriteWholeFile(std::string const& path, std::string_view text, unsigned newMode)
{
    UniqueFd const fd = WriteTemporary(path, text, newMode);
    if (!fd || ::fsync(fd.Get()) != 0) {
        RemoveTemporaryOf(path);
        return false;
    }
    return Commit(path);
}

} // namespace standin
