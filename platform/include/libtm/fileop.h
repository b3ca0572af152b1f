/// @file File system queries.
#pragma once

#include <string>

namespace libtm::critical::fileop {

/// Returns whether `path` is an existing folder.
bool DoesDirExist(std::string const& path);

} // namespace libtm::critical::fileop
