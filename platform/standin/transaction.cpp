/// @file The lock by flock(2), and the rollback journal: one file that holds the old versions.
///
/// The journal has an entry for each file: a line "SIZE NAME", then SIZE bytes of content. NAME is
/// relative to the package's folder. A SIZE of -1 stands for a file that did not exist. The journal
/// is replaced as a whole, so it is never seen half written.
#include "platform/standin/transaction.h"

#include "platform/appliance_paths.h"
#include "platform/standin/files.h"
#include "tremolane/tuner_daemon.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <syslog.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
#include <ctime>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace standin {

namespace {

constexpr char kFolder[] = PACKAGE_FOLDER "/";
constexpr char kLock[] = PACKAGE_FOLDER "/.schedules.lock";
constexpr char kJournal[] = PACKAGE_FOLDER "/.schedules.journal";

/// Longer than the slowest change takes by far, shorter than web servers wait for a CGI program.
constexpr int kLockSeconds = 10;

constexpr int kLockAttempts = 10; ///< if somebody deletes the lock file while it is waited for

Transaction* current = nullptr; ///< the transaction in progress

/// A file of the journal; `old` is none if it did not exist.
struct OldVersion {
    std::string path;
    std::optional<std::string_view> old;
};

/// Opens a file of the package's folder that only this system's user, or the owner of the folder,
/// can have written. Other users who can write to the folder must not hold requests up or have
/// files restored.
UniqueFd OpenOwn(char const* path, int flags)
{
    constexpr mode_t kMode = 0600;
    UniqueFd fd(::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | flags, kMode));
    struct stat info {};
    struct stat folder {};
    if (!fd || ::fstat(fd.Get(), &info) != 0 || ::stat(kFolder, &folder) != 0) {
        return UniqueFd();
    }
    bool const isTrusted = info.st_uid == ::geteuid() || info.st_uid == folder.st_uid;
    if (!S_ISREG(info.st_mode) || !isTrusted || (info.st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        errno = EPERM;
        return UniqueFd();
    }
    return fd;
}

/// Returns whether an open file is still the one at `path`.
bool IsStillAt(int fd, char const* path)
{
    struct stat opened {};
    struct stat named {};
    return ::fstat(fd, &opened) == 0 && ::lstat(path, &named) == 0 &&
           opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// Waits for the exclusive lock. Returns false with errno set to EINTR when the time is over.
bool LockInTime(int fd)
{
    struct sigaction interrupt {};
    interrupt.sa_handler = [](int) {}; // without SA_RESTART: flock() returns
    ::sigaction(SIGALRM, &interrupt, nullptr);
    sigset_t alarm{};
    ::sigaddset(&alarm, SIGALRM);
    ::sigprocmask(SIG_UNBLOCK, &alarm, nullptr);
    itimerval timer{{1, 0}, {kLockSeconds, 0}}; // repeats, should it expire just before flock()
    ::setitimer(ITIMER_REAL, &timer, nullptr);
    bool const isLocked = ::flock(fd, LOCK_EX) == 0;
    int const error = errno;
    timer = {};
    ::setitimer(ITIMER_REAL, &timer, nullptr);
    errno = error;
    return isLocked;
}

void LogFailure(char const* what, char const* path)
{
    ::syslog(LOG_ERR, "%s %s: %s", what, path, std::strerror(errno));
}

void LogLockFailure()
{
    if (errno == EINTR) {
        ::syslog(LOG_ERR, "another request has held %s for %d seconds", kLock, kLockSeconds);
    } else {
        LogFailure("cannot lock", kLock);
    }
}

/// Reads the journal's entries; none if the text is no journal.
std::optional<std::vector<OldVersion>> ParseJournal(std::string_view text)
{
    std::vector<OldVersion> files;
    while (!text.empty()) {
        int size = 0;
        char const* const end = text.data() + text.size();
        auto const [rest, error] = std::from_chars(text.data(), end, size);
        std::size_t const lineEnd = text.find('\n');
        if (error != std::errc() || lineEnd == text.npos || *rest != ' ') {
            return std::nullopt;
        }
        std::string const name(rest + 1, text.data() + lineEnd);
        text.remove_prefix(lineEnd + 1);
        std::size_t const length = size < 0 ? 0 : static_cast<std::size_t>(size);
        if (length > text.size() || name.find("..") != name.npos) {
            return std::nullopt;
        }
        files.push_back(
            {kFolder + name, size < 0 ? std::nullopt : std::optional(text.substr(0, length))});
        text.remove_prefix(length);
    }
    return files;
}

/// Restores a file, unless it was changed long after the journal was written: that was not the
/// request that left the journal, and what somebody else has stored since must not be lost.
bool Restore(OldVersion const& file, std::time_t journalTime)
{
    constexpr int kLongestRequest = 60; // seconds
    struct stat info {};
    RemoveTemporaryOf(file.path);
    if (::stat(file.path.c_str(), &info) == 0 && info.st_mtime > journalTime + kLongestRequest) {
        ::syslog(LOG_WARNING, "%s was changed after the unfinished request and is kept",
                 file.path.c_str());
        return true;
    }
    if (file.old) {
        return WriteWholeFile(file.path, *file.old);
    }
    return (::unlink(file.path.c_str()) == 0 || errno == ENOENT) && SyncFolderOf(file.path);
}

bool RestoreAll(int journal)
{
    struct stat info {};
    std::string text;
    if (::fstat(journal, &info) != 0 || !ReadText(journal, text)) {
        return false;
    }
    auto const files = ParseJournal(text);
    errno = EINVAL;
    return files && std::ranges::all_of(*files, [&info](OldVersion const& file) {
               return Restore(file, info.st_mtime);
           });
}

bool DeleteJournal()
{
    bool const isDeleted = ::unlink(kJournal) == 0 && SyncFolderOf(kJournal);
    if (!isDeleted) {
        LogFailure("cannot delete the journal", kJournal);
    }
    return isDeleted;
}

} // namespace

Transaction::~Transaction()
{
    if (current == this) {
        current = nullptr;
    }
}

bool Transaction::Begin()
{
    for (int attempt = 0; attempt < kLockAttempts; ++attempt) {
        m_lock = OpenOwn(kLock, O_CREAT);
        if (!m_lock && (errno == ENOENT || errno == ENOTDIR)) {
            return true; // without the package's folder no file can be replaced
        }
        if (!m_lock || !GiveToOwnerOfFolder(m_lock.Get(), kLock) || !LockInTime(m_lock.Get())) {
            LogLockFailure();
            return false;
        }
        if (IsStillAt(m_lock.Get(), kLock)) { // otherwise the lock keeps nobody out
            current = this;
            ForgetDeviceFailure();
            return RollBack();
        }
    }
    ::syslog(LOG_ERR, "cannot lock %s: it is deleted again and again", kLock);
    return false;
}

bool Transaction::Commit()
{
    if (HasDeviceFailed() && !m_savesOnce) {
        ::syslog(LOG_ERR, "a device failed or is full: the request is rolled back");
        RollBack();
        return false;
    }
    current = nullptr;
    return m_journal.empty() || DeleteJournal();
}

bool Transaction::RollBack()
{
    Transaction* const suspended = std::exchange(current, nullptr); // a restore is not journaled
    RemoveTemporaryOf(kJournal);
    UniqueFd const journal = OpenOwn(kJournal, 0);
    if (!journal && errno == ENOENT) {
        current = suspended;
        return true;
    }
    if (!journal || !RestoreAll(journal.Get())) {
        LogFailure("cannot roll back an unfinished request from", kJournal);
        return false;
    }
    KALDDTVDReloadSchedule(); // best effort; before the journal goes, so that a crash repeats it
    ::syslog(LOG_WARNING, "rolled back an unfinished request");
    m_journal.clear();
    m_kept.clear();
    current = suspended;
    return DeleteJournal();
}

bool Transaction::KeepOldVersion(std::string const& path)
{
    if (current == nullptr || !path.starts_with(kFolder) || current->m_kept.contains(path)) {
        return true;
    }
    if (current->m_savesOnce) {
        errno = EIO;
        return !HasDeviceFailed(); // the request may have missed something; it could not be undone
    }
    return current->AppendToJournal(path);
}

bool Transaction::AppendToJournal(std::string const& path)
{
    std::string content;
    UniqueFd const fd = OpenRegularFile(path.c_str());
    bool const isMissing = !fd && errno == ENOENT;
    if (!isMissing && (!fd || !ReadText(fd.Get(), content))) {
        return false;
    }
    std::string const size = isMissing ? "-1" : std::to_string(content.size());
    std::string journal = m_journal;
    journal += size + ' ' + path.substr(sizeof kFolder - 1) + '\n' + content;
    constexpr unsigned kMode = 0600; // a store may be as private
    if (!WriteWholeFile(kJournal, journal, kMode)) {
        return false;
    }
    m_journal = std::move(journal);
    m_kept.insert(path);
    return true;
}

} // namespace standin
