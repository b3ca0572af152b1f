/// @file Converting the texts of request parameters.
#pragma once

#include <json/value.h>

namespace KALD::WebAPIUtil {

/// Parses the whole text as a 32-bit decimal integer with an optional sign. Returns false and
/// leaves `*value` untouched if it is none.
bool ParseInt(char const* text, int* value);

/// Parses "true" or "false", case-insensitively. Returns false and leaves `*value` untouched if it
/// is neither.
bool ParseBool(char const* text, bool* value);

/// Splits `text` at each `separator`. Returns an array of strings, which is empty for empty text.
Json::Value ParseToArray(char const* text, char const* separator);

} // namespace KALD::WebAPIUtil
