/// @file The file of user-defined records.
#pragma once

#include <set>

/// Removes the tuner's records that start at one of `starts` (epoch seconds) from the file, in one
/// save. Best-effort: it reports nothing. Does nothing for a negative tuner.
void RemoveUserDefineRecords(std::set<int> const& starts, int tuner);
