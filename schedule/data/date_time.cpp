/// @file Conversions between the dates, times and weekdays of clients and epoch seconds, all in
/// local time.
#include "frame/schedule_recording_api.h"

#include "frame/decimal.h"
#include "kald/web_api_util.h"
#include "platform/local_time.h"

#include <cstdio>
#include <cstring>
#include <ctime>
#include <utility>

namespace {

constexpr std::size_t kDateLength = 10;
constexpr std::size_t kTimeLength = 5;
constexpr int kFailed = -1;

} // namespace

int ScheduleRecordingAPI::DateTimeToEpoch(char const* date, char const* time)
{
    if (std::strlen(date) != kDateLength || std::strlen(time) != kTimeLength) {
        return kFailed;
    }
    long long year = 2000; // a field that does not scan keeps its value
    int month = 1;
    int day = 1;
    int hour = 0;
    int minute = 0;
    std::sscanf(date, "%lld-%d-%d", &year, &month, &day); // ten digits can exceed an int
    std::sscanf(time, "%d:%d", &hour, &minute);
    if (!std::in_range<int>(year)) {
        return kFailed;
    }
    std::tm local = appliance::LocalTime(::time(nullptr));
    local.tm_year = static_cast<int>(year - 1900);
    local.tm_mon = month - 1;
    local.tm_mday = day;
    local.tm_hour = hour;
    local.tm_min = minute;
    local.tm_sec = 0;
    std::time_t const epoch = ::mktime(&local); // tm_isdst stays that of now
    return std::in_range<int>(epoch) ? static_cast<int>(epoch) : kFailed;
}

int ScheduleRecordingAPI::TimeTextToSeconds(char const* text)
{
    int hours = 0;
    int minutes = 0;
    if (std::strlen(text) != kTimeLength || std::sscanf(text, "%d:%d", &hours, &minutes) != 2) {
        return kFailed;
    }
    return hours * 3600 + minutes * 60;
}

int ScheduleRecordingAPI::SecondsToTimeText(char* buffer, std::size_t size, int seconds)
{
    int const minutes = seconds / 60;
    return std::snprintf(buffer, size, "%.2d:%.2d", minutes / 60, minutes % 60);
}

bool ScheduleRecordingAPI::IsWeekdaySelected(int time, char const* weekdays)
{
    Json::Value const flags = KALD::WebAPIUtil::ParseToArray(weekdays, ",");
    std::time_t const epoch = time;
    std::tm local{};
    if (::localtime_r(&epoch, &local) == nullptr) {
        return false;
    }
    auto const weekday = static_cast<Json::ArrayIndex>(local.tm_wday);
    return weekday < flags.size() && ParseNumberPrefix(flags[weekday].asCString()) == 1;
}
