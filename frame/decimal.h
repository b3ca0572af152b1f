/// @file Numbers in texts of clients.
#pragma once

#include <cstdint>
#include <cstdlib>

/// Returns the decimal number at the start of a text, as strtoll() reads it; 0 if there is none.
/// It has 64 bits on every processor. A caller that needs a name and no quantity, such as a tuner's
/// number, narrows it.
inline std::int64_t ParseNumberPrefix(char const* text)
{
    return std::strtoll(text, nullptr, 10);
}
