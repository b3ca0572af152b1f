/// @file Fuzz target: the functions that take texts apart, each by itself.
#include "fuzz/fuzz_target.h"
#include "kald/libc.h"
#include "kald/web_api_util.h"
#include "network/host_port.h"
#include "platform/standin/documents.h"
#include "platform/standin/json_reader.h"
#include "tests/support/appliance.h"
#include "tests/support/seams.h"
#include "tremolane/recording_service.h"

#include <json/reader.h>
#include <json/writer.h>

#include <sstream>

namespace {

struct Inside : ScheduleRecordingAPI {
    using ScheduleRecordingAPI::DateTimeToEpoch, ScheduleRecordingAPI::IsWeekdaySelected,
        ScheduleRecordingAPI::SecondsToTimeText, ScheduleRecordingAPI::TimeTextToSeconds;
};

std::string Joined(Json::Value const& pieces, std::string const& separator)
{
    std::string text;
    for (Json::Value const& piece : pieces) {
        text += (&piece == &*pieces.begin() ? "" : separator) + piece.asString();
    }
    return text;
}

void TakeApart(std::string const& text, std::string const& other)
{
    char const* const first = text.c_str();
    char const* const second = other.c_str();
    int service = 0;
    int frequency = 0;
    int flags[7];
    int const number = KALDTremolane::KALDVideoDTVParserUniqueId(first, &service, &frequency);
    Require(number == 0 ? service >= 0 && frequency >= 0 : service == 0 && frequency == 0);
    auto const address = Tremolane::network_utils::SplitHostPort(first);
    Require((*first == '[' || address.host.find('/') == std::string::npos) &&
            address.port.size() < 4096);
    std::string const separator = *second != '\0' ? second : ",";
    Json::Value const pieces = KALD::WebAPIUtil::ParseToArray(first, separator.c_str());
    Require(Joined(pieces, separator) == first);
    Inside api;
    int const start = api.DateTimeToEpoch(first, second);
    char time[8];
    api.SecondsToTimeText(time, sizeof time, api.TimeTextToSeconds(first));
    api.IsWeekdaySelected(start, first);
    int const limit = KALDTremolane::GetRepeatLimitTime(start & 1, first, second, flags);
    Require(limit >= 0 && limit <= 366);
}

void ReadSetting(std::string const& text, std::string const& key)
{
    Appliance::Remove("/etc/kaldinfo.conf"); // file systems flush what is truncated and rewritten
    Appliance::Write("/etc/kaldinfo.conf", text);
    char value[8] = "";
    int const length = KDLIBCFileGetKeyValue(Appliance::PathOf("/etc/kaldinfo.conf").c_str(),
                                             key.c_str(), value, sizeof value, 0);
    Require(length >= 0 && std::string(value).size() <= static_cast<std::size_t>(length));
}

/// What is read as JSON is what another reader makes of it, and a save loses nothing of it.
void ReadJson(std::string const& text)
{
    Json::Value document, other, saved;
    Json::CharReaderBuilder builder;
    builder["stackLimit"] = 2000;
    std::istringstream stream(text);
    if (standin::ParseJson(text, document)) {
        Require(parseFromStream(builder, stream, &other, nullptr));
        Require(standin::ParseJson(Json::FastWriter().write(document), saved));
        Require(document == other && document == saved);
    }
}

void FindOverlap(std::string const& numbers, std::string const& oneShot, std::string const& repeat)
{
    Json::Value const pair = KALD::WebAPIUtil::ParseToArray(numbers.c_str(), ",");
    int start = 0;
    int duration = 0;
    KALD::WebAPIUtil::ParseInt(pair.size() > 0 ? pair[0].asCString() : "", &start);
    KALD::WebAPIUtil::ParseInt(pair.size() > 1 ? pair[1].asCString() : "", &duration);
    try { // a member of the wrong type ends the request; a text nested deep, the parsing here
        Json::Value shots = Parsed(oneShot);
        Json::Value rules = Parsed(repeat);
        KALDTremolane::TaskIsOverLap(start, duration, shots, rules);
    } catch (Json::Exception const&) {
    }
}

} // namespace

int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size)
{
    std::vector<std::string> const texts = CutInput(data, size, 4);
    TakeApart(texts[0], texts[1]);
    ReadSetting(texts[0], texts[1]);
    ReadJson(texts[0]);
    FindOverlap(texts[0], texts[2], texts[3]);
    seams::Reset(); // what is kept from one input to the next makes the fuzzer look for leaks
    return 0;
}
