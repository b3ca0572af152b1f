/// @file Reading whole files and replacing them atomically.
#pragma once

#include "platform/standin/unique_fd.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace standin {

/// Opens a regular file for reading. On failure returns none and sets errno. Any other kind of file
/// is a failure; a FIFO never blocks.
UniqueFd OpenRegularFile(char const* path);

/// Reads from `fd` to its end, but at most `limit` bytes, and appends them to `text`. On failure
/// returns false and sets errno; `text` has what was read until then.
bool ReadText(int fd, std::string& text, std::size_t limit = std::string::npos);

/// Writes all of `text`. On failure returns false and sets errno.
bool WriteAll(int fd, std::string_view text);

/// Returns whether opening, reading or replacing a file has failed since the last
/// ForgetDeviceFailure() because a device failed or something ran out: space, memory, descriptors.
/// If so, a file that seemed to be missing may exist, and a change may be incomplete.
bool HasDeviceFailed();
void ForgetDeviceFailure();

/// Records a device failure if errno stands for one. Call it when a system call on a file has
/// failed.
void NoteFailure();

/// Returns a number above 0. When it has changed, what was read of a file before may be out of
/// date.
int FileGeneration();

/// Changes that number: a request begins, or WriteWholeFile() was called.
void StartFileGeneration();

/// Replaces the content of `path` by `text`, atomically and durably: whatever happens, the complete
/// old file or the complete new file is there. Keeps the old file's mode and, as root, its owner
/// and group; a new file has `newMode` and, as root, the owner of its folder. On failure returns
/// false, sets errno and removes the temporary file. Only one process at a time may replace the
/// same file.
bool WriteWholeFile(std::string const& path, std::string_view text, unsigned newMode = 0640);

/// As root, gives an open file to the owner of the folder of `path`, so that a program that runs as
/// that user can use the file too.
bool GiveToOwnerOfFolder(int fd, std::string const& path);

/// Deletes the temporary file that WriteWholeFile() leaves behind if its process is killed.
void RemoveTemporaryOf(std::string const& path);

/// Syncs the folder of a file, which makes the file's directory entry durable. Returns false and
/// sets errno on failure.
bool SyncFolderOf(std::string const& path);

} // namespace standin
