/// @file Decimal texts of clients that nothing has tested.
#pragma once

#include <cstdlib>

/// The number at the front of a text as strtol reads it, 0 if there is none, narrowed to 32 bits.
inline int LeadingInt(char const* text)
{
    return static_cast<int>(std::strtol(text, nullptr, 10));
}
