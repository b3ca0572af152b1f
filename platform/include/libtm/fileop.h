/// @file Questions about the file system.
#pragma once

#include <string>

namespace libtm::critical::fileop {

/// Whether `path` is an existing folder.
bool DoesDirExist(std::string const& path);

} // namespace libtm::critical::fileop
