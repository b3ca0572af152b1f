/// @file Days and weekdays in the C library's local time zone.
#include "platform/standin/local_calendar.h"

#include <cstdlib>
#include <cstring>

namespace standin {

std::tm LocalTime(std::time_t time)
{
    std::tm local{};
    ::localtime_r(&time, &local);
    return local;
}

std::chrono::sys_days DayOf(std::tm const& local)
{
    return std::chrono::year_month_day(std::chrono::year(local.tm_year + 1900),
                                       std::chrono::month(static_cast<unsigned>(local.tm_mon + 1)),
                                       std::chrono::day(static_cast<unsigned>(local.tm_mday)));
}

std::optional<std::chrono::sys_days> ParseDate(char const* text)
{
    constexpr char kShape[] = "dddd-dd-dd";
    if (std::strlen(text) != sizeof kShape - 1) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < sizeof kShape - 1; ++i) {
        bool const isDigit = text[i] >= '0' && text[i] <= '9';
        if (kShape[i] == 'd' ? !isDigit : text[i] != kShape[i]) {
            return std::nullopt;
        }
    }
    std::chrono::year_month_day const date(
        std::chrono::year(std::atoi(text)),
        std::chrono::month(static_cast<unsigned>(std::atoi(text + 5))),
        std::chrono::day(static_cast<unsigned>(std::atoi(text + 8))));
    return date.ok() ? std::optional(std::chrono::sys_days(date)) : std::nullopt;
}

std::array<bool, 7> ParseWeekdays(char const* text)
{
    std::array<bool, 7> selected{};
    for (bool& day : selected) {
        day = std::strtol(text, nullptr, 10) == 1;
        text += std::strcspn(text, ",");
        if (*text == '\0') {
            break;
        }
        ++text;
    }
    return selected;
}

} // namespace standin
