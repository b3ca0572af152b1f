/// @file Reading whole files and replacing them atomically.
#pragma once

#include "platform/standin/unique_fd.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace standin {

/// Reads a regular file to its end and appends it to `text`. On failure returns false and sets
/// errno. Any other kind of file is a failure; a FIFO never blocks.
bool ReadFile(char const* path, std::string& text);

/// Reads from `fd` to its end, but at most `limit` bytes, and appends them to `text`. On failure
/// returns false and sets errno; `text` has what was read until then.
bool ReadText(int fd, std::string& text, std::size_t limit = std::string::npos);

/// Writes all of `text`. On failure returns false and sets errno.
bool WriteAll(int fd, std::string_view text);

constexpr unsigned kNewFileMode = 0640;

/// Writes `text` to a temporary file beside `path`, with the mode of the file at `path` and, as
/// root, its owner and group; if there is no such file, with `newMode` and, as root, the owner of
/// the folder. Returns the open file, which is not synced yet. On failure returns none, sets errno
/// and removes the temporary file. Only one process at a time may replace the same file.
UniqueFd WriteTemporary(std::string const& path, std::string_view text,
                        unsigned newMode = kNewFileMode);

/// Moves the temporary file to `path` in one step, but not durably. On failure returns false and
/// sets errno.
bool MoveTemporary(std::string const& path);

/// Replaces the content of `path` by `text`, atomically and durably: whatever happens, the complete
/// old file or the complete new file is there. See WriteTemporary() for its mode and owner. On
/// failure returns false, sets errno and removes the temporary file.
bool WriteWholeFile(std::string const& path, std::string_view text,
                    unsigned newMode = kNewFileMode);

/// As root, gives an open file to the owner of the folder of `path`, so that a program that runs as
/// that user can use the file too.
bool GiveToOwnerOfFolder(int fd, std::string const& path);

/// Deletes the temporary file of WriteTemporary(), if there is one: a killed process leaves it
/// behind. Does not change errno.
void RemoveTemporaryOf(std::string const& path);

/// Returns the folder of a file, with a slash at its end.
std::string FolderOf(std::string const& path);

/// Syncs the content of a file. Returns false and sets errno on failure.
bool SyncFile(std::string const& path);

/// Syncs the folder of a file, which makes the file's directory entry durable. Returns false and
/// sets errno on failure.
bool SyncFolderOf(std::string const& path);

} // namespace standin
