/// @file Files of schedule records, as the methods load them themselves.
#pragma once

#include "schedule/support_log.h"

#include <json/value.h>

#include <string>

/// The result of loading a file of records.
enum class RecordFile {
    kLoaded,
    kMissing,    ///< there is no such file: it may be created
    kUnreadable, ///< it cannot be read, or holds neither an array nor null: never overwrite it
};

/// Loads a file of records. `records` becomes the array, or null if the file holds null or was not
/// loaded. The array can hold elements that are no records; see platform/records.h.
RecordFile LoadRecordFile(Json::Value& records, std::string const& path);

/// Loads a repeat file; `records` becomes an array or null. On false the failure is logged under
/// `code`. A missing file is a failure too.
bool LoadRepeatFile(Json::Value& records, std::string const& path, SupportCode code);
