/// @file One-shot and repeat schedules: create, delete, change, inspect; dates and times.
#include "frame/web_api_error.h"
#include "platform/appliance_paths.h"
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

// Tables of requests are laid out by hand.
// clang-format off

using PlainTest = Appliance;

std::string const kBroken = "[";
std::string const kNoUser = "schedule_recording:";
std::string const kInTheWay = ".tmp/x"; // a folder where the save wants its temporary file

/// What a plain add stores without a user-defined record.
std::string Added(char const* members)
{
    return std::string(R"({"channel_name":"","title":"","description":"","duration":1800,"uid":"1024",)") + members + "}";
}

TEST_F(PlainTest, CreatesOneShotSchedules)
{
    std::string const one = Added(R"("start_time":1000,"service_id":7,"frequency":474,"status":4)");
    std::string const two = Added(R"("start_time":2000,"service_id":8,"status":4)");
    std::string const ok = "method=create&tuner=0&id=7@474&start_time=1000", list = "method=create&tuner=0&id=7@474,8";
    auto const no = [](char const* query) { return Row{query, std::string("method=create&") + query, {101}}; };
    Check({}, {
        no("id=7&start_time=1"), no("tuner=0&id=7&start_time="), no("tuner=0&start_time=1"), no("tuner=0&id=x&start_time=1"),
        no("tuner=0&id=0&start_time=1"), no("tuner=0&id=7&start_time=1,2"), no("tuner=0&id=7&start_time=x"),
        no("tuner=0&id=7&start_time=0"), no("tuner=0&id=7&start_time=2147483648"), no("tuner=0&id=7@&start_time=1"),
        {.name = "one", .query = ok, .after = {{kOneShot, "[" + one + "]"}}, .commands = "reload;"},
        {.name = "frequency alone is judged good", .query = "method=create&tuner=0&id=0@5&start_time=9",
         .after = {{kOneShot, "[" + Added(R"("start_time":9,"service_id":0,"frequency":5,"status":4)") + "]"}}, .commands = "reload;"},
        {.name = "already there", .query = ok, .codes = {401}, .before = {{kOneShot, R"([{"start_time":1000,"service_id":"7"}])"}}},
        {.name = "broken file", .query = ok, .codes = {403}, .before = {{kOneShot, kBroken}}},
        {.name = "null file", .query = ok, .before = {{kOneShot, "null"}}, .after = {{kOneShot, "[" + one + "]"}}, .commands = "reload;"},
        {.name = "record of wrong type", .query = ok, .codes = {100}, .before = {{kOneShot, "[[]]"}}, .log = "request failed: a stored record is no object;"},
        {.name = "no folder before no user", .query = ok, .codes = {406}, .before = {{kFolders, "[]"}}, .user = "ghost"},
        {.name = "no user", .query = ok, .codes = {100}, .log = kNoUser + "661 Failed to KALDUserGet function.;", .user = "ghost"},
        {.name = "no uid", .query = ok, .codes = {100}, .log = kNoUser + "667 uid is error.;", .user = "nouid"},
        {.name = "no reload", .query = ok, .codes = {100}, .after = {{kOneShot, "[" + one + "]"}}, .commandsBeforeFailure = 0},
        {.name = "no store folder", .query = ok, .codes = {403}, .before = {{std::string(kEtc) + "dtvschedules", ""}}},
        {.name = "no temporary file", .query = ok, .codes = {403}, .before = {{kOneShot + kInTheWay, "x"}}},
        {.name = "list", .query = list + "&start_time=1000,2000,3000", .after = {{kOneShot, "[" + one + "," + two + "]"}}, .commands = "reload;"},
        {.name = "list, fewer starts", .query = list + "&start_time=1000", .codes = {101}, .after = {{kOneShot, "[" + one + "]"}}},
        {.name = "list, the middle fails", .query = list + ",x,7@474&start_time=1000,2000,1,1000", .codes = {401},
         .after = {{kOneShot, "[" + one + "," + two + "]"}}},
        {.name = "list, the last code", .query = "method=create&tuner=0&id=7,x&start_time=5,6", .codes = {101},
         .before = {{kOneShot, R"([{"start_time":5,"service_id":7}])"}}},
        {.name = "details of the record", .query = ok,
         .before = {{kUserDefine, R"([{"start_time":1000,"tuner":0,"event_name":"E","text_name":"T","channel_name":"C","duration":60}])"}},
         .after = {{kOneShot, R"([{"start_time":1000,"service_id":7,"frequency":474,"status":4,"channel_name":"C","title":"E",
                                   "description":"T","duration":60,"uid":"1024"}])"}}, .commands = "reload;"},
    });
}

