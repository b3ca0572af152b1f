/// @file A file of schedule records: loaded, changed, saved.
#pragma once

#include "platform/standin/json_reader.h"

#include <json/value.h>

#include <functional>
#include <string>

namespace standin {

/// Loads a store; 0 and an array, empty if there is no file or it holds null, or EIO. `hook` is
/// called for each record as by ParseJson().
int LoadRecords(std::string const& path, Json::Value& records, ElementHook const& hook = {});

/// Changes a store. `change` edits the records and
/// answers 0 to have them saved, kUnchanged to leave the file alone, or an errno that ends it.
/// Returns 0 or an errno.
int ChangeRecords(std::string const& path, std::function<int(Json::Value& records)> const& change);
inline constexpr int kUnchanged = -1;

/// Turns an errno into a store operation's answer: true for 0, else false and `errno` in `out`.
bool Answer(Json::Value& out, int error);

/// The length of a record's recording in seconds: half an hour if it stores no positive one.
int DurationOf(Json::Value const& record);

/// What a stored schedule shows beside its channel and start.
struct Details {
    Json::Value channelName, title, description;
    int duration; ///< seconds
};

/// Whether the user-defined file is missing or the device can read it. Otherwise a schedule would
/// be stored without the title and length that its record gives it.
bool CanReadUserDefines();

/// The texts and the length of an added schedule: those of the user-defined record of its start and
/// tuner, else empty texts and half an hour.
Details DetailsOf(int start, int tuner);

} // namespace standin
