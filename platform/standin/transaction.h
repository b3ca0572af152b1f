/// @file One changing request at a time, and all of its changes or none.
#pragma once

#include "platform/standin/unique_fd.h"

#include <set>
#include <string>

namespace standin {

/// The changes of one request to the files of the package's folder.
///
/// A transaction holds the exclusive lock of that folder from Begin() until it is destroyed.
/// Before the first replacement of each file, the rollback journal keeps the file's old version.
/// Commit() deletes the journal; this is the instant at which the changes become final. A process
/// that dies earlier leaves the journal behind, and the next Begin() restores the old versions.
///
/// Requests that only read take no lock and never wait. While a journal is left behind they see the
/// files as they stand.
class Transaction {
public:
    /// `savesOnce`: the request replaces one file at most, once. That is all or nothing by itself,
    /// so it needs no journal, which costs three waits for the disk. If a device has failed before,
    /// the file is not replaced.
    explicit Transaction(bool savesOnce) : m_savesOnce(savesOnce) {}
    ~Transaction();
    Transaction(Transaction const&) = delete;
    Transaction& operator=(Transaction const&) = delete;

    /// Waits for the lock, for ten seconds at most, and rolls back a request that never ended. On
    /// false the reason was logged, and no file may be changed.
    bool Begin();

    /// Makes the changes final. False, and logged, if they are not: because a device failed or is
    /// full, in which case they are rolled back, or because the journal could not be deleted
    /// durably, in which case the next request may roll them back. Without a journal they are final
    /// already.
    bool Commit();

    /// Restores the files' old versions, logs it and tells the tuner daemon to reload. Does nothing
    /// without a journal. False, and logged, if a file could not be restored.
    bool RollBack();

    /// Keeps the version of a file that is about to be replaced in the journal of the transaction
    /// in progress, if there is one and does not have it yet. On false, which sets errno, the file
    /// must not be replaced.
    static bool KeepOldVersion(std::string const& path);

private:
    bool AppendToJournal(std::string const& path);

    bool m_savesOnce;
    UniqueFd m_lock;
    std::string m_journal;        ///< the text of the journal; empty if nothing was replaced yet
    std::set<std::string> m_kept; ///< the paths whose old version it holds
};

} // namespace standin
