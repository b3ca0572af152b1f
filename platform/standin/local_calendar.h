/// @file Days and weekdays of the local calendar.
#pragma once

#include <array>
#include <chrono>
#include <ctime>
#include <optional>

namespace standin {

/// Returns the calendar day of a local wall-clock time.
std::chrono::sys_days DayOf(std::tm const& local);

/// Parses a date YYYY-MM-DD. Returns none if the text is malformed or the date does not exist.
std::optional<std::chrono::sys_days> ParseDate(char const* text);

/// Parses comma-separated weekday flags. Returns seven flags, Sunday first. Only the number 1
/// selects a day; missing flags do not.
std::array<bool, 7> ParseWeekdays(char const* text);

} // namespace standin
