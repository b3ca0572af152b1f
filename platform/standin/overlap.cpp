/// @file Checking whether a recording would overlap a stored one.
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/standin/local_calendar.h"
#include "platform/standin/record_store.h"
#include "tremolane/recording_service.h"

#include <algorithm>
#include <cstdint>

namespace {

using namespace appliance;
using standin::DayOf;
using standin::DurationOf;
using standin::LocalTime;
using std::chrono::days;
using std::chrono::sys_days;

/// A half-open interval in epoch seconds.
struct Interval {
    std::int64_t begin, end;

    bool Overlaps(Interval const& other) const { return begin < other.end && other.begin < end; }
};

/// Returns the epoch seconds at which the local wall clock shows `timeOfDay` on `day`.
std::int64_t EpochOn(sys_days day, std::tm const& timeOfDay)
{
    std::chrono::year_month_day const date(day);
    std::tm local = timeOfDay;
    local.tm_year = static_cast<int>(date.year()) - 1900;
    local.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    local.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    local.tm_isdst = -1;
    return std::mktime(&local);
}

/// Returns the last local day, `latest` at most, on which a repeat record can have an occurrence.
sys_days LastDayOf(Json::Value const& record, sys_days firstDay, sys_days latest)
{
    sys_days last = latest;
    if (auto const end = standin::ParseDate(TextOf(record, member::kEndDate).c_str())) {
        last = std::min(last, *end);
    }
    if (!FlagOf(record, member::kIsWeekly)) {
        last = std::min(last, firstDay + days(6));
    }
    return last;
}

/// Returns whether an occurrence of a repeat record overlaps the wanted interval. Tests only the
/// days near that interval, plus one day at each end because local days differ in length.
bool RepeatOverlaps(Json::Value const& record, int start, Interval const& wanted)
{
    std::int64_t const duration = DurationOf(record);
    std::tm const first = LocalTime(start);
    sys_days const firstDay = DayOf(first);
    auto const selected = standin::ParseWeekdays(TextOf(record, member::kWeekdayStatus).c_str());
    sys_days day = std::max(firstDay, DayOf(LocalTime(wanted.begin - duration)) - days(1));
    sys_days const last = LastDayOf(record, firstDay, DayOf(LocalTime(wanted.end)) + days(1));
    for (; day <= last; day += days(1)) {
        if (selected[std::chrono::weekday(day).c_encoding()]) {
            std::int64_t const begin = EpochOn(day, first);
            if (Interval{begin, begin + duration}.Overlaps(wanted)) {
                return true;
            }
        }
    }
    return false;
}

} // namespace

bool KALDTremolane::TaskIsOverLap(int start, int duration, Json::Value& oneShot,
                                  Json::Value& repeat)
{
    Interval const wanted{start, std::int64_t{start} + duration};
    for (Json::Value const& record : oneShot) {
        std::int64_t const begin = IntOf(record, member::kStartTime);
        if (begin != 0 && Interval{begin, begin + DurationOf(record)}.Overlaps(wanted)) {
            return true;
        }
    }
    for (Json::Value const& record : repeat) {
        int const begin = IntOf(record, member::kStartTime);
        if (begin != 0 && RepeatOverlaps(record, begin, wanted)) {
            return true;
        }
    }
    return false;
}
