/// @file What no request shows: the merge of foreign members, an error that the library leaves, the
/// privilege file as it is written, settings, tools, and the index of user-defined records.
#include "frame/privilege.h"
#include "frame/schedule_recording_api.h"
#include "kald/libc.h"
#include "kald/web_utils.h"
#include "network/host_port.h"
#include "tests/unit/tree.h"
#include "tremolane/recording_service.h"

#include <sys/wait.h>
#include <unistd.h>

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
    view["schedules"][1]["start_time"] = 3;
    repeat[0]["start_time"] = 1;
    repeat[0]["foreign"] = "of a rule";
    ScheduleRecordingAPI::MergeSchedules(view, repeat);
    Json::Value const& merged = view["schedules"];
    EXPECT_EQ(merged[0]["start_time"], 1);
    EXPECT_EQ(merged[0]["foreign"], "of the first");
    EXPECT_EQ(merged[1]["start_time"], 3);
    EXPECT_EQ(merged[2]["start_time"], 9);
    EXPECT_EQ(merged[2].size(), 8U); // no foreign member
}

TEST(LibraryError, IsMappedOr100)
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

TEST(HostPort, SplitsALocation)
{
    std::string const big(5000, 'a'), cut(4095, 'a');
    std::string const rows[][3] = {
        {"tv:81", "tv", "81"},
        {":80", "", "80"},
        {"/x:80", "", ""},
        {"tv:/x", "tv", ""},
        {"a:b:c/d", "a", "b:c"},
        {"[fe80::1]:82/x", "[fe80::1]", "82"},
        {"[fe80::1", "[fe80::1", ""},
        {"[::1]x:80", "[::1]", ""},
        {"b:" + big + "/x", "b", cut},
        {big + ":80", cut, "80"},
    };
    for (auto const& [text, host, port] : rows) {
        auto const split = Tremolane::network_utils::SplitHostPort(text.c_str());
        EXPECT_EQ(split.host, host) << text;
        EXPECT_EQ(split.port, port) << text;
    }
    EXPECT_EQ(Tremolane::network_utils::SplitHostPort(nullptr).host, "");
}

using Library = Tree;

TEST_F(Library, WritesPrivilegesWhenTheObjectGoes)
{
    Write(appliance::kPrivilegeFile, R"({"7":1,"1026":{"sharing":true}})");
    {
        PrivilegeFile file;
        file.SetPrivilege(7, "dtv", true);
        file.SetPrivilege(1026, "dtv", false);
        EXPECT_TRUE(file.GetPrivilege(7, "dtv"));
    }
    EXPECT_EQ(Read(appliance::kPrivilegeFile),
              "{\"1026\":{\"dtv\":false,\"sharing\":true},\"7\":{\"dtv\":true}}\n");
}

TEST_F(Library, GivesTheFirstValueOfASettingWithoutItsQuotes)
{
    Write(m_path, "bb=\"two words\"\nc=\"\nd=\nq=x\"\na=2\na=3");
    auto const value = [this](char const* key) {
        char buffer[8] = "old";
        int const length = KDLIBCFileGetKeyValue(m_path.c_str(), key, buffer, sizeof buffer, 0);
        return std::to_string(length) + ' ' + buffer;
    };
    EXPECT_EQ(value("a"), "1 2");
    EXPECT_EQ(value("bb"), "9 two wor");
    EXPECT_EQ(value("c"), "1 \"");
    EXPECT_EQ(value("d"), "0 ");
    EXPECT_EQ(value("q"), "2 x\"");
    EXPECT_EQ(value("b"), "0 old");
}

TEST_F(Library, LeavesNothingOfATool)
{
    int const before = ::dup(STDIN_FILENO);
    Write(m_path, "#!/bin/sh\nexit 3\n");
    std::filesystem::permissions(m_path, std::filesystem::perms::owner_all);
    EXPECT_EQ(KDLIBCPopen("/x", "w", ""), nullptr);
    EXPECT_EQ(WEXITSTATUS(KDLIBCPclose(KDLIBCPopen("/x", "r", ""))), 3);
    EXPECT_EQ(::dup(STDIN_FILENO), before + 1);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

TEST_F(Library, FindsUserDefinedRecordsAfterEveryChangeOfTheFile)
{
    auto const find = [](int start) {
        Json::Value out;
        int const index = KALDTremolane::ReadUserDefineFromFile(out, start, 0);
        return std::to_string(index) + ' ' + out["event_name"].asString();
    };
    char const* const path = appliance::kUserDefineFile;
    Json::Value records;
    records[0]["start_time"] = 2;
    EXPECT_EQ(find(1), "-1 ");
    Write(path, R"([{"start_time":1,"tuner":1},{"start_time":1,"tuner":0,"event_name":"a"}])");
    EXPECT_EQ(find(1), "1 a");
    ASSERT_TRUE(WebUtils::SaveJsonFile(records, path));
    EXPECT_EQ(find(1), "-1 ");
    EXPECT_EQ(find(2), "0 ");
    Write(path, "{");
    EXPECT_EQ(find(2), "-1 ");
    std::filesystem::remove(path);
    EXPECT_EQ(find(2), "-1 ");
}

} // namespace
