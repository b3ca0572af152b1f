/// @file Days and weekdays in the C library's local time zone.
#include "platform/standin/local_calendar.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace standin {

std::chrono::sys_days DayOf(std::tm const& local)
{
    return std::chrono::year_month_day(std::chrono::year(local.tm_year + 1900),
                                       std::chrono::month(static_cast<unsigned>(local.tm_mon + 1)),
                                       std::chrono::day(static_cast<unsigned>(local.tm_mday)));
}

std::optional<std::chrono::sys_days> ParseDate(char const* text)
{
    unsigned year = 0;
    unsigned month = 0;
    unsigned day = 0;
    std::sscanf(text, "%4u-%2u-%2u", &year, &month, &day);
    char shape[64];
    std::snprintf(shape, sizeof shape, "%04u-%02u-%02u", year, month, day);
    std::chrono::year_month_day const date(std::chrono::year(static_cast<int>(year)),
                                           std::chrono::month(month), std::chrono::day(day));
    bool const isDate = std::strcmp(shape, text) == 0 && date.ok(); // sscanf() is less strict
    return isDate ? std::optional(std::chrono::sys_days(date)) : std::nullopt;
}

std::array<bool, 7> ParseWeekdays(char const* text)
{
    std::array<bool, 7> selected{};
    for (bool& day : selected) {
        day = std::strtol(text, nullptr, 10) == 1;
        text += std::strcspn(text, ",");
        text += *text == ',' ? 1 : 0;
    }
    return selected;
}

} // namespace standin
