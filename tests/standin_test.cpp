/// @file The stand-in's own promises: conversions, documents, child processes, overlap of times.
#include "kald/api_runner.h"
#include "kald/libc.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "tests/support/appliance.h"
#include "tests/support/seams.h"
#include "tremolane/recording_service.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

namespace {

// Tables of requests are laid out by hand.
// clang-format off

using StandinTest = Appliance;

TEST_F(StandinTest, ConvertsTexts)
{
    using namespace KALD::WebAPIUtil;
    // Whether a conversion succeeded, and what it left: a failed one leaves what was there.
    auto const toInt = [](char const* text) { int value = 42; return std::pair{ParseInt(text, &value), value}; };
    auto const toBool = [](char const* text) { bool value = false; return std::pair{ParseBool(text, &value), value}; };
    auto const toChannel = [](char const* text) {
        int service = 1, frequency = 2;
        int const result = KALDTremolane::KALDVideoDTVParserUniqueId(text, &service, &frequency);
        return std::tuple(result, service, frequency);
    };
    std::pair const noInt(false, 42);
    std::tuple const none(-1, 1, 2);
    ExpectEach<char const*, std::pair<bool, int>>(toInt, {{"0", {true, 0}}, {"-1", {true, -1}}, {"+7", {true, 7}},
        {"007", {true, 7}}, {"2147483647", {true, INT_MAX}}, {"-2147483648", {true, INT_MIN}}, {"2147483648", noInt},
        {"", noInt}, {"+", noInt}, {"+-1", noInt}, {" 1", noInt}, {"1 ", noInt}, {"0x1", noInt}});
    ExpectEach<char const*, std::pair<bool, bool>>(toBool, {{"true", {true, true}}, {"FALSE", {true, false}},
        {"True", {true, true}}, {"1", {false, false}}, {"", {false, false}}});
    ExpectEach<char const*, std::tuple<int, int, int>>(toChannel, {{"7@474", {0, 7, 474}}, {"7", {0, 7, 0}},
        {"0@0", {0, 0, 0}}, {"2147483647@1", {0, INT_MAX, 1}}, {"2147483648", none}, {"-7", none}, {"7@", none},
        {"@7", none}, {"", none}, {"7@4@4", none}, {" 7", none}, {"7@-4", none}});
    ExpectEach<char const*, Json::Value>([](char const* text) { return ParseToArray(text, ","); },
        {{"", Parsed("[]")}, {",", Parsed("['','']")}, {"a", Parsed("['a']")}, {"a,,b", Parsed("['a','','b']")}});
    ExpectEach<int, int>(MappErrorCode, {{EINVAL, 101}, {EEXIST, 401}, {ENOENT, 402}, {EIO, 403}, {EPERM, 100}});
}

TEST_F(StandinTest, LoadsOnlyWholeDocuments)
{
    std::string const deep(2000, '[');
    auto const load = [](std::string const& path) {
        Json::Value document(5);
        return std::pair{WebUtils::LoadJsonFile(document, PathOf(path).c_str()), document};
    };
    for (auto const& [text, loads] : {std::pair<std::string, bool>{"[1]\n", true}, {" {} ", true}, {"null", true},
             {"", false}, {"[1]x", false}, {"[1", false}, {"[1,]", false}, {"[1]//c", false},
             {deep + Replaced(deep, "[", "]"), false}}) {
        Write("/x.json", text);
        EXPECT_EQ(load("/x.json"), std::pair(loads, loads ? Parsed(text) : Json::Value())) << text.substr(0, 9);
    }
    ASSERT_EQ(::mkfifo(PathOf("/fifo").c_str(), 0600), 0);
    EXPECT_FALSE(load("/fifo").first || load("/volume1").first);
}

TEST_F(StandinTest, ReplacesFilesWholeAndKeepsTheirMode)
{
    Json::Value document = Parsed("{'a':['\\u00e4',1]}");
    auto const save = [&document](char const* path) { return WebUtils::SaveJsonFile(document, PathOf(path).c_str()); };
    for (mode_t const mode : {0644U, 0600U}) { // the first is that of a new file
        ASSERT_TRUE(save("/etc/x.json"));
        EXPECT_EQ(Read("/etc/x.json"), "{\"a\":[\"\xc3\xa4\",1]}\n");
        struct stat info{};
        ASSERT_EQ(::stat(PathOf("/etc/x.json").c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 07777, mode);
        ASSERT_EQ(::chmod(PathOf("/etc/x.json").c_str(), 0600), 0);
        Write("/etc/x.json.tmp", std::string(100, 'x')); // left by a process that was killed
    }
    EXPECT_FALSE(save("/nowhere/x.json"));
    EXPECT_FALSE(save("/etc")); // a folder stands there
    EXPECT_EQ(Read("/etc.tmp"), "");
}

TEST_F(StandinTest, ReadsSettings)
{
    Write("/etc/kaldinfo.conf", "a=1\nbb=\"two words\"\nc=\"\nd=\nq=x\"\nlong=" + std::string(99, 'x') + "\na=2\nend=e");
    for (auto const& [key, length, value] : {std::tuple{"a", 1, "1"}, {"bb", 9, "two wor"}, {"c", 1, "\""}, {"d", 0, ""},
             {"q", 2, "x\""}, {"b", 0, "old"}, {"long", 99, "xxxxxxx"}, {"end", 1, "e"}}) {
        char buffer[8] = "old";
        EXPECT_EQ(KDLIBCFileGetKeyValue(appliance::kSettingsFile, key, buffer, sizeof buffer, 0), length) << key;
        EXPECT_STREQ(buffer, value) << key;
    }
    EXPECT_EQ(KDLIBCFileGetKeyValue(PathOf("/none").c_str(), "a", nullptr, 0, 0), 0);
}

TEST_F(StandinTest, RunsToolsWithoutAShell)
{
    auto const nextFile = [] { int const fd = ::dup(0); ::close(fd); return fd; };
    int const before = nextFile();
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
    EXPECT_EQ(nextFile(), before);
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1); // no child is left
}

TEST_F(StandinTest, AnswersOtherApisFromFiles)
{
    Lay({{"/usr/kald/webapi/A.B.2.get.json", "{'x':1}"}});
    for (Json::Value out(3); auto const& [version, expected] : {std::pair{2, "{'x':1}"}, {1, "null"}}) {
        KALD::APIRunner::Exec(out, "A.B", version, "get", Json::Value(), "admin");
        EXPECT_EQ(out, Parsed(expected));
    }
}

TEST_F(StandinTest, FindsOverlaps)
{
    SetZone("Europe/Berlin");
    int const base = 1742932800, day = 86400; // Tuesday 2025-03-25 21:00
    int const week = 7 * day - 3600;          // to the same wall-clock time, with the clocks an hour forward
    auto const shot = [](int start, int duration) {
        return "{'start_time':" + std::to_string(start) + ",'duration':" + std::to_string(duration) + "}";
    };
    std::string const once = "{'start_time':1742932800,'duration':3600,'isweekly':false,"
                             "'weekdaystatus':'1,1,1,1,1,1,1','end_date':'1'}";
    std::string const tuesdays = Replaced(Replaced(once, "1,1,1,1,1,1,1", "0,0,1,0,0,0,0"), "false", "true");
    std::string const before = shot(base, 100), none = "";
    struct { char const* name; std::string oneShot, repeat; int start, duration; bool overlaps; } const rows[] = {
        {"nothing", none, none, base, 60, false},             {"ends as it begins", before, none, base + 100, 60, false},
        {"around it", before, none, base - 10, 200, true},    {"begins as it ends", before, none, base - 60, 60, false},
        {"last second", before, none, base + 99, 1, true},    {"half an hour", shot(base, 0), none, base + 1799, 1, true},
        {"not longer", shot(base, -5), none, base + 1800, 1, false},
        {"no overflow", shot(INT_MAX, INT_MAX), none, INT_MAX - 1, INT_MAX, true},
        {"start 0 never counts", shot(0, INT_MAX), Replaced(once, "1742932800", "0"), 1, INT_MAX, false},
        {"first time", none, tuesdays, base + 3599, 1, true}, {"behind it", none, tuesdays, base + 3600, 1, false},
        {"other day", none, tuesdays, base + day, 60, false}, {"before it", none, tuesdays, base - 7 * day, 60, false},
        {"next week", none, tuesdays, base + week, 60, true}, {"an hour later", none, tuesdays, base + 7 * day, 60, false},
        {"long", none, tuesdays, base + day, 7 * day, true},  {"later", none, tuesdays, base + 3640 * day, 60, true},
        {"ended that day", none, Replaced(tuesdays, "'1'", "'2025-04-01'"), base + week, 60, true},
        {"ended the day before", none, Replaced(tuesdays, "'1'", "'2025-03-31'"), base + week, 60, false},
        {"end is no date", none, Replaced(tuesdays, "'1'", "'2025-02-30'"), base + week, 60, true},
        {"once", none, once, base + 6 * day - 3600, 60, true}, {"once, a week later", none, once, base + week, 60, false},
        {"flag 2 is not selected", none, Replaced(tuesdays, "0,0,1", "0,0,2"), base, 60, false},
    };
    for (auto const& row : rows) {
        Json::Value oneShot = Parsed("[" + row.oneShot + "]"), repeat = Parsed("[" + row.repeat + "]");
        EXPECT_EQ(KALDTremolane::TaskIsOverLap(row.start, row.duration, oneShot, repeat), row.overlaps) << row.name;
    }
}

TEST_F(StandinTest, CountsTheDaysOfARule)
{
    SetZone("Asia/Kolkata");
    seams::now = 1735669800; // Wednesday 2025-01-01 00:00
    for (auto const& [isWeekly, days, end, limit, expected] : {
             std::tuple{false, "1,0,0,0,0,0,1", "2025-01-03", 7, "1000001"}, {true, "", "2024-12-31", 0, "0000000"},
             {true, "0,1,0,2,0,0,x", "2025-01-03", 3, "0100000"}, {true, "1", "2025-01-01", 1, "1000000"},
             {true, "1,1,1,1,1,1,1,1", "2020-01-01", 0, "1111111"}, {true, ",,,,,,1", "2999-01-01", 366, "0000001"},
             {true, "0", "1", 366, "0000000"}, {true, "0", "2025-13-01", 366, "0000000"},
             {true, "0", "2025-1x-01", 366, "0000000"}, {true, "0", "2025-01-011", 366, "0000000"}}) {
        int flags[7];
        EXPECT_EQ(KALDTremolane::GetRepeatLimitTime(isWeekly, days, end, flags), limit) << end;
        std::string text;
        for (int const flag : flags) { text += std::to_string(flag); }
        EXPECT_EQ(text, expected) << days;
    }
}

TEST_F(StandinTest, ReadsTheUserDefinedFileAgainOnlyWhenItChanges)
{
    auto const find = [](int start, int tuner) {
        Json::Value out("old");
        int const index = KALDTremolane::ReadUserDefineFromFile(out, start, tuner);
        return std::to_string(index) + (out.isObject() ? out["event_name"].asString() : out.asString());
    };
    std::string const a = "{'start_time':1,'tuner':0,'event_name':'a'}";
    EXPECT_EQ(find(1, 0), "-1old");
    Lay({{kUserDefine, List({a, Replaced(Replaced(a, "0", "1"), "'a'", "'b'"), Replaced(a, "'a'", "'c'")})}});
    seams::opened.clear();
    EXPECT_EQ(find(1, 0) + find(1, 1) + find(2, 0) + find(-1, 0), "0a1b-1old-1old");
    EXPECT_EQ(seams::opened.size(), 1U);
    Json::Value records = Parsed(List({Replaced(Replaced(a, "1", "2"), "'a'", "'d'")}));
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
