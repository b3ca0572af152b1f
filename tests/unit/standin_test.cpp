/// @file What the stand-in does for its callers that no request shows: settings, tools, the index.
#include "kald/libc.h"
#include "kald/web_utils.h"
#include "tests/unit/tree.h"
#include "tremolane/recording_service.h"

#include <json/value.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using SettingsTest = Tree;

TEST_F(SettingsTest, GivesTheFirstValueOfAKeyWithoutItsQuotes)
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

using ToolTest = Tree;

TEST_F(ToolTest, LeavesNoDescriptorAndNoChild)
{
    auto const nextFile = [] {
        int const fd = ::dup(STDIN_FILENO);
        ::close(fd);
        return fd;
    };
    int const before = nextFile();
    Write(m_path, "#!/bin/sh\nexit 3\n");
    std::filesystem::permissions(m_path, std::filesystem::perms::owner_all);
    EXPECT_EQ(KDLIBCPopen("/x", "w", ""), nullptr);
    EXPECT_EQ(WEXITSTATUS(KDLIBCPclose(KDLIBCPopen("/x", "r", ""))), 3);
    EXPECT_EQ(nextFile(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
}

class IndexTest : public Tree {
protected:
    /// The index of the record with that start and tuner, and its name.
    static std::string Find(int start, int tuner)
    {
        Json::Value out("untouched");
        int const index = KALDTremolane::ReadUserDefineFromFile(out, start, tuner);
        return std::to_string(index) + ' ' +
               (out.isObject() ? out["event_name"].asString() : out.asString());
    }

    static void WriteRecords(std::string const& text) { Write(appliance::kUserDefineFile, text); }
};

TEST_F(IndexTest, FindsTheFirstRecordOfAStartAndTuner)
{
    WriteRecords(R"([{"start_time":1,"tuner":0,"event_name":"a"},)"
                 R"({"start_time":1,"tuner":1,"event_name":"b"},)"
                 R"({"start_time":1,"tuner":0,"event_name":"c"}])");
    EXPECT_EQ(Find(1, 0), "0 a");
    EXPECT_EQ(Find(1, 1), "1 b");
    EXPECT_EQ(Find(2, 0), "-1 untouched");
    EXPECT_EQ(Find(-1, 0), "-1 untouched");
}

TEST_F(IndexTest, FollowsEveryChangeOfTheFile)
{
    EXPECT_EQ(Find(1, 0), "-1 untouched");
    WriteRecords(R"([{"start_time":1,"tuner":0,"event_name":"a"}])");
    EXPECT_EQ(Find(1, 0), "0 a");
    Json::Value records;
    records[0]["start_time"] = 2;
    records[0]["event_name"] = "d";
    ASSERT_TRUE(WebUtils::SaveJsonFile(records, appliance::kUserDefineFile));
    EXPECT_EQ(Find(1, 0), "-1 untouched");
    EXPECT_EQ(Find(2, 0), "0 d");
    WriteRecords("[7]");
    EXPECT_EQ(Find(2, 0), "-1 untouched");
    WriteRecords("{");
    EXPECT_EQ(Find(2, 0), "-1 untouched");
    std::filesystem::remove(appliance::kUserDefineFile);
    EXPECT_EQ(Find(2, 0), "-1 untouched");
}

} // namespace
