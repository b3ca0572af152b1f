/// @file One changing request at a time, and all of its changes or none.
#pragma once

#include "platform/standin/unique_fd.h"

#include <json/value.h>

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

namespace standin {

/// A stored document in the state in which the request wants it.
struct Document {
    Json::Value value;

    /// What the owner of the document keeps to search it. Reset by whoever changes `value`
    /// otherwise.
    using Keys = std::set<std::pair<int, std::string>>;
    std::optional<Keys> keys;
};

/// The changes of one request to the files of the package's folder.
///
/// A transaction holds the exclusive lock of that folder from Begin() until it is destroyed. It
/// keeps what the request saves in memory and writes it out before the tuner daemon gets a command
/// and at the end. A rollback journal keeps the old versions of the files. Commit() deletes the
/// journal; this is the instant at which the changes become final. A process that dies earlier
/// leaves the journal behind, and the next Begin() restores the old versions.
///
/// Requests that only read take no lock and never wait. While a journal is left behind they see the
/// files as they stand.
class Transaction {
public:
    /// `savesOnce`: the request promises to save one document at most, once. Its file is replaced
    /// at once and needs no journal, which costs waits for the disk. A second save is refused, and
    /// so is one after a device has failed, because it could not be undone.
    explicit Transaction(bool savesOnce) : m_savesOnce(savesOnce) {}
    ~Transaction();
    Transaction(Transaction const&) = delete;
    Transaction& operator=(Transaction const&) = delete;

    /// Waits for the lock, for ten seconds at most, and rolls back a request that never ended. On
    /// false the reason was logged, and no file may be changed.
    bool Begin();

    /// Makes the changes final. False, and logged, if they are not: because a device failed or is
    /// full, in which case they are rolled back, or because the journal could not be deleted
    /// durably, in which case the next request may roll them back.
    bool Commit();

    /// Forgets what was saved but not written. If a journal was written, restores the files' old
    /// versions, logs it and tells the tuner daemon to reload. False, and logged, if a file could
    /// not be restored.
    bool RollBack();

    /// Returns the transaction that covers a file; null if none is in progress or the file is not
    /// one of the package.
    static Transaction* For(std::string const& path);

    /// Returns the same, but null if it keeps no documents because the request saves once.
    static Transaction* Keeping(std::string const& path);

    /// Returns whether a request that saves once may replace its file now. On false sets errno.
    bool MayReplaceFile();

    /// Returns the document that the request in progress has saved at `path` and keeps in memory;
    /// null if there is none. It belongs to the transaction.
    static Document* FindSaved(std::string const& path);

    /// Keeps the version of a store that the request in progress has loaded. If the journal has the
    /// old versions of all stores that the request may save, it is written only once.
    static void KeepLoaded(std::string const& path, std::string_view text);

    /// Saves a document and keeps it. The first save of a file shows whether its folder can be
    /// written and has room. On failure returns false and sets errno; the file and what was saved
    /// before stand.
    bool Save(std::string const& path, Document document);

    /// Writes out what was saved since the last time, if a transaction is in progress. On false,
    /// which is logged, the request will be rolled back.
    static bool WriteOut();

    /// Notes that a system call on a store or an account file has failed, with the reason in errno.
    /// If a device failed or something ran out (space, memory, descriptors), a file that seemed to
    /// be missing may exist and a change may be incomplete, so the request will be rolled back.
    static void NoteFailure();

private:
    struct Saved {
        Document document;
        bool isWritten; ///< the file, or its temporary file, holds this version of the document
        bool isInPlace; ///< the file holds it
    };

    bool KeepOldVersion(std::string const& path);
    void Keep(std::string const& path, std::string_view size, std::string_view text);
    bool WriteOutAll();
    bool WriteJournal();
    bool SyncAll() const;

    bool m_savesOnce;
    bool m_hasSavedOnce = false;
    bool m_hasDeviceFailed = false;
    bool m_hasJournal = false;            ///< the file of the journal was written
    bool m_isJournalComplete = true;      ///< it holds all of `m_journal`
    std::string m_journal;                ///< the text of the journal
    std::set<std::string> m_kept;         ///< the paths whose old version it holds
    std::map<std::string, Saved> m_saved; ///< by path
    UniqueFd m_lock; ///< the last member: released before the documents are freed
};

} // namespace standin
