/// @file When two recordings overlap, and on which days a rule records.
#include "tremolane/recording_service.h"

#include <gtest/gtest.h>
#include <json/value.h>

#include <climits>
#include <cstdlib>
#include <ctime>

namespace {

constexpr int kStart = 1742932800; // Tuesday 2025-03-25 21:00 in Berlin
constexpr int kDay = 86400;
constexpr int kWeek = 7 * kDay - 3600; // to the same time of day: the clocks go forward between

struct Overlap : testing::Test {
    void SetUp() override
    {
        ::setenv("TZ", "Europe/Berlin", 1);
        ::tzset();
        m_shot["start_time"] = m_rule["start_time"] = kStart;
        m_shot["duration"] = m_rule["duration"] = 3600;
        m_rule["isweekly"] = true;
        m_rule["weekdaystatus"] = "0,0,1,0,0,0,0"; // Tuesdays
    }

    /// Whether a recording that begins that long after kStart overlaps the schedule.
    static bool Hits(Json::Value const& schedule, int after, int duration)
    {
        bool const isRule = schedule.isMember("isweekly");
        Json::Value shots(Json::arrayValue), rules(Json::arrayValue);
        (isRule ? rules : shots).append(schedule);
        return KALDTremolane::TaskIsOverLap(kStart + after, duration, shots, rules);
    }

    Json::Value m_shot, m_rule;
};

TEST_F(Overlap, EndsAreNotPartOfARecording)
{
    EXPECT_FALSE(Hits(m_shot, 3600, 60));
    EXPECT_FALSE(Hits(m_shot, -60, 60));
    EXPECT_TRUE(Hits(m_shot, 3599, 1));
    EXPECT_TRUE(Hits(m_shot, -60, 61));
}

TEST_F(Overlap, RecordWithoutADurationTakesHalfAnHour)
{
    for (int const duration : {0, -5}) {
        m_shot["duration"] = duration;
        EXPECT_TRUE(Hits(m_shot, 1799, 1));
        EXPECT_FALSE(Hits(m_shot, 1800, 1));
    }
}

TEST_F(Overlap, TimesDoNotOverflowAndAStartOf0CountsNever)
{
    m_shot["duration"] = INT_MAX;
    EXPECT_TRUE(Hits(m_shot, INT_MAX - kStart, INT_MAX));
    m_shot["start_time"] = m_rule["start_time"] = 0;
    EXPECT_FALSE(Hits(m_shot, 1 - kStart, INT_MAX));
    EXPECT_FALSE(Hits(m_rule, 1 - kStart, INT_MAX));
}

TEST_F(Overlap, WeeklyRuleCountsOnItsDaysAtItsTimeOfDay)
{
    EXPECT_TRUE(Hits(m_rule, 0, 60));
    EXPECT_TRUE(Hits(m_rule, kWeek, 60));
    EXPECT_FALSE(Hits(m_rule, kDay, 60));
    EXPECT_FALSE(Hits(m_rule, kWeek + 3600, 60));
    EXPECT_FALSE(Hits(m_rule, -7 * kDay, 60));
    EXPECT_TRUE(Hits(m_rule, kDay, 7 * kDay));
    m_rule["weekdaystatus"] = "0,0,2,0,0,0,0";
    EXPECT_FALSE(Hits(m_rule, 0, 60));
}

TEST_F(Overlap, WeeklyRuleCountsThroughItsEndDate)
{
    m_rule["end_date"] = "2025-04-01";
    EXPECT_TRUE(Hits(m_rule, kWeek, 60));
    m_rule["end_date"] = "2025-03-31";
    EXPECT_FALSE(Hits(m_rule, kWeek, 60));
    m_rule["end_date"] = "2025-02-30"; // no date, so no end
    EXPECT_TRUE(Hits(m_rule, kWeek, 60));
}

TEST_F(Overlap, RuleOfOneWeekCountsForSevenDays)
{
    m_rule["isweekly"] = false;
    m_rule["weekdaystatus"] = "1,1,1,1,1,1,1";
    EXPECT_TRUE(Hits(m_rule, kWeek - kDay, 60));
    EXPECT_FALSE(Hits(m_rule, kWeek, 60));
}

TEST(RuleDays, CountFromTodayThroughTheEndAYearAtMost)
{
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    auto const days = [](int isWeekly, char const* flags, std::string const& end) {
        int selected[7];
        int const limit = KALDTremolane::GetRepeatLimitTime(isWeekly, flags, end.c_str(), selected);
        std::string text;
        for (int const flag : selected) {
            text += std::to_string(flag);
        }
        return text + ' ' + std::to_string(limit);
    };
    auto const dateIn = [](int after) {
        std::time_t const date = std::time(nullptr) + std::time_t{after} * kDay;
        char text[16];
        std::strftime(text, sizeof text, "%Y-%m-%d", std::gmtime(&date));
        return std::string(text);
    };
    EXPECT_EQ(days(0, "1,0,0,0,0,0,1", dateIn(2)), "1000001 7");
    EXPECT_EQ(days(1, "0,1,0,2,0,0,x", dateIn(2)), "0100000 3");
    EXPECT_EQ(days(1, "1,1,1,1,1,1,1,1", dateIn(0)), "1111111 1");
    EXPECT_EQ(days(1, "", dateIn(-1)), "0000000 0");
    EXPECT_EQ(days(1, ",,,,,,1", "2999-01-01"), "0000001 366");
    for (char const* end : {"2025-13-01", "2025-1x-01", "2020-01-011", "1", ""}) {
        EXPECT_EQ(days(1, "1", end), "1000000 366") << end;
    }
}

} // namespace
