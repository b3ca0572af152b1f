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

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstring>
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

Transaction* g_current = nullptr;

/// A file of the journal; `old` is none if it did not exist.
struct OldVersion {
    std::string path;
    std::optional<std::string_view> old;
};

/// Whether an open file is a regular one of this process's user that nobody else can write. Other
/// users who can write to the folder must not hold requests up or have files restored.
bool IsOwn(int fd)
{
    struct stat info {};
    bool const isOwn = ::fstat(fd, &info) == 0 && S_ISREG(info.st_mode) &&
                       (info.st_uid == ::geteuid() || ::geteuid() == 0) &&
                       (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
    errno = EPERM;
    return isOwn;
}

UniqueFd OpenOwn(char const* path, int flags)
{
    constexpr mode_t kMode = 0600;
    UniqueFd fd(::open(path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | flags, kMode));
    return fd && IsOwn(fd.Get()) ? std::move(fd) : UniqueFd();
}

/// Waits for the exclusive lock; false with errno set to EINTR when the time is over.
bool LockInTime(int fd)
{
    struct sigaction interrupt {};
    interrupt.sa_handler = [](int) {}; // without SA_RESTART: flock() returns
    ::sigaction(SIGALRM, &interrupt, nullptr);
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

bool Restore(OldVersion const& file)
{
    if (file.old) {
        return WriteWholeFile(file.path, *file.old);
    }
    return (::unlink(file.path.c_str()) == 0 || errno == ENOENT) && SyncFolderOf(file.path);
}

bool RestoreAll(int journal)
{
    std::string text;
    if (!ReadToEnd(journal, text)) {
        return false;
    }
    auto const files = ParseJournal(text);
    errno = EINVAL;
    bool areRestored = files.has_value();
    for (std::size_t i = 0; areRestored && i < files->size(); ++i) {
        areRestored = Restore((*files)[i]);
    }
    return areRestored;
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
    if (g_current == this) {
        g_current = nullptr;
    }
}

bool Transaction::Begin()
{
    m_lock = OpenOwn(kLock, O_CREAT);
    if (!m_lock && (errno == ENOENT || errno == ENOTDIR)) {
        return true; // without the package's folder no file can be replaced
    }
    if (!m_lock || !LockInTime(m_lock.Get())) {
        LogFailure(errno == EINTR ? "another request holds for too long" : "cannot lock", kLock);
        return false;
    }
    g_current = this;
    return RollBack();
}

bool Transaction::Commit()
{
    g_current = nullptr;
    return m_journal.empty() || DeleteJournal();
}

bool Transaction::RollBack()
{
    Transaction* const current = std::exchange(g_current, nullptr); // a restore is not journaled
    RemoveTemporaryOf(kJournal);
    UniqueFd const journal = OpenOwn(kJournal, 0);
    if (!journal && errno == ENOENT) {
        g_current = current;
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
    g_current = current;
    return DeleteJournal();
}

bool Transaction::KeepOldVersion(std::string const& path)
{
    if (g_current == nullptr || !path.starts_with(kFolder) || g_current->m_kept.contains(path)) {
        return true;
    }
    return g_current->AppendToJournal(path);
}

bool Transaction::AppendToJournal(std::string const& path)
{
    std::string content;
    UniqueFd const fd = OpenRegularFile(path.c_str());
    bool const isMissing = !fd && errno == ENOENT;
    if (!isMissing && (!fd || !ReadToEnd(fd.Get(), content))) {
        return false;
    }
    std::string const size = isMissing ? "-1" : std::to_string(content.size());
    std::string journal = m_journal;
    journal += size + ' ' + path.substr(sizeof kFolder - 1) + '\n' + content;
    if (!WriteWholeFile(kJournal, journal)) {
        return false;
    }
    m_journal = std::move(journal);
    m_kept.insert(path);
    return true;
}

} // namespace standin
