/// @file What no request shows: the merge of foreign members, and an error that the library leaves.
#include "frame/schedule_recording_api.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

struct Api : ScheduleRecordingAPI {
    using ScheduleRecordingAPI::m_errors, ScheduleRecordingAPI::ReportLibraryError;
};

TEST(Merge, LeavesForeignMembersAtTheirPosition)
{
    Json::Value view, repeat;
    view["schedules"][0]["start_time"] = 9;
    view["schedules"][0]["foreign"] = "of the first";
    repeat[0]["start_time"] = 1;
    repeat[0]["foreign"] = "of a rule";
    ScheduleRecordingAPI::MergeSchedules(view, repeat);
    Json::Value const& merged = view["schedules"];
    EXPECT_EQ(merged[0]["start_time"], 1);
    EXPECT_EQ(merged[0]["foreign"], "of the first");
    EXPECT_EQ(merged[1]["start_time"], 9);
    EXPECT_FALSE(merged[1].isMember("foreign"));
}

TEST(LibraryError, IsMappedOr100)
{
    Api api;
    Json::Value out;
    api.ReportLibraryError(out);
    for (int const error : {EEXIST, EPERM}) {
        out["errno"] = error;
        api.ReportLibraryError(out);
    }
    EXPECT_EQ(api.m_errors[0], 100);
    EXPECT_EQ(api.m_errors[1], 401);
    EXPECT_EQ(api.m_errors[2], 100);
}

} // namespace
