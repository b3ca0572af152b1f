/// @file Loading a tuner's repeat file for `delete_repeat` and `getinfo_repeat`.
#pragma once

#include "schedule/data/support_log.h"

#include <json/value.h>

#include <string>

/// Loads a repeat file; `records` becomes an array or null. On false the failure is logged under
/// `code`. A missing file is a failure too.
bool LoadRepeatFile(Json::Value& records, std::string const& path, SupportCode code);
