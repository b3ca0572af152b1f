/// @file The stand-in's own promises: conversions, documents, child processes, overlap of times.
#include "kald/api_runner.h"
#include "kald/libc.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "platform/appliance_paths.h"
#include "tests/support/appliance.h"
#include "tests/support/seams.h"
#include "tremolane/recording_service.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <optional>

namespace {

// Tables of requests are laid out by hand.
// clang-format off

using StandinTest = Appliance;

TEST_F(StandinTest, ConvertsTexts)
{
    std::pair<char const*, std::optional<int>> const ints[] = {
        {"0", 0}, {"-1", -1}, {"+7", 7}, {"007", 7}, {"2147483647", INT_MAX}, {"-2147483648", INT_MIN},
        {"2147483648", {}}, {"", {}}, {"+", {}}, {"+-1", {}}, {" 1", {}}, {"1 ", {}}, {"0x1", {}}};
    for (auto const& [text, expected] : ints) {
        int value = 42;
        EXPECT_EQ(KALD::WebAPIUtil::ParseInt(text, &value), expected.has_value()) << text;
        EXPECT_EQ(value, expected.value_or(42)) << text;
    }
    for (auto const& [text, expected] : {std::pair{"true", 1}, {"FALSE", 0}, {"True", 1}, {"1", -1}, {"", -1}}) {
        bool value = false;
        EXPECT_EQ(KALD::WebAPIUtil::ParseBool(text, &value), expected >= 0) << text;
        EXPECT_EQ(value, expected == 1) << text;
    }
    for (auto const& [text, expected] : {std::pair{"", "[]"}, {",", R"(["",""])"}, {"a", R"(["a"])"},
                                         {"a,,b", R"(["a","","b"])"}}) {
        EXPECT_EQ(KALD::WebAPIUtil::ParseToArray(text, ","), Parsed(expected)) << text;
    }
    struct { char const* id; int result, service, frequency; } const ids[] = {
        {"7@474", 0, 7, 474}, {"7", 0, 7, 0}, {"0@0", 0, 0, 0}, {"2147483647@1", 0, INT_MAX, 1},
        {"2147483648", -1, 1, 2}, {"-7", -1, 1, 2}, {"7@", -1, 1, 2}, {"@7", -1, 1, 2}, {"", -1, 1, 2},
        {"7@4@4", -1, 1, 2}, {" 7", -1, 1, 2}, {"7@-4", -1, 1, 2}};
    for (auto const& row : ids) {
        int service = 1, frequency = 2;
        EXPECT_EQ(KALDTremolane::KALDVideoDTVParserUniqueId(row.id, &service, &frequency), row.result) << row.id;
        EXPECT_EQ(std::pair(service, frequency), std::pair(row.service, row.frequency)) << row.id;
    }
    for (auto const& [error, code] : {std::pair{EINVAL, 101}, {EEXIST, 401}, {ENOENT, 402}, {EIO, 403}, {EPERM, 100}}) {
        EXPECT_EQ(MappErrorCode(error), code);
    }
}

TEST_F(StandinTest, LoadsOnlyWholeDocuments)
{
    for (auto const& [text, loads] : std::initializer_list<std::pair<std::string, bool>>{
             {"[1]\n", true}, {" {} ", true}, {"null", true}, {"", false}, {"[1]x", false}, {"[1", false},
             {"[1,]", false}, {"[1]//c", false}, {std::string(2000, '[') + std::string(2000, ']'), false}}) {
        Write("/x.json", text);
        Json::Value document(5);
        EXPECT_EQ(WebUtils::LoadJsonFile(document, PathOf("/x.json").c_str()), loads) << text.substr(0, 9);
        EXPECT_TRUE(loads || document.isNull());
    }
    Json::Value document;
    EXPECT_FALSE(WebUtils::LoadJsonFile(document, PathOf("/volume1").c_str()));
    ASSERT_EQ(::mkfifo(PathOf("/fifo").c_str(), 0600), 0);
    EXPECT_FALSE(WebUtils::LoadJsonFile(document, PathOf("/fifo").c_str()));
}

TEST_F(StandinTest, ReplacesFilesWholeAndKeepsTheirMode)
{
    Json::Value document = Parsed(R"({"a":["\u00e4",1]})");
    std::string const path = PathOf("/etc/x.json");
    struct stat info{};
    ASSERT_TRUE(WebUtils::SaveJsonFile(document, path.c_str()));
    EXPECT_EQ(Read("/etc/x.json"), "{\"a\":[\"\xc3\xa4\",1]}\n");
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0644U);
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    Write("/etc/x.json.tmp", std::string(100, 'x')); // left by a process that was killed
    ASSERT_TRUE(WebUtils::SaveJsonFile(document, path.c_str()));
    ASSERT_EQ(::stat(path.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0600U);
    EXPECT_EQ(Read("/etc/x.json"), "{\"a\":[\"\xc3\xa4\",1]}\n");
    EXPECT_FALSE(WebUtils::SaveJsonFile(document, PathOf("/nowhere/x.json").c_str()));
    EXPECT_FALSE(WebUtils::SaveJsonFile(document, PathOf("/etc").c_str())); // a folder stands there
    EXPECT_EQ(Read("/etc/x.json.tmp") + Read("/etc.tmp"), "");
}

TEST_F(StandinTest, ReadsSettings)
{
    Write("/etc/kaldinfo.conf", "a=1\nbb=\"two words\"\nc=\"\nd=\nlong=" + std::string(99, 'x') + "\na=2\nend=e");
    for (auto const& [key, length, value] : {std::tuple{"a", 1, "1"}, {"bb", 9, "two words"}, {"c", 1, "\""},
            {"d", 0, ""}, {"b", 0, "old"}, {"long", 99, "xxxxxxx"}, {"end", 1, "e"}}) {
        char buffer[8] = "old";
        EXPECT_EQ(KDLIBCFileGetKeyValue(appliance::kSettingsFile, key, buffer, sizeof buffer, 0), length) << key;
        EXPECT_EQ(std::string(buffer), std::string(value).substr(0, 7)) << key;
    }
    char buffer[8] = "old";
    EXPECT_EQ(KDLIBCFileGetKeyValue(PathOf("/none").c_str(), "a", buffer, sizeof buffer, 0), 0);
}

TEST_F(StandinTest, RunsToolsWithoutAShell)
{
    auto const openFiles = [] { int const fd = ::dup(0); ::close(fd); return fd; };
    int const before = openFiles();
    Write("/tool", "#!/bin/sh\nprintf '%s' \"$1\"; exit 3\n");
    EXPECT_EQ(KDLIBCPopen("/tool", "r", "x"), nullptr); // not executable
    ASSERT_EQ(::chmod(PathOf("/tool").c_str(), 0755), 0);
    EXPECT_EQ(KDLIBCPopen("/none", "r", "x"), nullptr);
    EXPECT_EQ(KDLIBCPopen("/tool", "w", "x"), nullptr);
    FILE* const stream = KDLIBCPopen("/tool", "r", "$(id) ; *");
    ASSERT_NE(stream, nullptr);
    char line[32] = "";
    EXPECT_STREQ(std::fgets(line, sizeof line, stream), "$(id) ; *");
    EXPECT_EQ(WEXITSTATUS(KDLIBCPclose(stream)), 3);
    EXPECT_EQ(openFiles(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1); // no child is left
}

TEST_F(StandinTest, AnswersOtherApisFromFiles)
{
    Write("/usr/kald/webapi/A.B.2.get.json", "{\"x\":1}");
    Json::Value out(3);
    KALD::APIRunner::Exec(out, "A.B", 2, "get", Json::Value(), "admin");
    EXPECT_EQ(out, Parsed("{\"x\":1}"));
    KALD::APIRunner::Exec(out, "A.B", 1, "get", Json::Value(), "admin");
    EXPECT_TRUE(out.isNull());
}

TEST_F(StandinTest, FindsOverlaps)
{
    Zone const zone("Europe/Berlin");
    int const base = 1742932800; // Tuesday 2025-03-25 21:00, four days before the clocks go forward
    int const day = 86400;
    auto const shot = [](int start, int duration) {
        return R"({"start_time":)" + std::to_string(start) + R"(,"duration":)" + std::to_string(duration) + "}";
    };
    auto const rule = [](char const* days, char const* end, bool weekly) {
        return R"({"start_time":)" + std::to_string(base) + R"(,"duration":3600,"weekdaystatus":")" + days +
               R"(","end_date":")" + end + R"(","isweekly":)" + (weekly ? "true}" : "false}");
    };
    std::string const tuesdays = rule("0,0,1,0,0,0,0", "1", true);
    struct {
        char const* name;
        std::string oneShot, repeat;
        int start, duration;
        bool overlap;
    } const rows[] = {
        {"nothing", "", "", base, 60, false},
        {"ends as it begins", shot(base, 100), "", base + 100, 60, false},
        {"begins as it ends", shot(base, 100), "", base - 60, 60, false},
        {"last second", shot(base, 100), "", base + 99, 1, true},
        {"around it", shot(base, 100), "", base - 10, 200, true},
        {"no duration is half an hour", shot(base, 0), "", base + 1799, 1, true},
        {"but not longer", shot(base, -5), "", base + 1800, 1, false},
        {"start 0 never counts", shot(0, INT_MAX), "", 1, INT_MAX, false},
        {"no overflow", shot(INT_MAX, INT_MAX), "", INT_MAX - 1, INT_MAX, true},
        {"rule, first time", "", tuesdays, base + 3599, 1, true},
        {"rule, behind it", "", tuesdays, base + 3600, 1, false},
        {"rule, other weekday", "", tuesdays, base + day, 60, false},
        {"rule, before its start", "", tuesdays, base - 7 * day, 60, false},
        {"rule, next week by the wall clock", "", tuesdays, base + 7 * day - 3600, 60, true},
        {"rule, next week, an hour after the wall clock", "", tuesdays, base + 7 * day, 60, false},
        {"rule, years later", "", tuesdays, base + 520 * 7 * day, 60, true},
        {"rule, long wish across days", "", tuesdays, base + day, 7 * day, true},
        {"ended that day", "", rule("0,0,1,0,0,0,0", "2025-04-01", true), base + 7 * day - 3600, 60, true},
        {"ended the day before", "", rule("0,0,1,0,0,0,0", "2025-03-31", true), base + 7 * day - 3600, 60, false},
        {"end is no date", "", rule("0,0,1,0,0,0,0", "2025-02-30", true), base + 7 * day - 3600, 60, true},
        {"once, within its week", "", rule("1,1,1,1,1,1,1", "1", false), base + 6 * day - 3600, 60, true},
        {"once, a week later", "", rule("1,1,1,1,1,1,1", "1", false), base + 7 * day - 3600, 60, false},
        {"flag 2 is not selected", "", rule("0,0,2,0,0,0,0", "1", true), base, 60, false},
        {"neutralised rule", "", R"({"start_time":0,"weekdaystatus":"1,1,1,1,1,1,1","isweekly":true})", 1, INT_MAX, false},
    };
    for (auto const& row : rows) {
        Json::Value oneShot = Parsed("[" + row.oneShot + "]");
        Json::Value repeat = Parsed("[" + row.repeat + "]");
        EXPECT_EQ(KALDTremolane::TaskIsOverLap(row.start, row.duration, oneShot, repeat), row.overlap) << row.name;
    }
}

