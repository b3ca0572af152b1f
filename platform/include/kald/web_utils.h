/// @file JSON documents in files.
#pragma once

#include <json/value.h>

namespace WebUtils {

/// Loads a JSON file (RFC 8259). False, and `document` null, if it is missing, unreadable, empty,
/// not what the JSON library reads without its extensions, or nested too deep.
bool LoadJsonFile(Json::Value& document, char const* path);

/// Replaces a file by `document` in one line, durably and all or nothing. On false the file is as
/// it was and nothing else is left beside it; only a file that was new or a link stays replaced if
/// its folder does not reach the disk.
bool SaveJsonFile(Json::Value& document, char const* path);

} // namespace WebUtils
