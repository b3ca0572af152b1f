/// @file Conversions of request texts.
#pragma once

#include <json/value.h>

namespace KALD::WebAPIUtil {

/// Reads a decimal integer with an optional sign, the whole text, within 32 bits. False, and
/// `*value` untouched, if it is none.
bool ParseInt(char const* text, int* value);

/// Reads "true" or "false" in any case of letters. False, and `*value` untouched, if it is neither.
bool ParseBool(char const* text, bool* value);

/// The pieces of `text` between the separators, as an array of strings; empty for empty text.
Json::Value ParseToArray(char const* text, char const* separator);

} // namespace KALD::WebAPIUtil
