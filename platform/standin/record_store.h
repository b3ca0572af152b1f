/// @file Stores of schedule records: one JSON file for each kind and tuner.
#pragma once

#include "platform/standin/json_reader.h"

#include <json/value.h>

#include <functional>
#include <span>
#include <string>

namespace standin {

/// Loads a store. Returns 0 and an array, which is empty if there is no file or it holds null;
/// otherwise EIO, with the reason logged. Reads the members `wanted`, as ParseJson() does.
int LoadRecords(std::string const& path, Json::Value& records,
                std::span<Json::StaticString const> wanted = {});

/// Changes a store. `change` edits the records and returns 0 to have them saved, kUnchanged to
/// leave the file alone, or an errno. Returns the result of the store operation; see SetErrno().
bool ChangeRecords(Json::Value& out, std::string const& path,
                   std::function<int(Json::Value& records)> const& change);
inline constexpr int kUnchanged = -1;

/// Turns an errno into the result of a store operation: true for 0, otherwise false with the errno
/// as a member of `out`.
bool SetErrno(Json::Value& out, int error);

/// Returns the length of a record's recording in seconds: half an hour if it stores no positive
/// one.
int DurationOf(Json::Value const& record);

/// What a user-defined record gives to the schedule of its start and tuner.
struct UserDefinedDetails {
    Json::Value channelName, title, description;
    int duration; ///< seconds
};

/// Looks up the details of an added schedule. Without a user-defined record of its start and tuner
/// the texts are empty and the duration is half an hour.
UserDefinedDetails FindUserDefinedDetails(int start, int tuner);

} // namespace standin
