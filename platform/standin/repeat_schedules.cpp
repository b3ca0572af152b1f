/// @file The store operations on the repeat schedules of a tuner, from which the daemon generates
/// one-shot schedules.
#include "platform/appliance_paths.h"
#include "platform/local_time.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/schedule_status.h"
#include "platform/standin/local_calendar.h"
#include "platform/standin/record_store.h"
#include "platform/standin/schedule_key.h"
#include "tremolane/recording_service.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

namespace KALDTremolane {

namespace {

using namespace appliance;
using standin::ScheduleKey;

constexpr int kDaysOfWeek = 7;
constexpr int kDaysOfYear = 366;

void SetRecurrence(Json::Value& record, bool isWeekly, char const* weekdayStatus,
                   char const* endDate)
{
    record[member::kIsWeekly] = isWeekly;
    record[member::kWeekdayStatus] = weekdayStatus;
    record[member::kEndDate] = endDate;
}

/// Finds the stored record of a key; null if there is none.
Json::Value* Find(Json::Value& records, ScheduleKey const& key)
{
    for (Json::Value& record : records) {
        if (IntOf(record, member::kStartTime) == key.start &&
            IntOf(record, member::kId) == key.service) {
            return &record;
        }
    }
    return nullptr;
}

} // namespace

bool AddRepeatSchedule(Json::Value& out, int tuner, std::string const& id, char const* start,
                       char const* uid, bool isWeekly, char const* weekdayStatus,
                       char const* endDate)
{
    auto const add = [&](standin::Document& records, ScheduleKey const& key) {
        if (Find(records.value, key) != nullptr) {
            return EEXIST;
        }
        Json::Value record = standin::NewRecord(key, kStatusRepeat, tuner, uid);
        record[member::kId] = key.service;
        record[member::kLastCreateTime] = 0;
        record[member::kStartDate] = LocalText(key.start, "%Y-%m-%d");
        SetRecurrence(record, isWeekly, weekdayStatus, endDate);
        records.value.append(std::move(record));
        return 0;
    };
    return standin::ChangeSchedule(out, RepeatFile(tuner), id, start, add);
}

bool EditRepeatSche(Json::Value& out, int tuner, std::string const& id, char const* start,
                    bool isWeekly, char const* weekdayStatus, char const* endDate)
{
    auto const edit = [&](standin::Document& records, ScheduleKey const& key) {
        Json::Value* const record = Find(records.value, key);
        if (record == nullptr) {
            return ENOENT;
        }
        SetRecurrence(*record, isWeekly, weekdayStatus, endDate);
        return 0;
    };
    return standin::ChangeSchedule(out, RepeatFile(tuner), id, start, edit);
}

int GetRepeatLimitTime(int isWeekly, char const* weekdayStatus, char const* endDate, int* weekdays)
{
    std::ranges::copy(standin::ParseWeekdays(weekdayStatus), weekdays);
    if (isWeekly == 0) {
        return kDaysOfWeek;
    }
    auto const end = standin::ParseDate(endDate);
    if (!end) {
        return kDaysOfYear;
    }
    auto const today = standin::DayOf(LocalTime(::time(nullptr)));
    return static_cast<int>(std::clamp<std::int64_t>((*end - today).count() + 1, 0, kDaysOfYear));
}

} // namespace KALDTremolane
