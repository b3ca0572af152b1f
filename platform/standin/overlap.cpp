/// @file Whether a recording would overlap a stored one.
#include "platform/local_time.h"
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
using namespace standin;
using std::chrono::days;
using std::chrono::seconds;
using std::chrono::sys_days;
using std::chrono::sys_seconds;

constexpr std::int64_t kDaySeconds = 86400;

/// Epoch seconds, half-open.
struct Interval {
    std::int64_t begin, end;

    bool Overlaps(Interval const& other) const { return begin < other.end && other.begin < end; }
};

/// The wanted interval, and local time around it.
struct Wanted : Interval {
    std::int64_t offset; ///< of local time from UTC, seconds
    bool isOffsetSteady; ///< it is the same from two days before the interval to two days after
};

Wanted WantedAt(int start, int duration)
{
    Interval const wanted{start, std::int64_t{start} + duration};
    std::int64_t const before = LocalTime(wanted.begin - 2 * kDaySeconds).tm_gmtoff;
    std::int64_t const after = LocalTime(wanted.end + 2 * kDaySeconds).tm_gmtoff;
    return {wanted, before, before == after && duration <= kDaySeconds};
}

/// The occurrences of a repeat record.
class Recurrence {
public:
    Recurrence(Json::Value const& record, int start)
        : m_duration(DurationOf(record)), m_first(LocalTime(start)), m_firstDay(DayOf(m_first)),
          m_lastDay(ParseDate(TextOf(record, member::kEndDate).c_str()).value_or(sys_days::max())),
          m_selected(ParseWeekdays(TextOf(record, member::kWeekdayStatus).c_str()))
    {
        if (!FlagOf(record, member::kIsWeekly)) {
            m_lastDay = std::min(m_lastDay, m_firstDay + days(6));
        }
    }

    bool Overlaps(Wanted const& wanted) const
    {
        bool const isOffsetSteady = wanted.isOffsetSteady && m_duration <= kDaySeconds;
        auto const dayAt = [&wanted](std::int64_t time) {
            return std::chrono::floor<days>(sys_seconds(seconds(time + wanted.offset)));
        };
        // Two days more at both ends: the offset there can differ by up to a day, and a clock
        // reading that was skipped can move the start by another.
        sys_days const last = std::min(m_lastDay, dayAt(wanted.end) + days(2));
        for (sys_days day = std::max(m_firstDay, dayAt(wanted.begin - m_duration) - days(2));
             day <= last; day += days(1)) {
            if (!m_selected[std::chrono::weekday(day).c_encoding()]) {
                continue;
            }
            std::int64_t const begin =
                isOffsetSteady ? LocalSecondsOn(day) - wanted.offset : EpochOn(day);
            if (Interval{begin, begin + m_duration}.Overlaps(wanted)) {
                return true;
            }
        }
        return false;
    }

private:
    /// Returns the start of the occurrence on a day, as seconds of the local clock.
    std::int64_t LocalSecondsOn(sys_days day) const
    {
        seconds const sum = day.time_since_epoch() + std::chrono::hours(m_first.tm_hour) +
                            std::chrono::minutes(m_first.tm_min) + seconds(m_first.tm_sec);
        return sum.count();
    }

    /// Returns that start in epoch seconds. Slow: it asks the local calendar.
    std::int64_t EpochOn(sys_days day) const
    {
        std::tm local = m_first;
        local.tm_mday += static_cast<int>((day - m_firstDay).count());
        local.tm_isdst = -1;
        return std::mktime(&local);
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
        for (Json::Value const& record : oneShot) {
            std::int64_t const begin = IntOf(record, member::kStartTime);
            if (begin != 0) {
                m_intervals.push_back({begin, begin + DurationOf(record)});
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
        auto const overlaps = [&wanted](auto const& stored) { return stored.Overlaps(wanted); };
        return std::ranges::any_of(m_intervals, overlaps) ||
               std::ranges::any_of(m_recurrences, overlaps);
    }

private:
    std::vector<Interval> m_intervals;
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
