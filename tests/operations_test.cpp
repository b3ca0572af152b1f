/// @file What no one request shows: simultaneous creates, dates and times, errors of the library.
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

// Tables of dates and times are laid out by hand.
// clang-format off

using OperationsTest = Appliance;

TEST_F(OperationsTest, LosesNothingOfSimultaneousCreates)
{
    for (int i = 1; i <= 50; ++i) {
        if (::fork() == 0) {
            ::_exit(Run("method=create&tuner=0&id=7&start_time=" + std::to_string(i)).codes.empty() ? 0 : 1);
        }
    }
    while (::wait(nullptr) > 0) {}
    EXPECT_EQ(Parsed(Read(kOneShot)).size(), 50U);
}

/// Operations that only other methods call.
struct Inside : ScheduleRecordingAPI {
    using ScheduleRecordingAPI::DateTimeToEpoch, ScheduleRecordingAPI::TimeTextToSeconds,
        ScheduleRecordingAPI::SecondsToTimeText, ScheduleRecordingAPI::IsWeekdaySelected,
        ScheduleRecordingAPI::ReportLibraryError, ScheduleRecordingAPI::m_errors;
};

TEST_F(OperationsTest, ConvertsDatesAndTimes)
{
    Inside api;
    int const winter = 1735689600, summer = 1751328000; // what a date means depends on the daylight saving of now
    std::string const berlin = "Europe/Berlin", york = "America/New_York", kolkata = "Asia/Kolkata", utc = "UTC";
    for (auto const& [zone, now, date, time, epoch] : {std::tuple{utc, winter, "2025-07-01", "12:30", 1751373000},
             {utc, winter, "2025-7-1", "12:30", -1},                  {utc, winter, "2025-07-01", "9:30", -1},
             {utc, winter, "aaaaaaaaaa", "01:02", 946688520},         {utc, winter, "2025/07/01", "00:00", winter},
             {utc, winter, "2025-13-01", "00:00", 1767225600},        {utc, winter, "9999999999", "00:00", -1},
             {utc, winter, "-999999999", "00:00", -1},                {utc, winter, "9999-12-31", "00:00", -1},
             {utc, winter, "2025-07-01", "xx:xx", summer},       {kolkata, summer, "2025-01-15", "20:15", 1736952300},
             {berlin, winter, "2025-01-15", "20:15", 1736968500},  {berlin, winter, "2025-07-15", "20:15", 1752606900},
             {berlin, summer, "2025-01-15", "20:15", 1736964900},  {berlin, summer, "2025-07-15", "20:15", 1752603300},
             {york, winter, "2025-07-15", "20:15", 1752628500},    {york, summer, "2025-07-15", "20:15", 1752624900}}) {
        SetZone(zone);
        seams::now = now + 30;
        EXPECT_EQ(api.DateTimeToEpoch(date, time), epoch) << zone << now << date << time;
    }
    ExpectEach<char const*, int>([&api](char const* text) { return api.TimeTextToSeconds(text); },
        {{"00:30", 1800}, {"25:00", 90000}, {"99:99", 362340}, {"1:300", 21600}, {"0:30", -1}, {"", -1}, {"abcde", -1},
         {"12:xx", -1}, {"12345", -1}});
    ExpectEach<int, std::string>([&api](int seconds) {
        char text[64] = "";
        return std::to_string(api.SecondsToTimeText(text, sizeof text, seconds)) + ' ' + text;
    }, {{59, "5 00:00"}, {-1, "5 00:00"}, {90000, "5 25:00"}, {3660, "5 01:01"}, {2147483647, "9 596523:14"}});
    SetZone("America/New_York"); // 0 is the last evening of 1969, a Wednesday
    ExpectEach<char const*, bool>([&api](char const* flags) { return api.IsWeekdaySelected(0, flags); },
        {{"0,0,0,1,0,0,0", true}, {"1,1,1,2,1,1,1", false}, {"1,1,1", false}, {"", false}, {"0,0,0,01x", true}});
}

TEST_F(OperationsTest, ReportsWhatTheLibraryLeft)
{
    Inside api;
    for (Json::Value outs = Parsed("[{},null,{'errno':null},{'errno':17}]"); Json::Value& out : outs) {
        api.ReportLibraryError(out);
    }
    EXPECT_EQ(api.m_errors, Parsed("[100,100,100,401]"));
}

} // namespace
