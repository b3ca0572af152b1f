/// @file The file of user-defined records.
#pragma once

#include <json/value.h>

#include <set>

/// Returns the member of a record that keeps the text of a parameter unchanged; null if there is
/// none. Compares case-insensitively.
Json::StaticString const* TextMemberOf(char const* parameter);

/// Removes the tuner's records that start at one of `starts` (epoch seconds) from the file, in one
/// save. Best-effort: it reports nothing. Does nothing for a negative tuner.
void RemoveUserDefineRecords(std::set<int> const& starts, int tuner);
