/// @file Numbers that are the whole of a text.
#pragma once

#include <charconv>
#include <optional>
#include <string_view>
#include <system_error>

namespace standin {

/// Parses a text that is a number and nothing else, with a '-' if it is negative. Returns none if
/// it is malformed or beyond the range of the type.
template <class Number>
std::optional<Number> ParseWholeNumber(std::string_view text, int base = 10)
{
    Number value = 0;
    // cppcheck-suppress invalidLifetime ; it takes the text for one that ended before the call
    char const* const end = text.data() + text.size();
    // cppcheck-suppress invalidLifetime
    auto const [last, error] = std::from_chars(text.data(), end, value, base);
    return error == std::errc() && last == end ? std::optional(value) : std::nullopt;
}

} // namespace standin
