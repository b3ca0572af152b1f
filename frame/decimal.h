/// @file Decimal texts of clients that nothing has tested.
#pragma once

#include <cstdlib>

/// The number at the front of a text as strtol reads it, 0 if there is none.
inline long LeadingNumber(char const* text)
{
    return std::strtol(text, nullptr, 10);
}

/// The same narrowed to 32 bits; for what is only a name, such as a tuner's number.
inline int LeadingInt(char const* text)
{
    return static_cast<int>(LeadingNumber(text));
}
