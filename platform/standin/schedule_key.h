/// @file The key by which requests name a stored schedule.
#pragma once

#include <json/value.h>

#include <optional>
#include <string>

namespace standin {

/// The channel and the start of a schedule.
struct ScheduleKey {
    int service;
    std::optional<int> frequency; ///< none if the channel id is in the plain form
    int start;                    ///< epoch seconds, above 0
};

/// Reads a stored frequency: a number or a text of digits. Returns none for anything else.
std::optional<int> FrequencyOf(Json::Value const& stored);

/// Parses a channel id and a decimal start. Returns none if either is malformed.
std::optional<ScheduleKey> ParseKey(std::string const& id, std::string const& start);

} // namespace standin
