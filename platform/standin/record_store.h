/// @file Stores of schedule records: one JSON file for each kind and tuner.
#pragma once

#include "platform/standin/json_reader.h"
#include "platform/standin/schedule_key.h"
#include "platform/standin/transaction.h"

#include <json/value.h>

#include <functional>
#include <string>

namespace standin {

/// Loads a store. Returns 0 and an array, which is empty if there is no file or it holds null;
/// otherwise EIO, with the reason logged. See ParseJson() for `form`.
int LoadRecords(std::string const& path, Json::Value& records, Json::Value const& form = {});

/// Changes a store. `change` edits the records and returns 0 to have them saved, or leaves them
/// alone and returns kUnchanged or an errno. Returns the result of the store operation; see
/// SetErrno().
bool ChangeRecords(Json::Value& out, std::string const& path,
                   std::function<int(Document& records)> const& change);

/// Changes a store like ChangeRecords(), and passes `change` the key that `id` and `start` form.
/// The result is EINVAL if they form none.
bool ChangeSchedule(Json::Value& out, std::string const& path, std::string const& id,
                    std::string const& start,
                    std::function<int(Document& records, ScheduleKey const& key)> const& change);

inline constexpr int kUnchanged = -1;

/// Turns an errno into the result of a store operation: true for 0, otherwise false with the errno
/// as a member of `out`.
bool SetErrno(Json::Value& out, int error);

/// Returns the length of a record's recording in seconds: half an hour if it stores no positive
/// one.
int DurationOf(Json::Value const& record);

/// Returns what a new one-shot and a new repeat record have in common. The names and the duration
/// are those of the user-defined record of the same start and tuner; without one the texts are
/// empty and the duration is half an hour.
Json::Value NewRecord(ScheduleKey const& key, int status, int tuner, char const* uid);

} // namespace standin
