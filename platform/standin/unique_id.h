/// @file The keys by which requests name a stored schedule.
#pragma once

#include <json/value.h>

#include <optional>
#include <string>

namespace standin {

/// A channel and a start, as the store operations are given them.
struct ScheduleKey {
    int service;
    std::optional<int> frequency; ///< none if the channel id is in the plain form
    int start;                    ///< epoch seconds, above 0
};

/// A stored frequency, a number or a text of digits; none for anything else.
std::optional<int> FrequencyOf(Json::Value const& stored);

/// Reads a channel id and a decimal start; none if either is malformed.
std::optional<ScheduleKey> ParseKey(std::string const& id, std::string const& start);

} // namespace standin
