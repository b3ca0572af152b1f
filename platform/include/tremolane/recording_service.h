/// @file The package's recording service, which owns the stored one-shot and repeat schedules.
///
/// Every store operation takes an `out` and returns true on success. On failure it returns false
/// and may set an integer member "errno" in `out`, which is empty, or left by the call before it
/// for the same request: a list of schedules has one `out`. Text parameters: `start` is in epoch
/// seconds, `uid` is the uid of the login user, both in decimal. A channel id is
/// "SERVICE@FREQUENCY", or "SERVICE" in the plain form.
#pragma once

#include <json/value.h>

#include <string>

namespace KALDTremolane {

/// Stores the tuner's one-shot schedules as an array in the member "list" of `out`.
bool GetSchedule(Json::Value& out, int tuner);

/// Stores a one-shot schedule.
bool AddSchedule(Json::Value& out, int tuner, std::string id, std::string start, char const* uid);

/// Removes the one-shot schedule with that channel and start.
bool DelSchedule(Json::Value& out, int tuner, char const* channelId, char const* start);

/// Removes the one-shot schedules that have ended.
bool ScheduleDeletePass(Json::Value& out, int tuner);

/// Adds a record to the repeat file. `weekdayStatus` is seven comma-separated flags, Sunday first.
bool AddRepeatSchedule(Json::Value& out, int tuner, std::string const& id, char const* start,
                       char const* uid, bool isWeekly, char const* weekdayStatus,
                       char const* endDate);

/// Changes isweekly, weekdaystatus and end_date of the repeat record with that channel and start.
bool EditRepeatSche(Json::Value& out, int tuner, std::string const& id, char const* start,
                    bool isWeekly, char const* weekdayStatus, char const* endDate);

/// Sets seven elements of `weekdays`, Sunday first, to 1 for a selected day. Returns how many days,
/// counted from today, can have an occurrence of the repeat schedule.
int GetRepeatLimitTime(int isWeekly, char const* weekdayStatus, char const* endDate, int* weekdays);

/// Returns whether a recording of `duration` seconds at `start` (epoch seconds) overlaps a record
/// of either schedule file. Ignores records whose start_time is 0. Between calls with the same two
/// documents the records must not change.
bool TaskIsOverLap(int start, int duration, Json::Value& oneShot, Json::Value& repeat);

/// Finds the record with that start (epoch seconds) and tuner in the user-defined file. Returns its
/// index and a copy in `out`. Returns a negative value and leaves `out` untouched if there is none.
/// The file is read once for each request, and again after the request has saved a file.
int ReadUserDefineFromFile(Json::Value& out, int start, int tuner);

/// Splits a channel id. Returns 0 and sets both ints; the frequency of the plain form is 0. Returns
/// -1 and sets neither if the id is malformed.
int KALDVideoDTVParserUniqueId(char const* id, int* service, int* frequency);

/// Returns the path of a folder inside a share.
std::string GetFullPath(std::string const& share, std::string const& subpath);

} // namespace KALDTremolane

/// Returns the Web API error code for an errno of the operations above.
int MappErrorCode(int error);
