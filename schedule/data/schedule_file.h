/// @file Files of schedule records, as this system loads them itself.
#pragma once

#include <json/value.h>

#include <string>

/// What became of loading a file of records.
enum class RecordFile {
    kLoaded,
    kMissing,    ///< there is no such file: it may be created
    kUnreadable, ///< it cannot be read, or holds neither an array nor null: never overwrite it
};

/// Loads a file of records. `records` becomes the array, or null if the file holds null or was not
/// loaded. Elements that are no objects stay in the array; see platform/records.h.
RecordFile LoadRecordFile(Json::Value& records, std::string const& path);
