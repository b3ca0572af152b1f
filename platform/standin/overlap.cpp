/// @file Whether a recording would overlap a stored one.
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/standin/local_calendar.h"
#include "platform/standin/record_store.h"
#include "tremolane/recording_service.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <utility>
#include <vector>

namespace {

using namespace appliance;
using standin::DayOf;
using standin::DurationOf;
using standin::LocalTime;
using std::chrono::days;
using std::chrono::sys_days;

constexpr std::int64_t kDaySeconds = 86400;

/// Epoch seconds, half-open.
struct Interval {
    std::int64_t begin, end;

    bool Overlaps(Interval const& other) const { return begin < other.end && other.begin < end; }
};

/// The wanted interval, and local time around it.
struct Wanted {
    Interval interval;
    std::int64_t offset; ///< of local time from UTC, seconds
    bool isOffsetSteady; ///< it is the same from two days before the interval to two days after
};

Wanted WantedAt(int start, int duration)
{
    Interval const interval{start, std::int64_t{start} + duration};
    std::int64_t const before = LocalTime(interval.begin - 2 * kDaySeconds).tm_gmtoff;
    std::int64_t const after = LocalTime(interval.end + 2 * kDaySeconds).tm_gmtoff;
    return {interval, before, before == after && duration <= kDaySeconds};
}

/// Returns the time at which the local clock shows `timeOfDay` on `day`.
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

/// The occurrences of a repeat record.
class Recurrence {
public:
    Recurrence(Json::Value const& record, int start)
        : m_duration(DurationOf(record)), m_first(LocalTime(start)), m_firstDay(DayOf(m_first)),
          m_lastDay(sys_days::max()),
          m_selected(standin::ParseWeekdays(TextOf(record, member::kWeekdayStatus).c_str()))
    {
        if (auto const end = standin::ParseDate(TextOf(record, member::kEndDate).c_str())) {
            m_lastDay = *end;
        }
        if (!FlagOf(record, member::kIsWeekly)) {
            m_lastDay = std::min(m_lastDay, m_firstDay + days(6));
        }
    }

    bool Overlaps(Wanted const& wanted) const
    {
        return wanted.isOffsetSteady && m_duration <= kDaySeconds ? OverlapsBySeconds(wanted)
                                                                  : OverlapsByCalendar(wanted);
    }

private:
    /// All days have 24 hours, so arithmetic finds the few occurrences that are close enough.
    bool OverlapsBySeconds(Wanted const& wanted) const
    {
        std::int64_t const shift =
            wanted.offset - (m_first.tm_hour * 3600 + m_first.tm_min * 60 + m_first.tm_sec);
        auto const dayOf = [shift](std::int64_t time) {
            std::chrono::sys_seconds const shifted{std::chrono::seconds(time + shift)};
            return std::chrono::floor<days>(shifted);
        };
        sys_days const last = dayOf(wanted.interval.end - 1);
        for (sys_days day = dayOf(wanted.interval.begin - m_duration) + days(1); day <= last;
             day += days(1)) {
            if (OccursOn(day)) {
                return true;
            }
        }
        return false;
    }

    /// Days of the local calendar differ in length, so each occurrence is asked from the calendar,
    /// and the range is one day longer at both ends.
    bool OverlapsByCalendar(Wanted const& wanted) const
    {
        Interval const& interval = wanted.interval;
        sys_days const last = DayOf(LocalTime(interval.end)) + days(1);
        for (sys_days day =
                 std::max(m_firstDay, DayOf(LocalTime(interval.begin - m_duration)) - days(1));
             day <= std::min(last, m_lastDay); day += days(1)) {
            if (OccursOn(day)) {
                std::int64_t const begin = EpochOn(day, m_first);
                if (Interval{begin, begin + m_duration}.Overlaps(interval)) {
                    return true;
                }
            }
        }
        return false;
    }

    bool OccursOn(sys_days day) const
    {
        return m_firstDay <= day && day <= m_lastDay &&
               m_selected[std::chrono::weekday(day).c_encoding()];
    }

    std::int64_t m_duration;
    std::tm m_first;
    sys_days m_firstDay, m_lastDay;
    std::array<bool, 7> m_selected;
};

/// The times of a tuner's schedules, taken from its two documents.
class Timetable {
public:
    Timetable(Json::Value const& oneShot, Json::Value const& repeat)
    {
        std::vector<Interval> intervals;
        for (Json::Value const& record : oneShot) {
            std::int64_t const begin = IntOf(record, member::kStartTime);
            if (begin != 0) {
                intervals.push_back({begin, begin + DurationOf(record)});
            }
        }
        std::ranges::sort(intervals, {}, &Interval::begin);
        for (Interval const& interval : intervals) {
            if (!m_busy.empty() && interval.begin < m_busy.back().end) {
                m_busy.back().end = std::max(m_busy.back().end, interval.end);
            } else {
                m_busy.push_back(interval);
            }
        }
        for (Json::Value const& record : repeat) {
            int const start = IntOf(record, member::kStartTime);
            if (start != 0) {
                m_recurrences.emplace_back(record, start);
            }
        }
    }

    bool Overlaps(Wanted const& wanted) const
    {
        auto const busy =
            std::ranges::upper_bound(m_busy, wanted.interval.begin, {}, &Interval::end);
        return (busy != m_busy.end() && busy->Overlaps(wanted.interval)) ||
               std::ranges::any_of(m_recurrences, [&wanted](Recurrence const& recurrence) {
                   return recurrence.Overlaps(wanted);
               });
    }

private:
    std::vector<Interval> m_busy; ///< sorted and disjoint
    std::vector<Recurrence> m_recurrences;
};

/// Returns the timetable of two documents. An edit asks about hundreds of days, so the last
/// timetable is kept. The documents are marked, by their position in a source text, which they do
/// not have otherwise: another document at the same address has another mark.
Timetable const& TimetableOf(Json::Value& oneShot, Json::Value& repeat)
{
    static std::optional<Timetable> timetable;
    static std::pair<Json::Value const*, Json::Value const*> documents;
    static std::ptrdiff_t mark = 0;
    bool const isKept = timetable &&
                        documents == std::pair(&std::as_const(oneShot), &std::as_const(repeat)) &&
                        oneShot.getOffsetStart() == mark && repeat.getOffsetStart() == mark;
    if (!isKept) {
        timetable.emplace(oneShot, repeat);
        documents = {&oneShot, &repeat};
        oneShot.setOffsetStart(++mark);
        repeat.setOffsetStart(mark);
    }
    return *timetable;
}

} // namespace

bool KALDTremolane::TaskIsOverLap(int start, int duration, Json::Value& oneShot,
                                  Json::Value& repeat)
{
    return TimetableOf(oneShot, repeat).Overlaps(WantedAt(start, duration));
}
