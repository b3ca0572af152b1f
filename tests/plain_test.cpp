/// @file One-shot and repeat schedules: create, delete, change, inspect; dates and times.
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include <sys/wait.h>
#include <unistd.h>

namespace {

// Tables of requests are laid out by hand.
// clang-format off

using PlainTest = Appliance;

std::string const kLog = "schedule_recording:";

Files Shots(std::vector<std::string> const& records) { return {{kOneShot, List(records)}}; }
Files Rules(std::vector<std::string> const& records) { return {{kRepeat, List(records)}}; }

/// What a plain add stores without a user-defined record.
std::string Added(std::string const& members)
{
    return "{'channel_name':'','title':'','description':'','duration':1800,'uid':'1024'," + members + "}";
}

TEST_F(PlainTest, CreatesOneShotSchedules)
{
    std::string const one = Added("'start_time':1000,'service_id':7,'frequency':474,'status':4");
    std::string const two = Added("'start_time':2000,'service_id':8,'status':4");
    std::string const details = "'channel_name':'C','title':'E','description':'T','duration':60";
    std::string const detailed = Replaced(one, "'channel_name':'','title':'','description':'','duration':1800", details);
    std::string const ok = "method=create&tuner=0&id=7@474&start_time=1000", list = Replaced(ok, "7@474", "7@474,8");
    Check({}, Variants(ok, {101}, {{"&tuner=0", ""}, {"&id=7@474", ""}, {"7@474", "x"}, {"7@474", "0"}, {"7@474", "7@"},
        {"1000", ""}, {"1000", "1,2"}, {"1000", "x"}, {"1000", "0"}, {"1000", "2147483648"}}));
    Check({}, {
        Row("one", ok).Then(Shots({one}), "reload;"),
        Row("frequency alone will do", Replaced(ok, "7@", "0@")).Then(Shots({Replaced(one, "':7", "':0")}), "reload;"),
        Row("frequency 0", Replaced(ok, "474", "0")).Then(Shots({Replaced(one, "474", "0")}), "reload;"),
        Row("already there", ok, 401).Given(Shots({"{'start_time':1000,'service_id':'7'}"})),
        Row("broken file", ok, 403).Given({{kOneShot, "["}}),
        Row("null file", ok).Given({{kOneShot, "null"}}).Then(Shots({one}), "reload;"),
        Row("record of wrong type", ok, 100).Given(Shots({"[]"})).Logs("request failed: a stored record is no object"),
        Row("no folder before no user", ok, 406).As("ghost").Given({{kFolders, "[]"}}),
        Row("no user", ok, 100).As("ghost").Logs(kLog + "661 Failed to KALDUserGet function."),
        Row("no uid", ok, 100).As("nouid").Logs(kLog + "667 uid is error."),
        Row("no reload", ok, 100).Then(Shots({one})).FailsAfter(0),
        Row("no store folder", ok, 403).Given({{"/var/packages/Tremolane/etc/dtvschedules", ""}}),
        Row("no temporary file", ok, 403).Given({{kOneShot + kInTheWay, "x"}}),
        Row("list", list + ",2000,3000").Then(Shots({one, two}), "reload;"),
        Row("list, fewer starts", list, 101).Then(Shots({one})),
        Row("list, the middle fails", Replaced(list, ",8", ",8,x,7@474") + ",2000,1,1000", 401).Then(Shots({one, two})),
        Row("list, the last code", Replaced(list, ",8", ",x") + ",6", 101).Given(Shots({one})),
        Row("details of the record", ok).Then(Shots({detailed}), "reload;").Given({{kUserDefine,
            "[{'start_time':1000,'tuner':0,'channel_name':'C','event_name':'E','text_name':'T','duration':60}]"}}),
    });
}

TEST_F(PlainTest, LooksForAFolderForRecordings)
{
    std::string const good = "{'section':'TV_Record','share':'video','subpath':'tv'}", bad = Replaced(good, "tv'", "x'");
    ExpectEach<std::string, bool>([](std::string const& folders) {
        Reset();
        Lay({{kFolders, folders}});
        return Run("method=create&tuner=0&id=7&start_time=5").body["success"].asBool();
    }, {{List({good}), true}, {List({bad}), false}, {List({bad, good}), true}, {List({good, bad}), true},
        {"{'a':" + good + "}", false}, {List({"7", "{}", "{'section':1}", good}), true}, {"[]", false}, {"[", false},
        {List({Replaced(good, "TV_Record", "music")}), false}, {"", false}});
}

TEST_F(PlainTest, DeletesOneShotSchedulesAndStopsThem)
{
    std::string const a = "{'start_time':1000,'service_id':'7','duration':4000}";
    std::string const b = "{'start_time':1000,'service_id':8,'duration':4001}";
    std::string const ok = "method=delete&tuner=0&id=1000&channel_id=8", passed = "method=delete_passed&tuner=0";
    Files const base = Shots({a, b});
    Check(base, Variants(ok, {101}, {{"&tuner=0", ""}, {"&channel_id=8", ""}, {"=8", "=x"}, {"1000", "x"}}));
    Check(base, Variants(ok, {402}, {{"1000", "1001"}, {"=8", "=9"}, {"tuner=0", "tuner=1"}}));
    Check(base, {
        Row("nothing named", "method=delete", 101),
        Row("stop only", "method=delete&tuner=3&channel_id=7").Then({}, "stop 3 -1 -1 -1;reload;"),
        Row("both forms name it", Replaced(ok, "=8", "=7@9")).Then(Shots({b}), "stop 0 1000 9 7;reload;"),
        Row("plain form", ok).Then(Shots({a}), "stop 0 1000 0 8;reload;"),
        Row("stop fails", ok, 100).Then(Shots({a})).FailsAfter(0),
        Row("bare stop fails", "method=delete&tuner=0", 100).FailsAfter(0),
        Row("reload fails", ok, 100).Then(Shots({a}), "stop 0 1000 0 8;").FailsAfter(1),
        Row("broken file", ok, 403).Given({{kOneShot, "["}}),
        Row("daemon not there", ok, 100).Given({{"/var/run/dtvd", ""}}).Then(Shots({a})),
        Row("passed", passed).Then(Shots({b})),
        Row("passed, none", passed).Given(Shots({b})),
        Row("passed, no tuner", "method=delete_passed", 101),
        Row("passed, no array", passed, 403).Given({{kOneShot, "{}"}}),
    }, 5000);
}

TEST_F(PlainTest, CreatesAndEditsRepeatSchedules)
{
    SetZone("UTC"); // 1000000000 is a Sunday
    std::string const create = "method=create_repeat&tuner=0&id=7@474&start_time=1000000000&weekdaystatus=1,0,0,0,0,0,0"
                               "&end_date=2030-01-01&isweekly=true";
    std::string const edit = Replaced(Replaced(create, "create", "edit"), "7@474", "8@1");
    std::string const rule = "'isweekly':true,'weekdaystatus':'1,0,0,0,0,0,0','end_date':'2030-01-01'";
    std::string const edited = "{'id':8,'start_time':1000000000,'foreign':[1]," + rule + "}";
    std::string const old = Replaced(Replaced(edited, "2030", "x"), "1,0", "y");
    std::string const made = Added("'id':7,'frequency':474,'start_time':1000000000,'lastcreatetime':0,'status':19,"
                                   "'start_date':'2001-09-09'," + rule);
    Files const base = Rules({old}), noFolder = {{kFolders, "[]"}};
    for (std::string const& query : {create, edit}) {
        Check(base, Variants(query, {101}, {{"&tuner=0", ""}, {"1000000000", "-1"}, {"1000000000", "x"},
            {"2030-01-01", ""}, {"&start_time=1000000000", ""}, {"1000000000", "2147483648"}, {"1,0,0,0,0,0,0", ""},
            {"1,0,0,0,0,0,0", ",1"}, {"1,0,0", "0,1,1"}, {"1,0,0", "2,1,1"}}));
    }
    Check(base, {
        Row("create", Replaced(create, "isweekly=true", "")).Then(Rules({old, made}), "reload;"),
        Row("once", Replaced(create, "true", "FALSE")).Then(Rules({old, Replaced(made, "true", "false")}), "reload;"),
        Row("no user", create, 100).As("ghost").Given(noFolder).Logs(kLog + "856 Failed to KALDUserGet function."),
        Row("no uid", create, 100).As("nouid").Logs(kLog + "862 uid is error."),
        Row("no folder", create, 406).Given(noFolder),
        Row("no reload", create, 100).Then(Rules({old, made})).FailsAfter(0),
        Row("already there", Replaced(create, "7@474", "8@474"), 401),
        Row("broken file", create, 403).Given({{kRepeat, "["}}),
        Row("start 0 is no start", Replaced(Replaced(create, "1000000000", "0"), "1,0,0,0,0", "0,0,0,0,1"), 101),
        Row("bad id before no user", Replaced(create, "7@474", "x"), 101).As("ghost"),
        Row("edit", Replaced(edit, "true", "false")).Then(Rules({Replaced(edited, "true", "false")}), "reload;"),
        Row("edit without isweekly", Replaced(edit, "true", ""), 101),
        Row("edit of none", Replaced(edit, "8@1", "7"), 402),
        Row("edit of no id", Replaced(edit, "8@1", ""), 101),
        Row("edit of a broken file", edit, 403).Given({{kRepeat, "["}}),
        Row("edit, no folder, no reload", edit, 100).As("nouid").Given(noFolder).Then(Rules({edited})).FailsAfter(0),
    });
}

TEST_F(PlainTest, DeletesAndShowsRepeatSchedules)
{
    std::string const a = "{'id':7,'frequency':474,'start_time':1000,'foreign':{}}", c = "{'id':8,'start_time':2000}";
    std::string const b = "{'id':7,'frequency':'5','start_time':1000,'title':'B','isweekly':1,'end_date':null}";
    std::string const nulls = "'channel_name':null,'description':null,'duration':null,'start_date':null,"
                              "'weekdaystatus':null,'end_date':null,'start_time':1000}";
    std::string const del = "method=delete_repeat&tuner=0&id=1000&channel_id=7";
    std::string const info = "method=getinfo_repeat&tuner=0&start_time=1000&id=7";
    std::string const noLoad = kLog + "1032 Fail to load file " + PathOf(kRepeat);
    Files const base = Rules({a, b, c});
    Check(base, Variants(del, {101}, {{"&tuner=0", ""}, {"=1000", "="}, {"=7", "="}, {"1000", "1000,2000"}}));
    Check(base, Variants(info, {101}, {{"&tuner=0", ""}, {"&start_time=1000", ""}, {"1000", "1x"}, {"&id=7", ""}}));
    Check(base, {
        Row("both of a key", Replaced(del, "=7", "=7@1")).Then(Rules({c})),
        Row("a list", Replaced(Replaced(del, "1000", "2000,1000,1000"), "=7", "=8,7,9")).Then(Rules({})),
        Row("pairs by position", Replaced(Replaced(del, "1000", "1000,2000"), "=7", "=8,7")).Then(base),
        Row("null file", del).Given({{kRepeat, "null"}}).Then(Rules({})),
        Row("no file", del, 100).Given({{kRepeat, ""}}).Logs(noLoad),
        Row("no array", del, 100).Given({{kRepeat, "{}"}}).Logs(noLoad),
        Row("no save", del, 100).Given({{kRepeat + kInTheWay, "x"}})
            .Logs(kLog + "1051 Fail to save repeat schedule json. Path is " + PathOf(kRepeat)),
        Row("wrong type", del, 100).Given(Rules({"{'start_time':1000,'id':7}", "{'start_time':'x'}"}))
            .Logs("request failed: Value is not convertible to Int."),
        Row("first of a key", info).Answers("{'id':'7@474','title':null,'isweekly':null," + nulls),
        Row("values as stored", info + "@3").Given(Rules({b})).Answers("{'id':'7','title':'B','isweekly':1," + nulls),
        Row("none", Replaced(info, "id=7", "id=9")),
        Row("start 0 is a start", Replaced(info, "1000", "0")),
        Row("other tuner", Replaced(info, "tuner=0", "tuner=1"), 100)
            .Logs(kLog + "926 Fail to load file " + Replaced(PathOf(kRepeat), "/0dtv", "/1dtv")),
    });
}

TEST_F(PlainTest, LosesNothingOfSimultaneousCreates)
{
    for (int i = 1; i <= 50; ++i) {
        if (::fork() == 0) {
            ::_exit(Run("method=create&tuner=0&id=7&start_time=" + std::to_string(i)).codes.empty() ? 0 : 1);
        }
    }
    while (::wait(nullptr) > 0) {}
    EXPECT_EQ(Parsed(Read(kOneShot)).size(), 50U);
}

/// Operations that only other methods call.
struct Inside : ScheduleRecordingAPI {
    using ScheduleRecordingAPI::DateTimeToEpoch, ScheduleRecordingAPI::TimeTextToSeconds,
        ScheduleRecordingAPI::SecondsToTimeText, ScheduleRecordingAPI::IsWeekdaySelected,
        ScheduleRecordingAPI::ReportLibraryError, ScheduleRecordingAPI::m_errors;
};

TEST_F(PlainTest, ConvertsDatesAndTimes)
{
    Inside api;
    int const winter = 1735689600, summer = 1751328000; // what a date means depends on the daylight saving of now
    std::string const berlin = "Europe/Berlin", york = "America/New_York", kolkata = "Asia/Kolkata", utc = "UTC";
    for (auto const& [zone, now, date, time, epoch] : {std::tuple{utc, winter, "2025-07-01", "12:30", 1751373000},
             {utc, winter, "2025-7-1", "12:30", -1},                  {utc, winter, "2025-07-01", "9:30", -1},
             {utc, winter, "aaaaaaaaaa", "01:02", 946688520},         {utc, winter, "2025/07/01", "00:00", winter},
             {utc, winter, "2025-13-01", "00:00", 1767225600},        {utc, winter, "9999999999", "00:00", -1},
             {utc, winter, "-999999999", "00:00", -1},                {utc, winter, "9999-12-31", "00:00", -1},
             {utc, winter, "2025-07-01", "xx:xx", summer},       {kolkata, summer, "2025-01-15", "20:15", 1736952300},
             {berlin, winter, "2025-01-15", "20:15", 1736968500},  {berlin, winter, "2025-07-15", "20:15", 1752606900},
             {berlin, summer, "2025-01-15", "20:15", 1736964900},  {berlin, summer, "2025-07-15", "20:15", 1752603300},
             {york, winter, "2025-07-15", "20:15", 1752628500},    {york, summer, "2025-07-15", "20:15", 1752624900}}) {
        SetZone(zone);
        seams::now = now + 30;
        EXPECT_EQ(api.DateTimeToEpoch(date, time), epoch) << zone << now << date << time;
    }
    ExpectEach<char const*, int>([&api](char const* text) { return api.TimeTextToSeconds(text); },
        {{"00:30", 1800}, {"25:00", 90000}, {"99:99", 362340}, {"1:300", 21600}, {"0:30", -1}, {"", -1}, {"abcde", -1},
         {"12:xx", -1}, {"12345", -1}});
    ExpectEach<int, std::string>([&api](int seconds) {
        char text[64] = "";
        return std::to_string(api.SecondsToTimeText(text, sizeof text, seconds)) + ' ' + text;
    }, {{59, "5 00:00"}, {-1, "5 00:00"}, {90000, "5 25:00"}, {3660, "5 01:01"}, {2147483647, "9 596523:14"}});
    SetZone("America/New_York"); // 0 is the last evening of 1969, a Wednesday
    ExpectEach<char const*, bool>([&api](char const* flags) { return api.IsWeekdaySelected(0, flags); },
        {{"0,0,0,1,0,0,0", true}, {"1,1,1,2,1,1,1", false}, {"1,1,1", false}, {"", false}, {"0,0,0,01x", true}});
}

TEST_F(PlainTest, ReportsWhatTheLibraryLeft)
{
    Inside api;
    for (Json::Value outs = Parsed("[{},null,{'errno':null},{'errno':17}]"); Json::Value& out : outs) {
        api.ReportLibraryError(out);
    }
    EXPECT_EQ(api.m_errors, Parsed("[100,100,100,401]"));
}

} // namespace
