/// @file What no request shows: the merge of foreign members, an error that the library leaves, and
/// the privilege file as it is written.
#include "frame/privilege.h"
#include "frame/schedule_recording_api.h"
#include "platform/appliance_paths.h"
#include "tests/files.h"

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
    Json::Value none, known, other;
    known["errno"] = EEXIST;
    other["errno"] = EPERM;
    for (Json::Value* out : {&none, &known, &other}) {
        api.ReportLibraryError(*out);
    }
    EXPECT_EQ(api.m_errors[0], 100);
    EXPECT_EQ(api.m_errors[1], 401);
    EXPECT_EQ(api.m_errors[2], 100);
}

TEST(Privileges, AreWrittenWhenTheObjectGoes)
{
    PutFile(appliance::kPrivilegeFile, R"({"7":1,"1026":{"sharing":true}})");
    {
        PrivilegeFile file;
        file.SetPrivilege(7, "dtv", true);
        file.SetPrivilege(1026, "dtv", false);
        EXPECT_TRUE(file.GetPrivilege(7, "dtv"));
    }
    EXPECT_EQ(ReadFile(appliance::kPrivilegeFile),
              "{\"1026\":{\"dtv\":false,\"sharing\":true},\"7\":{\"dtv\":true}}\n");
}

} // namespace