TEST_F(StandinTest, CountsTheDaysOfARule)
{
    Zone const zone("Asia/Kolkata");
    seams::now = 1735669800; // Wednesday 2025-01-01 00:00
    struct { bool weekly; char const* days; char const* end; int limit; char const* flags; } const rows[] = {
        {false, "1,0,0,0,0,0,1", "2025-01-03", 7, "1000001"}, {true, "0,1,0,2,0,0,x", "2025-01-03", 3, "0100000"},
        {true, "1", "2025-01-01", 1, "1000000"},              {true, "", "2024-12-31", 0, "0000000"},
        {true, "1,1,1,1,1,1,1,1", "2020-01-01", 0, "1111111"}, {true, ",,,,,,1", "2999-01-01", 366, "0000001"},
        {true, "0", "1", 366, "0000000"},                     {true, "0", "2025-13-01", 366, "0000000"},
        {true, "0", "2025-1-1", 366, "0000000"},
    };
    for (auto const& row : rows) {
        int flags[7];
        EXPECT_EQ(KALDTremolane::GetRepeatLimitTime(row.weekly, row.days, row.end, flags), row.limit) << row.end;
        std::string text;
        for (int const flag : flags) { text += std::to_string(flag); }
        EXPECT_EQ(text, row.flags) << row.days;
    }
}

