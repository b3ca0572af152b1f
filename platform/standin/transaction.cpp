/// @file The lock by flock(2), and the rollback journal: one file that holds the old versions.
///
/// A request that changes files goes through these steps:
/// 1. Begin() takes the lock. If there is a journal, its request never ended: its old versions are
///    restored and synced, the daemon is told, and the journal is deleted.
/// 2. The journal in memory gets each store that the request loads. The first save of a file adds
///    its old version, if it was not loaded, and writes the new one to a temporary file. Later
///    saves of it stay in memory.
/// 3. Before a command goes to the daemon, and at the end: the journal is written and synced with
///    its folder if it has new entries; then the temporary files are moved to their places.
/// 4. Commit() syncs the changed files and their folders, once each, and deletes the journal. The
///    changes are final.
/// 5. It syncs the folder of the journal: they stay final if the power fails.
///
/// The journal has an entry for each file: a line "SIZE NAME", then SIZE bytes of content. NAME is
/// relative to the package's folder. A SIZE of -1 stands for a file that did not exist. The journal
/// is replaced as a whole, so it is never seen half written.
#include "platform/standin/transaction.h"

#include "platform/appliance_paths.h"
#include "platform/standin/files.h"
#include "platform/standin/json_writer.h"
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
#include <set>
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

/// The transaction in progress. The calls of the appliance's libraries that save and load have no
/// place for it, and a process handles one request at a time.
Transaction* current = nullptr;

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

std::string Render(Document const& document)
{
    return RenderJson(document.value, Charset::kUtf8) + '\n';
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
            return RollBack();
        }
    }
    ::syslog(LOG_ERR, "cannot lock %s: it is deleted again and again", kLock);
    return false;
}

bool Transaction::Commit()
{
    bool const isComplete = m_savesOnce || (!m_hasDeviceFailed && WriteOut() && SyncAll());
    if (!isComplete) {
        ::syslog(LOG_ERR, "a device failed or is full: the request is rolled back");
        RollBack();
        return false;
    }
    current = nullptr;
    return !m_hasJournal || DeleteJournal();
}

bool Transaction::RollBack()
{
    Transaction* const suspended = std::exchange(current, nullptr); // a restore is not journaled
    for (auto const& [path, saved] : m_saved) {
        RemoveTemporaryOf(path);
    }
    m_saved.clear();
    std::string().swap(m_journal); // its memory may be all that is left to read the file into
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
    current = suspended;
    return DeleteJournal();
}

Transaction* Transaction::For(std::string const& path)
{
    return path.starts_with(kFolder) ? current : nullptr;
}

Transaction* Transaction::Keeping(std::string const& path)
{
    Transaction* const transaction = For(path);
    return transaction != nullptr && !transaction->m_savesOnce ? transaction : nullptr;
}

bool Transaction::MayReplaceFile()
{
    errno = EIO;
    return !std::exchange(m_hasSavedOnce, true) && !m_hasDeviceFailed;
}

void Transaction::NoteFailure()
{
    for (int const error : {EIO, ENOSPC, EDQUOT, EFBIG, EROFS, ENOMEM, EMFILE, ENFILE}) {
        if (current != nullptr && errno == error) {
            current->m_hasDeviceFailed = true;
        }
    }
}

Document* Transaction::FindSaved(std::string const& path)
{
    if (current == nullptr) {
        return nullptr;
    }
    auto const saved = current->m_saved.find(path);
    return saved == current->m_saved.end() ? nullptr : &saved->second.document;
}

bool Transaction::Save(std::string const& path, Document document)
{
    bool const isFirst = !m_saved.contains(path);
    if (isFirst && (!KeepOldVersion(path) || !WriteTemporary(path, Render(document)))) {
        NoteFailure();
        return false;
    }
    m_saved.insert_or_assign(path, Saved{std::move(document), isFirst, false});
    return true;
}

void Transaction::KeepLoaded(std::string const& path, std::string_view text)
{
    bool const isStore = path.ends_with(".json"); // and no setting, which others may change
    if (isStore && Keeping(path) != nullptr) {
        current->Keep(path, std::to_string(text.size()), text);
    }
}

bool Transaction::KeepOldVersion(std::string const& path)
{
    if (m_kept.contains(path)) {
        return true;
    }
    std::string content;
    bool const isRead = ReadFile(path.c_str(), content);
    if (!isRead && errno != ENOENT) {
        return false;
    }
    Keep(path, isRead ? std::to_string(content.size()) : "-1", content);
    return true;
}

void Transaction::Keep(std::string const& path, std::string_view size, std::string_view text)
{
    if (m_kept.insert(path).second) {
        m_journal.append(size)
            .append(" ")
            .append(path, sizeof kFolder - 1)
            .append("\n")
            .append(text);
        m_isJournalComplete = false;
    }
}

bool Transaction::WriteOut()
{
    if (current != nullptr && !current->WriteOutAll()) {
        current->m_hasDeviceFailed = true;
        return false;
    }
    return true;
}

bool Transaction::WriteOutAll()
{
    for (auto& [path, saved] : m_saved) {
        saved.isWritten = saved.isWritten || WriteTemporary(path, Render(saved.document));
        if (!saved.isWritten) {
            LogFailure("cannot save", path.c_str());
            return false;
        }
    }
    if (m_saved.empty() || !WriteJournal()) {
        return m_saved.empty();
    }
    for (auto& [path, saved] : m_saved) {
        saved.isInPlace = saved.isInPlace || MoveTemporary(path);
        if (!saved.isInPlace) {
            LogFailure("cannot save", path.c_str());
            return false;
        }
    }
    return true;
}

bool Transaction::WriteJournal()
{
    constexpr unsigned kMode = 0600; // a store may be as private
    if (m_isJournalComplete) {
        return true;
    }
    if (!WriteWholeFile(kJournal, m_journal, kMode)) {
        LogFailure("cannot save", kJournal);
        return false;
    }
    m_hasJournal = m_isJournalComplete = true;
    return true;
}

bool Transaction::SyncAll() const
{
    std::set<std::string> names;
    for (auto const& [path, saved] : m_saved) {
        names.insert({path, FolderOf(path)});
    }
    return std::ranges::all_of(names, SyncFile);
}

} // namespace standin