TEST_F(PlainTest, LooksForAFolderForRecordings)
{
    std::string const good = R"({"section":"TV_Record","share":"video","subpath":"tv"})", bad = R"({"section":"tv_record","share":"x","subpath":"y"})";
    for (auto const& [folders, found] : {std::pair{"[" + good + "]", true}, {"[" + bad + "]", false}, {"[" + bad + "," + good + "]", true},
             {"[" + good + "," + bad + "]", true}, {"[7,{},{\"section\":1}," + good + "]", true}, {"[]", false}, {good, false}, {"", false}, {"[", false},
             {R"([{"section":"music","share":"video","subpath":"tv"}])", false}}) {
        Reset();
        Write(kFolders, folders);
        EXPECT_EQ(Run("method=create&tuner=0&id=7&start_time=5").codes, found ? std::vector<int>{} : std::vector{406}) << folders;
    }
}

TEST_F(PlainTest, DeletesOneShotSchedulesAndStopsThem)
{
    std::string const a = R"({"start_time":1000,"service_id":"7","frequency":474,"x":1})", b = R"({"start_time":1000,"service_id":8,"duration":4001})";
    std::string const a8 = "method=delete&tuner=0&id=1000&channel_id=8", passed = "method=delete_passed&tuner=0";
    auto const no = [](char const* query, int code) { return Row{query, std::string("method=delete&") + query, {code}}; };
    Check({{kOneShot, "[" + a + "," + b + "]"}}, {
        no("id=1000&channel_id=7", 101), no("", 101), no("tuner=0&id=1000", 101), no("tuner=0&id=1000&channel_id=x", 101), no("tuner=0&id=1001&channel_id=7", 402),
        no("tuner=0&id=1000&channel_id=9", 402), no("tuner=0&id=x&channel_id=7", 101), no("tuner=1&id=1000&channel_id=7", 402),
        {.name = "stop only", .query = "method=delete&tuner=3&channel_id=7", .commands = "stop 3 -1 -1 -1;reload;"},
        {.name = "both forms name it", .query = "method=delete&tuner=0&id=1000&channel_id=7@9", .after = {{kOneShot, "[" + b + "]"}}, .commands = "stop 0 1000 9 7;reload;"},
        {.name = "plain form", .query = a8, .after = {{kOneShot, "[" + a + "]"}}, .commands = "stop 0 1000 0 8;reload;"},
        {.name = "stop fails", .query = a8, .codes = {100}, .after = {{kOneShot, "[" + a + "]"}}, .commandsBeforeFailure = 0},
        {.name = "bare stop fails", .query = "method=delete&tuner=0", .codes = {100}, .commandsBeforeFailure = 0},
        {.name = "reload fails", .query = a8, .codes = {100}, .after = {{kOneShot, "[" + a + "]"}}, .commands = "stop 0 1000 0 8;", .commandsBeforeFailure = 1},
        {.name = "broken file", .query = a8, .codes = {403}, .before = {{kOneShot, kBroken}}},
        {.name = "daemon not there", .query = a8, .codes = {100}, .before = {{"/var/run/dtvd", ""}}, .after = {{kOneShot, "[" + a + "]"}}},
        {.name = "passed", .query = passed, .after = {{kOneShot, "[" + b + "]"}}},
        {.name = "passed, none", .query = passed, .before = {{kOneShot, "[" + b + "] "}}},
        {.name = "passed, no tuner", .query = "method=delete_passed", .codes = {101}},
        {.name = "passed, no array", .query = passed, .codes = {403}, .before = {{kOneShot, "{}"}}},
    }, 5000);
}

