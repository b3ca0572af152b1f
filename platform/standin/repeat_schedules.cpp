/// @file The repeat schedules of a tuner: rules from which the daemon makes one-shot schedules.
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/standin/local_calendar.h"
#include "platform/standin/record_store.h"
#include "platform/standin/unique_id.h"
#include "tremolane/recording_service.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>

namespace KALDTremolane {

namespace {

using namespace appliance;
using standin::ScheduleKey;

constexpr int kStatusRepeat = 19;
constexpr int kDaysOfWeek = 7;
constexpr int kDaysOfYear = 366;

bool Matches(Json::Value const& record, ScheduleKey const& key)
{
    return record.isObject() && IntOf(record, member::kStartTime) == key.start &&
           IntOf(record, member::kId) == key.service;
}

std::string DateText(int start)
{
    char text[64];
    std::tm const local = standin::LocalTime(start);
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d", &local)};
}

void SetRule(Json::Value& record, bool isWeekly, char const* weekdayStatus, char const* endDate)
{
    record[member::kIsWeekly] = isWeekly;
    record[member::kWeekdayStatus] = weekdayStatus;
    record[member::kEndDate] = endDate;
}

Json::Value NewRecord(ScheduleKey const& key, int tuner, char const* uid)
{
    standin::Details details = standin::DetailsOf(key.start, tuner);
    Json::Value record(Json::objectValue);
    record[member::kId] = key.service;
    if (key.frequency) {
        record[member::kFrequency] = *key.frequency;
    }
    record[member::kStartTime] = key.start;
    record[member::kLastCreateTime] = 0;
    record[member::kStatus] = kStatusRepeat;
    record[member::kChannelName].swap(details.channelName);
    record[member::kTitle].swap(details.title);
    record[member::kDescription].swap(details.description);
    record[member::kDuration] = details.duration;
    record[member::kStartDate] = DateText(key.start);
    record[member::kUid] = uid;
    return record;
}

/// The stored record of a key, or null.
Json::Value* Find(Json::Value& records, ScheduleKey const& key)
{
    for (Json::Value& record : records) {
        if (Matches(record, key)) {
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
    auto const key = standin::ParseKey(id, start);
    if (!key) {
        return standin::Answer(out, EINVAL);
    }
    return standin::Answer(out,
                           standin::ChangeRecords(RepeatFile(tuner), [&](Json::Value& records) {
                               if (Find(records, *key) != nullptr) {
                                   return EEXIST;
                               }
                               if (!standin::CanReadUserDefines()) {
                                   return EIO;
                               }
                               Json::Value record = NewRecord(*key, tuner, uid);
                               SetRule(record, isWeekly, weekdayStatus, endDate);
                               records.append(std::move(record));
                               return 0;
                           }));
}

bool EditRepeatSche(Json::Value& out, int tuner, std::string const& id, char const* start,
                    bool isWeekly, char const* weekdayStatus, char const* endDate)
{
    auto const key = standin::ParseKey(id, start);
    if (!key) {
        return standin::Answer(out, EINVAL);
    }
    return standin::Answer(out,
                           standin::ChangeRecords(RepeatFile(tuner), [&](Json::Value& records) {
                               Json::Value* const record = Find(records, *key);
                               if (record == nullptr) {
                                   return ENOENT;
                               }
                               SetRule(*record, isWeekly, weekdayStatus, endDate);
                               return 0;
                           }));
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
    auto const today = standin::DayOf(standin::LocalTime(::time(nullptr)));
    return static_cast<int>(std::clamp<std::int64_t>((*end - today).count() + 1, 0, kDaysOfYear));
}

} // namespace KALDTremolane
