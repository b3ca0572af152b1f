/// @file Whole files over POSIX calls.
#include "platform/standin/files.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

namespace standin {

namespace {

constexpr mode_t kNewFileMode = 0644;
constexpr mode_t kPermissionBits = 0777;

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
        UniqueFd fd(
            ::open(path.c_str(), O_WRONLY | O_CREAT | O_NOFOLLOW | O_CLOEXEC, kNewFileMode));
        if (!fd || ::flock(fd.Get(), LOCK_EX) != 0) {
            return UniqueFd();
        }
        if (IsSameFile(fd.Get(), path.c_str())) { // else its last owner renamed or removed it
            return fd;
        }
    }
}

mode_t ModeFor(std::string const& path)
{
    struct stat old {};
    return ::stat(path.c_str(), &old) == 0 ? old.st_mode & kPermissionBits : kNewFileMode;
}

bool SyncFolderOf(std::string const& path)
{
    std::string const folder = path.substr(0, path.find_last_of('/') + 1);
    UniqueFd const fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return fd && ::fsync(fd.Get()) == 0;
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

bool ReadToEnd(int fd, std::string& text)
{
    struct stat info {};
    std::size_t used = text.size();
    std::size_t room = 4096;
    if (::fstat(fd, &info) == 0 && info.st_size > 0) {
        room = static_cast<std::size_t>(info.st_size) + 1; // one more shows the end at once
    }
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
        room = 4096;
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

bool ReplaceFile(std::string const& path, std::string_view text)
{
    std::string const temporary = path + ".tmp";
    UniqueFd fd = OpenTemporary(temporary);
    if (!fd) {
        return false;
    }
    bool const written = ::ftruncate(fd.Get(), 0) == 0 && WriteAll(fd.Get(), text) &&
                         ::fchmod(fd.Get(), ModeFor(path)) == 0 && ::fsync(fd.Get()) == 0;
    if (!written || std::rename(temporary.c_str(), path.c_str()) != 0) {
        ::unlink(temporary.c_str());
        return false;
    }
    return SyncFolderOf(path);
}

} // namespace standin
