/// @file Documents of schedule records, as this system loads and filters them itself.
#pragma once

#include <json/value.h>

#include <functional>
#include <string>

/// Loads a file of records; `records` is an array, or null if the file holds null. False, and null,
/// if the file does not load or holds anything else. Throws Json::LogicError on an element that is
/// no object: what it holds cannot be told, so the request must not act on it.
bool LoadRecordFile(Json::Value& records, std::string const& path);

/// Moves the records that `isDropped` does not name to the end of `kept`, in their order. A null
/// `kept` becomes an array with the first of them.
void KeepRecords(Json::Value& records, Json::Value& kept,
                 std::function<bool(Json::Value const& record)> const& isDropped);
