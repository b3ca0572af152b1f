/// @file Loading and saving JSON documents.
#pragma once

#include <json/value.h>

namespace WebUtils {

/// Loads a JSON file (RFC 8259). Returns false and a null `document` if the file is missing,
/// unreadable, empty or malformed, or nested too deeply. Extensions of the JSON library, such as
/// comments, count as malformed.
bool LoadJsonFile(Json::Value& document, char const* path);

/// Replaces a file by `document`, written in one line, atomically and durably. May take the
/// document over, so the caller must not use its contents afterwards. On failure returns false,
/// leaves the file as it was, and leaves nothing else behind. One failure is not undone: if the
/// file system cannot exchange two files and the folder cannot be synced, the new file stays.
bool SaveJsonFile(Json::Value& document, char const* path);

} // namespace WebUtils
