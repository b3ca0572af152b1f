/// @file Conversions that no request shows in full: lengths, weekdays, numbers, channels, lists.
#include "frame/schedule_recording_api.h"
#include "kald/web_api_util.h"
#include "network/host_port.h"
#include "tremolane/recording_service.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <ctime>

namespace {

struct Api : ScheduleRecordingAPI {
    using ScheduleRecordingAPI::DateTimeToEpoch, ScheduleRecordingAPI::IsWeekdaySelected,
        ScheduleRecordingAPI::m_errors, ScheduleRecordingAPI::ReportLibraryError,
        ScheduleRecordingAPI::SecondsToTimeText, ScheduleRecordingAPI::TimeTextToSeconds;
};

void SetZone(char const* zone)
{
    ::setenv("TZ", zone, 1);
    ::tzset();
}

TEST(Conversions, DateIsReadFieldByFieldAndNormalised)
{
    SetZone("UTC");
    Api api;
    EXPECT_EQ(api.DateTimeToEpoch("2025-07-01", "12:30"), 1751373000);
    EXPECT_EQ(api.DateTimeToEpoch("aaaaaaaaaa", "01:02"), 946688520);  // 2000-01-01
    EXPECT_EQ(api.DateTimeToEpoch("2025/07/01", "00:00"), 1735689600); // 2025-01-01
    EXPECT_EQ(api.DateTimeToEpoch("2025-13-01", "00:00"), 1767225600); // 2026-01-01
    EXPECT_EQ(api.DateTimeToEpoch("2025-07-01", "xx:xx"), 1751328000);
}

TEST(Conversions, DateOfAnotherLengthOrBeyond32BitsIsNone)
{
    SetZone("UTC");
    Api api;
    EXPECT_EQ(api.DateTimeToEpoch("2025-7-1", "12:30"), -1);
    EXPECT_EQ(api.DateTimeToEpoch("2025-07-01", "9:30"), -1);
    for (char const* date : {"9999999999", "-999999999", "9999-12-31"}) {
        EXPECT_EQ(api.DateTimeToEpoch(date, "00:00"), -1) << date;
    }
}

TEST(Conversions, LengthHasFiveCharactersAndTwoNumbers)
{
    Api api;
    EXPECT_EQ(api.TimeTextToSeconds("00:30"), 1800);
    EXPECT_EQ(api.TimeTextToSeconds("25:00"), 90000);
    EXPECT_EQ(api.TimeTextToSeconds("99:99"), 362340);
    EXPECT_EQ(api.TimeTextToSeconds("1:300"), 21600);
    for (char const* text : {"", "0:30", "00:030", "abcde", "12:xx", "12345"}) {
        EXPECT_EQ(api.TimeTextToSeconds(text), -1) << text;
    }
}

TEST(Conversions, SecondsBecomeHoursAndMinutes)
{
    Api api;
    auto const text = [&api](int seconds) {
        char buffer[64] = "";
        int const length = api.SecondsToTimeText(buffer, sizeof buffer, seconds);
        return std::to_string(length) + ' ' + buffer;
    };
    EXPECT_EQ(text(59), "5 00:00");
    EXPECT_EQ(text(-1), "5 00:00");
    EXPECT_EQ(text(3660), "5 01:01");
    EXPECT_EQ(text(90000), "5 25:00");
    EXPECT_EQ(text(INT_MAX), "9 596523:14");
}

TEST(Conversions, WeekdayIsSelectedByOneAlone)
{
    SetZone("America/New_York"); // 0 is the last evening of 1969, a Wednesday
    Api api;
    EXPECT_TRUE(api.IsWeekdaySelected(0, "0,0,0,1,0,0,0"));
    EXPECT_TRUE(api.IsWeekdaySelected(0, "0,0,0,01x"));
    for (char const* flags : {"1,1,1,2,1,1,1", "1,1,1,0,1,1,1", "1,1,1", ""}) {
        EXPECT_FALSE(api.IsWeekdaySelected(0, flags)) << flags;
    }
}

TEST(Conversions, ErrorOfTheLibraryIsMappedOr100)
{
    Api api;
    Json::Value none, null, known;
    null["errno"] = Json::Value();
    known["errno"] = EEXIST;
    for (Json::Value* out : {&none, &null, &known}) {
        api.ReportLibraryError(*out);
    }
    EXPECT_EQ(api.m_errors[0], 100);
    EXPECT_EQ(api.m_errors[1], 100);
    EXPECT_EQ(api.m_errors[2], 401);
    EXPECT_EQ(MappErrorCode(EPERM), 100);
}

TEST(Conversions, IntIsAWholeDecimalTextOf32Bits)
{
    auto const parsed = [](char const* text) {
        int value = 42; // stays if the text is none
        return KALD::WebAPIUtil::ParseInt(text, &value) ? value : value + 1;
    };
    EXPECT_EQ(parsed("007"), 7);
    EXPECT_EQ(parsed("+7"), 7);
    EXPECT_EQ(parsed("-2147483648"), INT_MIN);
    for (char const* text : {"", "+", "+-1", " 1", "1 ", "1x", "2147483648", "-2147483649"}) {
        EXPECT_EQ(parsed(text), 43) << text;
    }
}

TEST(Conversions, ChannelIsAServiceAndPerhapsAFrequency)
{
    auto const parsed = [](char const* text) {
        int service = 1, frequency = 2; // stay if the text is none
        int const result = KALDTremolane::KALDVideoDTVParserUniqueId(text, &service, &frequency);
        return std::to_string(result) + ' ' + std::to_string(service) + '@' +
               std::to_string(frequency);
    };
    EXPECT_EQ(parsed("7@474"), "0 7@474");
    EXPECT_EQ(parsed("007"), "0 7@0");
    for (char const* text : {"", "@", "7@", "@4", "+7", "-7", "7 ", "7@4@4", "2147483648"}) {
        EXPECT_EQ(parsed(text), "-1 1@2") << text;
    }
}

TEST(Conversions, SeparatorsMakeOneMorePiece)
{
    EXPECT_EQ(KALD::WebAPIUtil::ParseToArray("", ",").size(), 0U);
    EXPECT_EQ(KALD::WebAPIUtil::ParseToArray(",", ",").size(), 2U);
    EXPECT_EQ(KALD::WebAPIUtil::ParseToArray("a,b", ",")[1], "b");
}

TEST(Conversions, HostAndPortOfALocation)
{
    auto const split = [](std::string const& text) {
        auto const [host, port] = Tremolane::network_utils::SplitHostPort(text.c_str());
        return host + '|' + port;
    };
    std::string const big(5000, 'a'), cut(4095, 'a');
    for (auto const& [text, expected] : std::initializer_list<std::pair<std::string, std::string>>{
             {"", "|"},
             {"tv", "tv|"},
             {"tv:81", "tv|81"},
             {":80", "|80"},
             {"/x:80", "|"},
             {"tv:", "tv|"},
             {"tv:/x", "tv|"},
             {"tv/x:80", "tv|"},
             {"a:b:c/d", "a|b:c"},
             {"[fe80::1]:82/x", "[fe80::1]|82"},
             {"[fe80::1", "[fe80::1|"},
             {"[::1]x:80", "[::1]|"},
             {"[a/b]]:1", "[a/b]|"},
             {"b:" + big + "/x", "b|" + cut},
             {big + ":80", cut + "|80"},
             {'[' + big + "]:80", '[' + cut.substr(1) + "|80"}}) {
        EXPECT_EQ(split(text), expected);
    }
    EXPECT_EQ(Tremolane::network_utils::SplitHostPort(nullptr).host, "");
}

} // namespace
