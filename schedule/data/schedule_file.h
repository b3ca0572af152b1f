/// @file Documents of schedule records, as this system loads them itself.
#pragma once

#include <json/value.h>

#include <string>

/// Loads a file of records; `records` is an array, or null if the file holds null. False, and null,
/// if the file does not load or holds anything else. Throws Json::LogicError on an element that is
/// no object: what it holds cannot be told, so the request must not act on it.
bool LoadRecordFile(Json::Value& records, std::string const& path);
