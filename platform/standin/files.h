/// @file Whole files: reading one, and replacing one so that it is never seen half written.
#pragma once

#include "platform/standin/unique_fd.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace standin {

/// Opens a regular file for reading; none, with errno set, if that fails. Never waits for a FIFO.
UniqueFd OpenRegularFile(char const* path);

/// Reads from `fd` to its end, after what `text` already holds. False with errno set on an error.
bool ReadToEnd(int fd, std::string& text);

/// Writes all of `text`. False with errno set on an error.
bool WriteAll(int fd, std::string_view text);

/// Returns whether a file could not be opened, read or replaced since the last call of
/// ForgetDeviceFailure() because a device failed or something ran out: space, memory, descriptors.
/// What was read cannot be told from a missing file then, and what was to be saved was not.
bool HasDeviceFailed();
void ForgetDeviceFailure();

/// To be called when a call on a file has failed, with its errno.
void NoteFailure();

/// How many files this process has replaced.
int SavesOfThisProcess();

/// Replaces `path` by `text` durably, all or nothing: the old file or the new one stands there,
/// whatever happens. Keeps the old file's mode and, as root, its owner and group; a new file gets
/// `newMode` and, as root, the owner of its folder. On false the temporary file beside it is gone,
/// too. At most one process may do this to a file at a time.
bool WriteWholeFile(std::string const& path, std::string_view text, unsigned newMode = 0640);

/// As root, gives an open file to the owner of the folder of `path`, so that a program that runs as
/// that user can use the file too.
bool GiveToOwnerOfFolder(int fd, std::string const& path);

/// Deletes the temporary file that a killed WriteWholeFile() may have left.
void RemoveTemporaryOf(std::string const& path);

/// Makes the entry of a file in its folder durable.
bool SyncFolderOf(std::string const& path);

} // namespace standin
