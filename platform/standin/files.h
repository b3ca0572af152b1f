/// @file Whole files: reading one, and replacing one so that it is never seen half written.
#pragma once

#include "platform/standin/unique_fd.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace standin {

/// Opens a regular file for reading; none, with errno set, if that fails. Never waits for a FIFO.
UniqueFd OpenRegularFile(char const* path);

/// The size of an open file in bytes; 0 if it cannot be told.
std::size_t SizeOf(int fd);

/// Reads from `fd` to its end, after what `text` already holds. False with errno set on an error.
bool ReadToEnd(int fd, std::string& text);

/// Writes all of `text`. False with errno set on an error.
bool WriteAll(int fd, std::string_view text);

/// How many files this process has replaced.
int SavesOfThisProcess();

/// Replaces `path` by `text` durably, all or nothing: the old file or the new one stands there,
/// whatever happens. Keeps the old file's mode and, as root, its owner and group; a new file gets
/// 0640. On false the temporary file beside it is gone, too. At most one process may do this to a
/// file at a time.
bool WriteWholeFile(std::string const& path, std::string_view text);

/// Deletes the temporary file that a killed WriteWholeFile() may have left.
void RemoveTemporaryOf(std::string const& path);

/// Makes the entry of a file in its folder durable.
bool SyncFolderOf(std::string const& path);

} // namespace standin