TEST_F(StandinTest, ReadsTheUserDefinedFileAgainOnlyWhenItChanges)
{
    auto const find = [](int start, int tuner) {
        Json::Value out("old");
        int const index = KALDTremolane::ReadUserDefineFromFile(out, start, tuner);
        return std::to_string(index) + (out.isObject() ? out["event_name"].asString() : out.asString());
    };
    EXPECT_EQ(find(1, 0), "-1old");
    Write(kUserDefine, R"([{"start_time":1,"tuner":0,"event_name":"a"},{"start_time":1,"tuner":1,"event_name":"b"},
                           {"start_time":1,"tuner":0,"event_name":"c"}])");
    seams::opened.clear();
    EXPECT_EQ(find(1, 0) + find(1, 1) + find(2, 0) + find(-1, 0), "0a1b-1old-1old");
    EXPECT_EQ(seams::opened.size(), 1U);
    Json::Value records = Parsed(R"([{"start_time":2,"tuner":0,"event_name":"d"}])");
    ASSERT_TRUE(WebUtils::SaveJsonFile(records, PathOf(kUserDefine).c_str()));
    EXPECT_EQ(find(1, 0) + find(2, 0), "-1old0d");
    Write(kUserDefine, "{");
    EXPECT_EQ(find(2, 0), "-1old");
    Write(kUserDefine, "[7]");
    EXPECT_THROW(find(2, 0), Json::Exception);
    EXPECT_THROW(find(2, 0), Json::Exception);
    Remove(kUserDefine);
    EXPECT_EQ(find(2, 0), "-1old");
}

} // namespace
