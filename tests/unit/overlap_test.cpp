/// @file When two recordings overlap, and on which days a rule records.
#include "tremolane/recording_service.h"

#include <gtest/gtest.h>
#include <json/value.h>

#include <array>
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
    m_shot["duration"] = 0; // half an hour
    EXPECT_TRUE(Hits(m_shot, 1799, 1));
    EXPECT_FALSE(Hits(m_shot, 1800, 1));
    m_shot["duration"] = INT_MAX;
    EXPECT_TRUE(Hits(m_shot, INT_MAX - kStart, INT_MAX));
}

TEST_F(Overlap, StartOf0CountsNever)
{
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
}

TEST_F(Overlap, RuleCountsThroughItsEndDateOrForAWeek)
{
    m_rule["end_date"] = "2025-04-01";
    EXPECT_TRUE(Hits(m_rule, kWeek, 60));
    m_rule["end_date"] = "2025-03-31";
    EXPECT_FALSE(Hits(m_rule, kWeek, 60));
    m_rule["end_date"] = "2025-02-30"; // no date, so no end
    EXPECT_TRUE(Hits(m_rule, kWeek, 60));
    m_rule["isweekly"] = false;
    m_rule["weekdaystatus"] = "1,1,1,1,1,1,1";
    EXPECT_TRUE(Hits(m_rule, kWeek - kDay, 60));
    EXPECT_FALSE(Hits(m_rule, kWeek, 60));
}

TEST_F(Overlap, DaysOfARuleCountFromTodayThroughItsEndAYearAtMost)
{
    std::time_t const now = std::time(nullptr);
    char today[16];
    std::strftime(today, sizeof today, "%Y-%m-%d", std::localtime(&now));
    std::array<int, 7> selected{};
    auto const days = [&selected](int isWeekly, char const* end) {
        return KALDTremolane::GetRepeatLimitTime(isWeekly, "0,1,,2,x,1", end, selected.data());
    };
    EXPECT_EQ(days(0, today), 7);
    EXPECT_EQ(days(1, today), 1);
    EXPECT_EQ(days(1, "2020-01-01"), 0);
    EXPECT_EQ(days(1, "2999-01-01"), 366);
    EXPECT_EQ(selected, (std::array{0, 1, 0, 0, 0, 1, 0}));
}

} // namespace