TEST_F(PlainTest, CreatesAndEditsRepeatSchedules)
{
    Zone const zone("UTC"); // 1000000000 is a Sunday
    std::string const old = R"([{"id":8,"start_time":1000000000,"isweekly":true,"weekdaystatus":"x","end_date":"y","foreign":[1]}])";
    std::string const rule = "&id=7@474&start_time=1000000000&weekdaystatus=1,0,0,0,0,0,0&end_date=2030-01-01&isweekly=";
    std::string const create = "method=create_repeat&tuner=0", edit = "method=edit_repeat&tuner=0", edit8 = Replaced(edit + rule, "7@474", "8@1");
    auto const stored = [](char const* isWeekly) {
        return "[" + Added((std::string(R"("id":7,"frequency":474,"start_time":1000000000,"lastcreatetime":0,"status":19,"start_date":"2001-09-09",
            "weekdaystatus":"1,0,0,0,0,0,0","end_date":"2030-01-01","isweekly":)") + isWeekly).c_str()) + "]";
    };
    std::vector<Row> rows = {
        {.name = "create", .query = create + rule, .after = {{kRepeat, stored("true")}}, .commands = "reload;"},
        {.name = "not weekly", .query = create + rule + "FALSE", .after = {{kRepeat, stored("false")}}, .commands = "reload;"},
        {.name = "no user before no folder", .query = create + rule, .codes = {100}, .before = {{kFolders, "[]"}}, .log = kNoUser + "856 Failed to KALDUserGet function.;", .user = "ghost"},
        {.name = "no uid", .query = create + rule, .codes = {100}, .log = kNoUser + "862 uid is error.;", .user = "nouid"},
        {.name = "no folder", .query = create + rule, .codes = {406}, .before = {{kFolders, "[]"}}},
        {.name = "no reload", .query = create + rule, .codes = {100}, .after = {{kRepeat, stored("true")}}, .commandsBeforeFailure = 0},
        {.name = "already there", .query = Replaced(create + rule, "7@474", "8@474"), .codes = {401}, .before = {{kRepeat, old}}},
        {.name = "broken file", .query = create + rule, .codes = {403}, .before = {{kRepeat, kBroken}}},
        {.name = "start 0 in a list without Thursday", .query = Replaced(create + rule, "1000000000", "0"), .codes = {101}},
        {.name = "start 0 is no start", .query = Replaced(Replaced(create + rule, "1000000000", "0"), "1,0,0,0,0", "0,0,0,0,1"), .codes = {101}},
        {.name = "bad id before no user", .query = Replaced(create + rule, "7@474", "x"), .codes = {101}, .user = "ghost"},
        {.name = "edit", .query = edit8 + "false", .before = {{kRepeat, old}},
         .after = {{kRepeat, R"([{"id":8,"start_time":1000000000,"isweekly":false,"weekdaystatus":"1,0,0,0,0,0,0","end_date":"2030-01-01","foreign":[1]}])"}}, .commands = "reload;"},
        {.name = "edit without isweekly", .query = edit8, .codes = {101}, .before = {{kRepeat, old}}},
        {.name = "edit of none", .query = edit + rule + "true", .codes = {402}, .before = {{kRepeat, old}}},
        {.name = "edit of no id", .query = Replaced(edit + rule, "7@474", "") + "true", .codes = {101}, .before = {{kRepeat, old}}},
        {.name = "edit of a broken file", .query = edit8 + "true", .codes = {403}, .before = {{kRepeat, kBroken}}},
        {.name = "edit needs no folder, reload fails", .query = edit8 + "false", .codes = {100}, .before = {{kRepeat, old}, {kFolders, "[]"}},
         .after = {{kRepeat, R"([{"id":8,"start_time":1000000000,"isweekly":false,"weekdaystatus":"1,0,0,0,0,0,0","end_date":"2030-01-01","foreign":[1]}])"}}, .user = "nouid", .commandsBeforeFailure = 0},
    };
    for (auto const& [from, to] : {std::pair{"&tuner=0", ""}, {"1000000000", "-1"}, {"1000000000", "x"}, {"&start_time=1000000000", ""}, {"1000000000", "2147483648"}, {"1,0,0,0,0,0,0", ""},
                                   {"2030-01-01", ""}, {"1,0,0", "0,1,1"}, {"1,0,0,0,0,0,0", "2,1,1,1,1,1,1"}, {"1,0,0,0,0,0,0", ",1"}}) {
        rows.push_back({from, Replaced(create + rule + "true", from, to), {101}});
        rows.push_back({from, Replaced(edit8 + "true", from, to), {101}, "", {{kRepeat, old}}});
    }
    Check({}, rows);
}

TEST_F(PlainTest, DeletesAndShowsRepeatSchedules)
{
    std::string const a = R"({"id":7,"frequency":474,"start_time":1000,"foreign":{"x":1}})", b = R"({"id":7,"frequency":"5","start_time":1000,"title":"B","isweekly":1,"end_date":null})";
    std::string const c = R"({"id":8,"start_time":2000})", path = appliance::kRoot + std::string(kRepeat), all = "[" + a + "," + b + "," + c + "]";
    std::string const nulls = R"("channel_name":null,"description":null,"duration":null,"start_date":null,"weekdaystatus":null,"end_date":null,)";
    auto const del = [](char const* query) { return std::string("method=delete_repeat&") + query; };
    auto const info = [](char const* query) { return std::string("method=getinfo_repeat&") + query; };
    Check({{kRepeat, all}}, {
        {.name = "both of a key", .query = del("tuner=0&id=1000&channel_id=7@1"), .after = {{kRepeat, "[" + c + "]"}}},
        {.name = "a list", .query = del("tuner=0&id=2000,1000,1000&channel_id=8,7,9"), .after = {{kRepeat, "[]"}}},
        {.name = "pairs by position", .query = del("tuner=0&id=1000,2000&channel_id=8,7")},
        {.name = "none matches", .query = del("tuner=0&id=3&channel_id=7")},
        {.name = "no tuner", .query = del("id=1000&channel_id=7"), .codes = {101}},
        {.name = "no id", .query = del("tuner=0&channel_id=7"), .codes = {101}},
        {.name = "no channel", .query = del("tuner=0&id=1000"), .codes = {101}},
        {.name = "lengths differ", .query = del("tuner=0&id=1000,2000&channel_id=7"), .codes = {101}},
        {.name = "null file", .query = del("tuner=0&id=1&channel_id=7"), .before = {{kRepeat, "null"}}, .after = {{kRepeat, "[]"}}},
        {.name = "no file", .query = del("tuner=0&id=1&channel_id=7"), .codes = {100}, .before = {{kRepeat, ""}}, .log = "schedule_recording:1032 Fail to load file " + path + ";"},
        {.name = "no array", .query = del("tuner=0&id=1&channel_id=7"), .codes = {100}, .before = {{kRepeat, "{}"}}, .log = "schedule_recording:1032 Fail to load file " + path + ";"},
        {.name = "no save", .query = del("tuner=0&id=1000&channel_id=7"), .codes = {100}, .before = {{kRepeat + kInTheWay, "x"}},
         .log = "schedule_recording:1051 Fail to save repeat schedule json. Path is " + path + ";"},
        {.name = "wrong type", .query = del("tuner=0&id=1000&channel_id=7"), .codes = {100}, .before = {{kRepeat, R"([{"start_time":1000,"id":7},{"start_time":"x"}])"}},
         .log = "request failed: Value is not convertible to Int.;"},
        {.name = "first of a key", .query = info("tuner=0&start_time=1000&id=7"), .data = "{" + nulls + R"("id":"7@474","start_time":1000,"title":null,"isweekly":null})"},
        {.name = "values as stored", .query = info("tuner=0&start_time=1000&id=7@3"), .data = "{" + nulls + R"("id":"7","start_time":1000,"title":"B","isweekly":1})", .before = {{kRepeat, "[" + b + "]"}}},
        {.name = "none", .query = info("tuner=0&start_time=1000&id=9")},
        {.name = "start 0 is a start", .query = info("tuner=0&start_time=0&id=9")},
        {.name = "no start", .query = info("tuner=0&id=7"), .codes = {101}},
        {.name = "start no number", .query = info("tuner=0&start_time=1x&id=7"), .codes = {101}},
        {.name = "no id", .query = info("tuner=0&start_time=1000"), .codes = {101}},
        {.name = "no tuner", .query = info("start_time=1000&id=7"), .codes = {101}},
        {.name = "other tuner", .query = info("tuner=1&start_time=1000&id=7"), .codes = {100}, .log = "schedule_recording:926 Fail to load file " + Replaced(path, "/0dtv", "/1dtv") + ";"},
    });
}

TEST_F(PlainTest, LosesNothingOfSimultaneousCreates)
{
    for (int i = 1; i <= 50; ++i) {
        if (::fork() == 0) {
            Run("method=create&tuner=0&id=7&start_time=" + std::to_string(i));
            ::_exit(0);
        }
    }
    while (::wait(nullptr) > 0) {}
    EXPECT_EQ(Parsed(Read(kOneShot)).size(), 50U);
}

/// Operations that only other methods call.
struct Inside : ScheduleRecordingAPI {
    using ScheduleRecordingAPI::DateTimeToEpoch, ScheduleRecordingAPI::TimeTextToSeconds, ScheduleRecordingAPI::SecondsToTimeText,
        ScheduleRecordingAPI::IsWeekdaySelected, ScheduleRecordingAPI::ReportLibraryError, ScheduleRecordingAPI::m_errors;
};

TEST_F(PlainTest, ConvertsDatesAndTimes)
{
    Inside api;
    struct { char const* zone; int now; char const* date; char const* time; int epoch; } const dates[] = {
        {"UTC", 1000, "2025-07-01", "12:30", 1751373000}, {"UTC", 1000, "2025-7-1", "12:30", -1}, {"UTC", 1000, "2025-07-01", "9:30", -1},
        {"UTC", 1000, "aaaaaaaaaa", "01:02", 946688520}, {"UTC", 1000, "2025/07/01", "00:00", 1735689600}, {"UTC", 1000, "2025-13-01", "00:00", 1767225600},
        {"UTC", 1000, "9999999999", "00:00", -1}, {"UTC", 1000, "-999999999", "00:00", -1}, {"UTC", 1000, "9999-12-31", "00:00", -1}, {"UTC", 1000, "2025-07-01", "xx:xx", 1751328000},
        {"Europe/Berlin", 1735689600, "2025-01-15", "20:15", 1736968500}, {"Europe/Berlin", 1735689600, "2025-07-15", "20:15", 1752606900},
        {"Europe/Berlin", 1751328000, "2025-07-15", "20:15", 1752603300}, {"Europe/Berlin", 1751328000, "2025-01-15", "20:15", 1736964900},
        {"America/New_York", 1735689600, "2025-07-15", "20:15", 1752628500}, {"America/New_York", 1751328000, "2025-07-15", "20:15", 1752624900},
        {"Asia/Kolkata", 1751328000, "2025-01-15", "20:15", 1736952300}};
    for (auto const& row : dates) {
        Zone const zone(row.zone);
        seams::now = row.now;
        EXPECT_EQ(api.DateTimeToEpoch(row.date, row.time), row.epoch) << row.zone << row.now << row.date << row.time;
    }
    for (auto const& [text, seconds] : {std::pair{"00:30", 1800}, {"25:00", 90000}, {"99:99", 362340}, {"1:300", 21600}, {"0:30", -1}, {"", -1}, {"abcde", -1}, {"12:xx", -1}, {"12345", -1}}) {
        EXPECT_EQ(api.TimeTextToSeconds(text), seconds) << text;
    }
    for (auto const& [seconds, text] : {std::pair{0, "00:00"}, {59, "00:00"}, {-1, "00:00"}, {90000, "25:00"}, {3660, "01:01"}, {2147483647, "596523:14"}}) {
        char buffer[64];
        EXPECT_EQ(api.SecondsToTimeText(buffer, sizeof buffer, seconds), static_cast<int>(std::strlen(text)));
        EXPECT_STREQ(buffer, text);
    }
    Zone const zone("America/New_York"); // 0 is the last evening of 1969, a Wednesday
    for (auto const& [flags, selected] : {std::pair{"0,0,0,1,0,0,0", true}, {"1,1,1,2,1,1,1", false}, {"1,1,1", false}, {"", false}, {"0,0,0,01x", true}}) {
        EXPECT_EQ(api.IsWeekdaySelected(0, flags), selected) << flags;
    }
}

TEST_F(PlainTest, ReportsWhatTheLibraryLeft)
{
    Inside api;
    for (char const* out : {"{}", "null", R"({"errno":null})", R"({"errno":17})"}) {
        Json::Value value = Parsed(out);
        api.ReportLibraryError(value);
    }
    EXPECT_EQ(api.m_errors, Parsed("[100,100,100,401]"));
}

} // namespace
