/// @file The merge of the two kinds of schedules, which is only seen whole from inside: this
/// recording service lists no members of its own.
#include "frame/schedule_recording_api.h"

#include <gtest/gtest.h>

namespace {

struct Api : ScheduleRecordingAPI {
    using ScheduleRecordingAPI::MergeSchedules;
};

Json::Value Schedule(char const* title, int start)
{
    Json::Value schedule;
    schedule["title"] = title;
    schedule["start_time"] = start;
    return schedule;
}

TEST(Merge, LeavesForeignMembersAtTheirPosition)
{
    Json::Value view, repeat;
    view["schedules"].append(Schedule("late", 9));
    view["schedules"].append(Schedule("middle", 3));
    view["schedules"][0]["foreign"] = "of late";
    repeat.append(Schedule("early", 1));
    repeat[0]["foreign"] = "of early";
    Api().MergeSchedules(view, repeat);
    Json::Value const& merged = view["schedules"];
    ASSERT_EQ(merged.size(), 3U);
    EXPECT_EQ(merged[0]["title"], "early");
    EXPECT_EQ(merged[0]["foreign"], "of late");
    EXPECT_EQ(merged[1]["title"], "middle");
    EXPECT_EQ(merged[2]["title"], "late");
    EXPECT_EQ(merged[2].size(), 8U); // no foreign member
    EXPECT_EQ(repeat[0]["title"], "early");
}

} // namespace
