/// @file Epoch seconds as local time.
#pragma once

#include <ctime>
#include <string>

namespace appliance {

/// Converts epoch seconds to local wall-clock time.
inline std::tm LocalTime(std::time_t time)
{
    std::tm local{};
    ::localtime_r(&time, &local);
    return local;
}

/// Renders epoch seconds in local time, in a format of strftime().
inline std::string LocalText(std::time_t time, char const* format)
{
    std::tm const local = LocalTime(time);
    char text[64];
    return {text, std::strftime(text, sizeof text, format, &local)};
}

} // namespace appliance
