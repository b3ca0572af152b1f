/// @file The stand-in's own promises: numbers, files, settings, overlap of times, the record index.
#include "kald/libc.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "tests/support/appliance.h"
#include "tests/support/seams.h"
#include "tremolane/recording_service.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <filesystem>

namespace {

// Tables are laid out by hand.
// clang-format off

using StandinTest = Appliance;

TEST_F(StandinTest, ReadsNumbersAndChannels)
{
    ExpectEach<char const*, std::string>([](char const* text) { // a conversion that fails leaves what was there
        int value = 42, service = 1, frequency = 2;
        KALD::WebAPIUtil::ParseInt(text, &value);
        KALDTremolane::KALDVideoDTVParserUniqueId(text, &service, &frequency);
        return std::to_string(value) + ", " + std::to_string(service) + '@' + std::to_string(frequency);
    }, {{"007", "7, 7@0"}, {"+7", "7, 1@2"}, {"-2147483648", "-2147483648, 1@2"}, {"2147483648", "42, 1@2"},
        {"", "42, 1@2"}, {"+-1", "42, 1@2"}, {" 1", "42, 1@2"}, {"1 ", "42, 1@2"},
        {"7@474", "42, 7@474"}, {"7@4@4", "42, 1@2"}});
    EXPECT_EQ(KALD::WebAPIUtil::ParseToArray(",", ","), Parsed("['','']"));
    EXPECT_EQ(MappErrorCode(EPERM), 100);
}

TEST_F(StandinTest, LeavesNothingOfATool)
{
    auto const nextFile = [] { int const fd = ::dup(STDIN_FILENO); ::close(fd); return fd; };
    int const before = nextFile();
    Write("/tool", "#!/bin/sh\nexit 3\n");
    std::filesystem::permissions(PathOf("/tool"), std::filesystem::perms::owner_all);
    EXPECT_EQ(KDLIBCPopen("/tool", "w", ""), nullptr);
    EXPECT_EQ(WEXITSTATUS(KDLIBCPclose(KDLIBCPopen("/tool", "r", ""))), 3);
    EXPECT_EQ(nextFile(), before);
}

TEST_F(StandinTest, SavesALineForItsOwnerAndGroup)
{
    Json::Value document = Parsed("{'a':['\\u00e4',1]}");
    Write("/x.tmp", std::string(100, 'x')); // left by a process that was killed
    EXPECT_TRUE(WebUtils::SaveJsonFile(document, PathOf("/x").c_str()));
    EXPECT_FALSE(WebUtils::SaveJsonFile(document, PathOf("/etc").c_str())); // a folder stands there
    EXPECT_EQ(Read("/x") + Read("/etc.tmp"), "{\"a\":[\"\xc3\xa4\",1]}\n");
    EXPECT_EQ(std::filesystem::status(PathOf("/x")).permissions(), std::filesystem::perms(0640));
}

TEST_F(StandinTest, ReadsWhatIsJsonAndLosesNothingOfIt)
{
    std::string const deep = std::string(1000, '[') + std::string(1000, ']');
    ExpectEach<std::string, std::string>([](std::string const& text) {
        Json::Value document("old");
        text == "none" ? Remove("/x") : Write("/x", text);
        bool const loaded = WebUtils::LoadJsonFile(document, PathOf("/x").c_str());
        return loaded && WebUtils::SaveJsonFile(document, PathOf("/x").c_str()) ? Read("/x") : document.toStyledString();
    }, {{"\xEF\xBB\xBF{\"b\":1,\"a\":[{},null],\"b\":true}\n", "{\"a\":[{},null],\"b\":true}\n"}, {deep, deep + "\n"},
        {R"({"\u0000a":"\ud83d\ude00\u0000","\u0000":"\/\t"})", "{\"\\u0000\":\"/\\t\",\"\\u0000a\":\"\xf0\x9f\x98\x80\\u0000\"}\n"},
        {"[-0,1.50,1E2,-9223372036854775808,18446744073709551615]", "[0,1.5,100.0,-9223372036854775808,18446744073709551615]\n"},
        {"\"\xff\"", "\"\xff\"\n"}, {'[' + deep + ']', "null\n"}, {"[\"\t\"]", "null\n"}, {"[01]", "null\n"}, {"[1e999]", "null\n"}, {"[2e308]", "null\n"},
        {"[\"\\ud800\"]", "null\n"}, {"[NaN]", "null\n"}, {"['a']", "null\n"}, {"[\"\\x\"]", "null\n"}, {"", "null\n"},
        {"none", "null\n"}});
}

TEST_F(StandinTest, ReadsSettings)
{
    Write("/x", "bb=\"two words\"\nc=\"\nd=\nq=x\"\na=2\na=3");
    ExpectEach<char const*, std::string>([](char const* key) {
        char buffer[8] = "old";
        int const length = KDLIBCFileGetKeyValue(PathOf("/x").c_str(), key, buffer, sizeof buffer, 0);
        return std::to_string(length) + buffer;
    }, {{"a", "12"}, {"bb", "9two wor"}, {"c", "1\""}, {"d", "0"}, {"q", "2x\""}, {"b", "0old"}});
}

TEST_F(StandinTest, FindsOverlaps)
{
    SetZone("Europe/Berlin");
    int const base = 1742932800, day = 86400; // Tuesday 2025-03-25 21:00
    int const week = 7 * day - 3600;          // to the same wall-clock time, with the clocks an hour forward
    std::string const shot = "{'start_time':1742932800,'duration':100}";
    std::string const once = "{'start_time':1742932800,'duration':3600,'end_date':'E','weekdaystatus':'1,1,1,1,1,1,1'}";
    std::string const tuesdays = Replaced(once, "'1,1,1,1,1,1,1'", "'0,0,1,0','isweekly':true");
    // A record, how long after `base` the wanted recording starts, and its duration.
    struct { char const* name; std::string record; int start, duration; bool overlaps; } const rows[] = {
        {"ends as it begins", shot, 100, 60, false},       {"begins as it ends", shot, -60, 60, false},
        {"last second", shot, 99, 1, true},                {"half an hour", Replaced(shot, "100", "0"), 1799, 1, true},
        {"not longer", Replaced(shot, "100", "-5"), 1800, 1, false},
        {"no overflow", Replaced(shot, ":100", ":2147483647"), INT_MAX - base, INT_MAX, true},
        {"start 0 counts never", Replaced(shot, "1742932800", "0"), 1 - base, INT_MAX, false},
        {"rule of start 0", Replaced(once, "1742932800", "0"), 1 - base, INT_MAX, false},
        {"other day", tuesdays, day, 60, false},           {"before it", tuesdays, -7 * day, 60, false},
        {"next week", tuesdays, week, 60, true},           {"an hour later", tuesdays, 7 * day, 60, false},
        {"long", tuesdays, day, 7 * day, true},            {"once", once, week - day, 60, true},
        {"ended before", Replaced(tuesdays, "'E'", "'2025-03-31'"), week, 60, false},
        {"ended that day", Replaced(tuesdays, "'E'", "'2025-04-01'"), week, 60, true},
        {"no date", Replaced(tuesdays, "'E'", "'2025-02-30'"), week, 60, true}, {"once, later", once, week, 60, false},
        {"flag 2 is not selected", Replaced(tuesdays, "0,0,1", "0,0,2"), 0, 60, false},
    };
    for (auto const& [name, record, start, duration, overlaps] : rows) {
        Json::Value none, stored = Parsed("[" + record + "]");
        bool const isRule = stored[0].isMember("end_date");
        Json::Value &oneShot = isRule ? none : stored, &repeat = isRule ? stored : none;
        EXPECT_EQ(KALDTremolane::TaskIsOverLap(base + start, duration, oneShot, repeat), overlaps) << name;
    }
}

TEST_F(StandinTest, CountsTheDaysOfARule)
{
    SetZone("Asia/Kolkata");
    seams::now = 1735669800; // Wednesday 2025-01-01 00:00
    for (auto const& [isWeekly, days, end, expected] : {std::tuple{false, "1,0,0,0,0,0,1", "2025-01-03", "1000001 7"},
             {true, "", "2024-12-31", "0000000 0"}, {true, "0,1,0,2,0,0,x", "2025-01-03", "0100000 3"},
             {true, "1,1,1,1,1,1,1,1", "2025-01-01", "1111111 1"}, {true, ",,,,,,1", "2999-01-01", "0000001 366"},
             {true, "1", "2025-13-01", "1000000 366"}, {true, "0", "2025-1x-01", "0000000 366"},
             {true, "0", "2020-01-01", "0000000 0"}, {true, "0", "2025-01-011", "0000000 366"}}) {
        int flags[7];
        int const limit = KALDTremolane::GetRepeatLimitTime(isWeekly, days, end, flags);
        std::string text;
        for (int const flag : flags) { text += std::to_string(flag); }
        EXPECT_EQ(text + ' ' + std::to_string(limit), expected) << days << end;
    }
}

TEST_F(StandinTest, ReadsTheUserDefinedFileAgainOnlyWhenItChanges)
{
    auto const find = [](int start, int tuner) {
        Json::Value out("old");
        int const index = KALDTremolane::ReadUserDefineFromFile(out, start, tuner);
        return std::to_string(index) + (out.isObject() ? out["event_name"].asString() : out.asString());
    };
    Json::Value records = Parsed("[{'start_time':2,'tuner':0,'event_name':'d'}]");
    EXPECT_EQ(find(1, 0), "-1old");
    Lay({{kUserDefine, "[{'start_time':1,'tuner':0,'event_name':'a'},{'start_time':1,'tuner':1,'event_name':'b'},"
                       "{'start_time':1,'tuner':0,'event_name':'c'}]"}});
    seams::opened.clear();
    EXPECT_EQ(find(1, 0) + find(1, 1) + find(2, 0) + find(-1, 0), "0a1b-1old-1old");
    EXPECT_EQ(seams::opened.size(), 1U);
    ASSERT_TRUE(WebUtils::SaveJsonFile(records, PathOf(kUserDefine).c_str()));
    EXPECT_EQ(find(1, 0) + find(2, 0), "-1old0d");
    Write(kUserDefine, "[7]");
    EXPECT_EQ(find(2, 0), "-1old");
    Write(kUserDefine, "{");
    EXPECT_EQ(find(2, 0), "-1old");
    Remove(kUserDefine);
    EXPECT_EQ(find(2, 0), "-1old");
}

} // namespace
