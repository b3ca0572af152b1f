/// @file Days and weekdays of the local calendar.
#pragma once

#include <array>
#include <chrono>
#include <ctime>
#include <optional>

namespace standin {

/// Epoch seconds broken down to local wall-clock time.
std::tm LocalTime(std::time_t time);

/// The local day of a broken-down time, as a day of the civil calendar.
std::chrono::sys_days DayOf(std::tm const& local);

/// Reads YYYY-MM-DD; none if the text is no existing date.
std::optional<std::chrono::sys_days> ParseDate(char const* text);

/// Seven flags, Sunday first, from comma-separated numbers: 1 is selected, all else is not.
std::array<bool, 7> ParseWeekdays(char const* text);

} // namespace standin
