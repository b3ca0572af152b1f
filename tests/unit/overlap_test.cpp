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

class Overlap : public testing::Test {
protected:
    void SetUp() override
    {
        ::setenv("TZ", "Europe/Berlin", 1);
        ::tzset();
        m_shot["start_time"] = m_rule["start_time"] = kStart;
        m_shot["duration"] = 100;
        m_rule["duration"] = 3600;
        m_rule["isweekly"] = true;
        m_rule["weekdaystatus"] = "0,0,1,0,0,0,0"; // Tuesdays
        m_rule["end_date"] = "1";
    }

    /// Whether a recording that begins that long after kStart overlaps the one-shot schedule.
    bool HitsShot(int after, int duration) { return Hits(m_shot, {}, after, duration); }

    /// Whether it overlaps the rule.
    bool HitsRule(int after, int duration) { return Hits({}, m_rule, after, duration); }

    Json::Value m_shot, m_rule;

private:
    static bool Hits(Json::Value const& shot, Json::Value const& rule, int after, int duration)
    {
        Json::Value shots(Json::arrayValue), rules(Json::arrayValue);
        shots.append(shot);
        rules.append(rule);
        return KALDTremolane::TaskIsOverLap(kStart + after, duration, shots, rules);
    }
};

TEST_F(Overlap, EndsAreNotPartOfARecording)
{
    EXPECT_FALSE(HitsShot(100, 60));
    EXPECT_FALSE(HitsShot(-60, 60));
    EXPECT_TRUE(HitsShot(99, 1));
    EXPECT_TRUE(HitsShot(-60, 61));
}

TEST_F(Overlap, RecordWithoutADurationTakesHalfAnHour)
{
    for (int const duration : {0, -5}) {
        m_shot["duration"] = duration;
        EXPECT_TRUE(HitsShot(1799, 1));
        EXPECT_FALSE(HitsShot(1800, 1));
    }
}

TEST_F(Overlap, TimesDoNotOverflow)
{
    m_shot["duration"] = INT_MAX;
    EXPECT_TRUE(HitsShot(INT_MAX - kStart, INT_MAX));
}

TEST_F(Overlap, StartOf0CountsNever)
{
    m_shot["start_time"] = m_rule["start_time"] = 0;
    EXPECT_FALSE(HitsShot(1 - kStart, INT_MAX));
    EXPECT_FALSE(HitsRule(1 - kStart, INT_MAX));
}

TEST_F(Overlap, WeeklyRuleCountsOnItsDaysAtItsTimeOfDay)
{
    EXPECT_TRUE(HitsRule(0, 60));
    EXPECT_TRUE(HitsRule(kWeek, 60));
    EXPECT_FALSE(HitsRule(kDay, 60));
    EXPECT_FALSE(HitsRule(kWeek + 3600, 60));
    EXPECT_FALSE(HitsRule(-7 * kDay, 60));
    EXPECT_TRUE(HitsRule(kDay, 7 * kDay));
    m_rule["weekdaystatus"] = "0,0,2,0,0,0,0";
    EXPECT_FALSE(HitsRule(0, 60));
}

TEST_F(Overlap, WeeklyRuleCountsThroughItsEndDate)
{
    m_rule["end_date"] = "2025-04-01";
    EXPECT_TRUE(HitsRule(kWeek, 60));
    m_rule["end_date"] = "2025-03-31";
    EXPECT_FALSE(HitsRule(kWeek, 60));
    m_rule["end_date"] = "2025-02-30"; // no date, so no end
    EXPECT_TRUE(HitsRule(kWeek, 60));
}

TEST_F(Overlap, RuleOfOneWeekCountsForSevenDays)
{
    m_rule["isweekly"] = false;
    m_rule["weekdaystatus"] = "1,1,1,1,1,1,1";
    EXPECT_TRUE(HitsRule(kWeek - kDay, 60));
    EXPECT_FALSE(HitsRule(kWeek, 60));
}

/// The flags and the number of days, as text.
std::string Days(bool isWeekly, char const* weekdays, std::string const& end)
{
    int flags[7];
    int const days =
        KALDTremolane::GetRepeatLimitTime(isWeekly ? 1 : 0, weekdays, end.c_str(), flags);
    std::string text;
    for (int const flag : flags) {
        text += std::to_string(flag);
    }
    return text + ' ' + std::to_string(days);
}

std::string DateIn(int days)
{
    std::time_t const now = std::time(nullptr);
    std::tm date = *std::localtime(&now);
    date.tm_mday += days;
    date.tm_hour = 12;
    std::mktime(&date);
    char text[16];
    std::strftime(text, sizeof text, "%Y-%m-%d", &date);
    return text;
}

TEST(RuleDays, AreSevenForOneWeek)
{
    EXPECT_EQ(Days(false, "1,0,0,0,0,0,1", DateIn(2)), "1000001 7");
}

TEST(RuleDays, CountFromTodayThroughTheEnd)
{
    EXPECT_EQ(Days(true, "0,1,0,2,0,0,x", DateIn(2)), "0100000 3");
    EXPECT_EQ(Days(true, "1,1,1,1,1,1,1,1", DateIn(0)), "1111111 1");
    EXPECT_EQ(Days(true, "", DateIn(-1)), "0000000 0");
    EXPECT_EQ(Days(true, "0", "2020-01-01"), "0000000 0");
}

TEST(RuleDays, AreAYearAtMost)
{
    EXPECT_EQ(Days(true, ",,,,,,1", "2999-01-01"), "0000001 366");
    for (char const* end : {"2025-13-01", "2025-1x-01", "2020-01-011", "1", ""}) {
        EXPECT_EQ(Days(true, "1", end), "1000000 366") << end;
    }
}

} // namespace
