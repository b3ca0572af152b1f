/// @file The package's recording service: it owns the stored one-shot and repeat schedules.
///
/// Every store operation takes a fresh `out`, answers true on success, and on false may leave an
/// integer member "errno" in it. `start` is epoch seconds in decimal text, `uid` the login uid in
/// decimal text, a channel id the text "SERVICE@FREQUENCY" or "SERVICE".
#pragma once

#include <json/value.h>

#include <string>

namespace KALDTremolane {

/// `out` member "list": the tuner's one-shot schedules, an array.
bool GetSchedule(Json::Value& out, int tuner);

/// Stores a one-shot schedule.
bool AddSchedule(Json::Value& out, int tuner, std::string id, std::string start, char const* uid);

/// Removes the one-shot schedule of that channel and start.
bool DelSchedule(Json::Value& out, int tuner, char const* channelId, char const* start);

/// Removes the one-shot schedules that have ended.
bool ScheduleDeletePass(Json::Value& out, int tuner);

/// Adds a record to the repeat file. `weekdayStatus` is seven comma-separated flags, Sunday first.
bool AddRepeatSchedule(Json::Value& out, int tuner, std::string const& id, char const* start,
                       char const* uid, bool isWeekly, char const* weekdayStatus,
                       char const* endDate);

/// Changes isweekly, weekdaystatus and end_date of the repeat record of that channel and start.
bool EditRepeatSche(Json::Value& out, int tuner, std::string const& id, char const* start,
                    bool isWeekly, char const* weekdayStatus, char const* endDate);

/// Sets seven ints, index 0 Sunday, 1 selected; returns the number of days, from today on, on which
/// the rule can fall.
int GetRepeatLimitTime(int isWeekly, char const* weekdayStatus, char const* endDate, int* weekdays);

/// Whether `duration` seconds from `start` on overlap a record of either schedule file. Records
/// whose start_time is 0 do not count. Between calls with the same two documents their records must
/// not change.
bool TaskIsOverLap(int start, int duration, Json::Value& oneShot, Json::Value& repeat);

/// The index in the user-defined file of the record with that start and tuner, and the record in
/// `out`; negative, and `out` untouched, if there is none.
int ReadUserDefineFromFile(Json::Value& out, int start, int tuner);

/// Splits a channel id. 0 and both ints set (frequency 0 for the plain form), or -1 and neither.
int KALDVideoDTVParserUniqueId(char const* id, int* service, int* frequency);

/// The path of a folder inside a share.
std::string GetFullPath(std::string const& share, std::string const& subpath);

} // namespace KALDTremolane

/// The Web API error code for an errno of the operations above.
int MappErrorCode(int error);
