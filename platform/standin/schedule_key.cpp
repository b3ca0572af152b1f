/// @file Parsing channel ids and start texts, which are 32-bit decimal integers without a sign.
#include "platform/standin/schedule_key.h"

#include "platform/records.h"
#include "platform/standin/whole_number.h"
#include "tremolane/recording_service.h"

#include <string_view>

namespace {

/// Parses a text of decimal digits. Returns none if it is malformed or too large.
std::optional<int> ParseDigits(std::string_view text)
{
    return text.starts_with('-') ? std::nullopt : standin::ParseWholeNumber<int>(text);
}

} // namespace

std::optional<int> standin::FrequencyOf(Json::Value const& stored)
{
    return stored.isString() ? ParseDigits(appliance::AsText(stored))
           : stored.isInt()  ? std::optional(stored.asInt())
                             : std::nullopt;
}

std::optional<standin::ScheduleKey> standin::ParseKey(std::string const& id,
                                                      std::string const& start)
{
    int service = 0;
    int frequency = 0;
    std::optional<int> const seconds = ParseDigits(start);
    if (KALDTremolane::KALDVideoDTVParserUniqueId(id.c_str(), &service, &frequency) != 0 ||
        seconds.value_or(0) < 1) {
        return std::nullopt;
    }
    bool const plain = id.find('@') == std::string::npos;
    return ScheduleKey{service, plain ? std::nullopt : std::optional(frequency), *seconds};
}

int KALDTremolane::KALDVideoDTVParserUniqueId(char const* id, int* service, int* frequency)
{
    std::string_view const text = id;
    std::size_t const at = text.find('@');
    bool const plain = at == std::string_view::npos;
    std::optional<int> const first = ParseDigits(text.substr(0, at));
    std::optional<int> const second = plain ? 0 : ParseDigits(text.substr(at + 1));
    if (!first || !second) {
        return -1;
    }
    *service = *first;
    *frequency = *second;
    return 0;
}
