/// @file User-defined schedules: create, change, delete, inspect, and what stands after a failure.
#include "platform/appliance_paths.h"
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

namespace {

// Tables of requests are laid out by hand.
// clang-format off

constexpr int kNow = 1751371200; // noon of Tuesday 2025-07-01 in UTC, the same day from New York to Kolkata

struct Inside : ScheduleRecordingAPI {
    using ScheduleRecordingAPI::DateTimeToEpoch, ScheduleRecordingAPI::TimeTextToSeconds;
};

/// A schedule of tuner 0 as a client describes it; `days` is empty if it does not repeat.
struct Plan {
    std::string date, time, length, title, id, days = "", end = "";

    int Start() const { seams::now = kNow; return Inside().DateTimeToEpoch(date.c_str(), time.c_str()); }
    std::string StartText() const { return std::to_string(Start()); }
    std::string Length() const { return std::to_string(Inside().TimeTextToSeconds(length.c_str())); }
    bool IsRule() const { return !days.empty(); }

    std::string Query() const
    {
        return "&start_date=" + date + "&start_time=" + time + "&duration=" + length + "&title=" + title + "&channel_name=C&id=" + id +
               "&description=D&is_repeat=" + (IsRule() ? "true&isweekly=true&weekdaystatus=" + days + "&end_date=" + end : "false");
    }
    std::string Record(char const* tuner = "0") const
    {
        return R"({"start_time":)" + StartText() + R"(,"event_name":")" + title + R"(","text_name":"D","duration":)" + Length() + R"(,"input_duration":")" + length +
               R"(","input_start_time":")" + time + R"(","input_start_date":")" + date + R"(","tuner":)" + tuner + R"(,"channel_name":"C","channel_id":")" + id +
               R"(","is_repeat":)" + (IsRule() ? "true" : "false") + R"(,"isweekly":true,"weekdaystatus":")" + (IsRule() ? days : "0,0,0,0,0,0,0") +
               R"(","end_date":")" + (IsRule() ? end : "1") + "\"}";
    }
    /// What the store holds: a one-shot record or a rule.
    std::string Stored(std::string const& lastCreate = "0") const
    {
        std::string const service = id.substr(0, id.find('@')), frequency = id.substr(id.find('@') + 1);
        return R"({"start_time":)" + StartText() + R"(,"frequency":)" + frequency + R"(,"channel_name":"C","title":")" + title + R"(","description":"D","duration":)" +
               Length() + R"(,"uid":"1024",)" + (IsRule() ? R"("id":)" + service + R"(,"status":19,"lastcreatetime":)" + lastCreate + R"(,"start_date":")" + date +
               R"(","isweekly":true,"weekdaystatus":")" + days + R"(","end_date":")" + end + "\"}" : R"("service_id":)" + service + R"(,"status":4})");
    }
};

std::string List(std::vector<std::string> const& elements)
{
    std::string text;
    for (std::string const& element : elements) { text += (text.empty() ? "[" : ",") + element; }
    return text.empty() ? "null\n" : text + "]";
}

Plan const kShow{"2025-07-02", "20:15", "01:00", "Show", "7@474"};
Plan const kOther{"2025-07-05", "20:15", "01:00", "Other", "8@490"};
Plan const kWeekly{"2025-07-03", "18:00", "00:30", "Weekly", "9@500", "0,0,0,0,1,0,0", "2025-12-31"};
Plan const kNewShow{"2025-07-04", "21:00", "02:00", "New", "7@474"};
Plan const kNewRule{"2025-07-04", "22:00", "00:45", "NewRule", "7@474", "0,0,0,0,0,1,0", "2025-08-01"};

std::string const kOneShotPath = appliance::kRoot + std::string(kOneShot), kRepeatPath = appliance::kRoot + std::string(kRepeat);

std::string Edit(Plan const& from, Plan const& to)
{
    return "method=Edit_UserDefine&tuner=0&orig_start_date=" + from.date + "&orig_start_time=" + from.time + to.Query();
}

using UserDefineTest = Appliance;

TEST_F(UserDefineTest, CreatesTheRecordAndThenTheSchedule)
{
    std::string const create = "method=create_userdefine&tuner=0", ok = create + kShow.Query(), rule = create + kWeekly.Query();
    std::string const noRecord = List({});
    std::vector<Row> rows = {
        {.name = "one-shot", .query = ok + "&isweekly=x&weekdaystatus=y&end_date=z", .after = {{kOneShot, List({kShow.Stored()})}, {kUserDefine, List({kShow.Record()})}}, .commands = "reload;"},
        {.name = "rule", .query = rule, .after = {{kRepeat, List({kWeekly.Stored()})}, {kUserDefine, List({kWeekly.Record()})}}, .commands = "reload;"},
        {.name = "rule, isweekly no boolean", .query = Replaced(rule, "isweekly=true", "isweekly=1"),
         .after = {{kRepeat, List({kWeekly.Stored()})}, {kUserDefine, List({Replaced(kWeekly.Record(), "\"isweekly\":true", "\"isweekly\":false")})}}, .commands = "reload;"},
        {.name = "length no time text", .query = Replaced(ok, "01:00", "1h"), .after = {{kOneShot, List({Replaced(kShow.Stored(), "3600", "1800")})},
         {kUserDefine, List({Replaced(Replaced(kShow.Record(), "01:00", "1h"), "3600", "-1")})}}, .commands = "reload;"},
        {.name = "same pair replaced, others kept", .query = ok, .before = {{kUserDefine, List({Replaced(kShow.Record(), "Show", "x"), kShow.Record("1"), kOther.Record()})}},
         .after = {{kOneShot, List({kShow.Stored()})}, {kUserDefine, List({kShow.Record("1"), kOther.Record(), kShow.Record()})}}, .commands = "reload;"},
        {.name = "no folder", .query = ok, .codes = {406}, .before = {{kFolders, ""}, {kUserDefine, List({kOther.Record()})}}},
        {.name = "no folder, no record left", .query = ok, .codes = {406}, .before = {{kFolders, ""}, {kUserDefine, List({kShow.Record()})}}, .after = {{kUserDefine, noRecord}}},
        {.name = "already stored", .query = ok, .codes = {401}, .before = {{kOneShot, List({kShow.Stored()})}}, .after = {{kUserDefine, noRecord}}},
        {.name = "id no channel", .query = Replaced(ok, "7@474", "x"), .codes = {101}, .after = {{kUserDefine, noRecord}}},
        {.name = "one-shot, no reload: the schedule stays", .query = ok, .codes = {100}, .after = {{kOneShot, List({kShow.Stored()})}, {kUserDefine, noRecord}}, .commandsBeforeFailure = 0},
        {.name = "rule, no reload: both stay", .query = rule, .codes = {100}, .after = {{kRepeat, List({kWeekly.Stored()})}, {kUserDefine, List({kWeekly.Record()})}}, .commandsBeforeFailure = 0},
        {.name = "no save keeps the former record", .query = ok, .codes = {101}, .before = {{kUserDefine + std::string(".tmp/x"), "x"}, {kUserDefine, List({kShow.Record()})}}},
        {.name = "file does not load", .query = ok, .codes = {101}, .before = {{kUserDefine, "{"}}},
        {.name = "file no array", .query = ok, .codes = {101}, .before = {{kUserDefine, "{}"}}},
        {.name = "file of wrong types", .query = ok, .codes = {100}, .before = {{kUserDefine, R"([{"start_time":"x"}])"}}, .log = "request failed: Value is not convertible to Int.;"},
        {.name = "no tuner", .query = Replaced(ok, "&tuner=0", ""), .codes = {101, 101}},
    };
    for (auto const& [from, to] : {std::pair{"is_repeat=false", "is_repeat=1"}, {"2025-07-02", ""}, {"20:15", ""}, {"channel_name=C", "channel_name="}, {"id=7@474", "id="}}) {
        rows.push_back({from, Replaced(ok, from, to), {101, 101}});
    }
    for (auto const& [from, to] : {std::pair{"weekdaystatus", "x"}, {"end_date", "x"}}) { rows.push_back({from, Replaced(rule, from, to), {101, 101}}); }
    for (auto const& [from, to] : {std::pair{"2025-07-02", "2025-7-2"}, {"20:15", "8:15"}, {"2025-07-02", "1960-01-01"}, {"2025-07-02", "2999-01-01"}}) {
        rows.push_back({to, Replaced(ok, from, to), {101}, "", {{kUserDefine, List({kShow.Record()})}}});
    }
    Check({}, rows, kNow);
}

TEST_F(UserDefineTest, ValidatesAnEditBeforeItReadsAnything)
{
    Files const base = {{kOneShot, List({kShow.Stored(), kOther.Stored()})}, {kUserDefine, List({kShow.Record()})}};
    std::vector<Row> rows;
    for (auto const& [from, to] : {std::pair{"is_repeat=true", ""}, {"&start_date=2025-07-04", ""}, {"&start_time=22:00", "&start_time=2200"}, {"00:45", "00:00"}, {"00:45", "45"},
             {"orig_start_date", "x"}, {"20:15", "20:16"}, {"isweekly=true", "isweekly=x"}, {"end_date", "x"}, {"weekdaystatus", "x"}, {"&tuner=0", ""}, {"&tuner=0", "&tuner=1"}}) {
        rows.push_back({to, Replaced(Edit(kShow, kNewRule), from, to), {101}});
    }
    std::string const again = Edit(kShow, kNewShow);
    Plan duringRule = kWeekly;
    duringRule.days.clear();
    auto const wrong = [](char const* file, std::string const& text) { return Files{{file, text}}; };
    rows.insert(rows.end(), {
        {.name = "overlap", .query = Edit(kShow, kOther), .codes = {405}},
        {.name = "overlap with a rule", .query = Edit(kShow, duringRule), .codes = {405}, .before = {{kRepeat, List({kWeekly.Stored()})}}},
        {.name = "no folder", .query = again, .codes = {406}, .before = {{kFolders, ""}}, .user = "ghost"},
        {.name = "no user", .query = again, .codes = {100}, .log = "schedule_recording:661 Failed to KALDUserGet function.;", .user = "ghost"},
        {.name = "no uid for a rule", .query = Edit(kShow, kNewRule), .codes = {100}, .before = {{kFolders, ""}}, .log = "schedule_recording:862 uid is error.;", .user = "nouid"},
        {.name = "wrong type in a record", .query = again, .codes = {100}, .before = wrong(kUserDefine, List({Replaced(kShow.Record(), "\"D\"", "{}")})), .log = "request failed: Type is not convertible to string;"},
        {.name = "wrong type in a store", .query = again, .codes = {100}, .before = wrong(kOneShot, R"([{"start_time":5,"service_id":[]}])"), .log = "request failed: Type is not convertible to string;"},
        {.name = "wrong type in a rule", .query = again, .codes = {100}, .before = wrong(kRepeat, R"([{"id":"x"}])"), .log = "request failed: Value is not convertible to Int.;"},
    });
    Check(base, rows, kNow);
}

TEST_F(UserDefineTest, EditsOneShotSchedules)
{
    Files const base = {{kOneShot, List({kShow.Stored(), kOther.Stored()})}, {kUserDefine, List({kShow.Record()})}};
    std::string const start = kShow.StartText(), stop = "stop 0 " + start + " 474 7;";
    Plan renamed = kShow, off = kNewRule, badId = kNewShow;
    renamed.title = "Renamed";
    off.days = "1,0,0,0,0,0,0";
    badId.id = "x@1";
    std::string const kept = List({kOther.Stored(), kShow.Stored()}), unusable = Replaced(kShow.Record(), "7@474", "x");
    Check(base, {
        {.name = "to one-shot", .query = Edit(kShow, kNewShow), .after = {{kOneShot, List({kOther.Stored(), kNewShow.Stored()})}, {kUserDefine, List({kNewShow.Record()})}}, .commands = stop + "reload;reload;"},
        {.name = "to rule", .query = Edit(kShow, kNewRule), .after = {{kOneShot, List({kOther.Stored()})}, {kRepeat, List({kNewRule.Stored()})}, {kUserDefine, List({kNewRule.Record()})}}, .commands = stop + "reload;reload;"},
        {.name = "title only", .query = Edit(kShow, renamed), .after = {{kOneShot, List({kOther.Stored(), renamed.Stored()})}, {kUserDefine, List({renamed.Record()})}}, .commands = stop + "reload;reload;"},
        {.name = "no channel name: restored", .query = Replaced(Edit(kShow, kNewShow), "channel_name", "x"), .codes = {101, 101}, .after = {{kOneShot, kept}}, .commands = stop + "reload;reload;"},
        {.name = "weekday not selected: restored", .query = Edit(kShow, off), .codes = {101}, .after = {{kOneShot, kept}}, .commands = stop + "reload;reload;"},
        {.name = "no reload for a rule", .query = Edit(kShow, kNewRule), .codes = {100}, .after = {{kOneShot, List({kOther.Stored()})}, {kRepeat, List({kNewRule.Stored()})}, {kUserDefine, List({kNewRule.Record()})}},
         .commands = stop + "reload;", .commandsBeforeFailure = 2},
        {.name = "no reload: all schedules stay, no record", .query = Edit(kShow, kNewShow), .codes = {100, 100},
         .after = {{kOneShot, List({kOther.Stored(), kNewShow.Stored(), kShow.Stored()})}, {kUserDefine, "null\n"}}, .commands = stop + "reload;", .commandsBeforeFailure = 2},
        {.name = "old not in the store", .query = Edit(kShow, kNewShow), .codes = {402}, .before = {{kOneShot, List({kOther.Stored()})}},
         .after = {{kOneShot, List({kOther.Stored(), kNewShow.Stored()})}, {kUserDefine, List({kNewShow.Record()})}}, .commands = "reload;"},
        {.name = "neither can be stored", .query = Edit(kShow, badId), .codes = {101, 101, 101}, .before = {{kUserDefine, List({unusable})}}, .after = {{kUserDefine, "null\n"}}},
    }, kNow);
}

TEST_F(UserDefineTest, EditsRules)
{
    std::string const last = std::to_string(kWeekly.Start());
    std::string const made = Replaced(Replaced(Replaced(kShow.Stored(), kShow.StartText(), last), "474", "500"), "\"service_id\":7", "\"service_id\":\"9\"");
    std::string const begun = Replaced(made, "\"status\":4", "\"status\":2"), otherChannel = Replaced(made, "500", "501");
    Files const base = {{kOneShot, List({made, kOther.Stored()})}, {kRepeat, List({kWeekly.Stored(last)})}, {kUserDefine, List({kWeekly.Record()})}};
    Plan badId = kNewShow, moved = kWeekly, during = kWeekly;
    badId.id = "x@1";
    moved.time = "18:10";
    during.days.clear();
    Plan const later{"2025-07-02", "20:30", "01:00", "Later", "7@474", "0,0,0,1,0,1,0", "2025-08-01"}; // its third day from today hits kOther
    Plan const ended{later.date, later.time, later.length, later.title, later.id, later.days, "2025-06-30"};
    Plan const last38{"2038-01-15", kNewRule.time, kNewRule.length, kNewRule.title, kNewRule.id, kNewRule.days, "2999-01-01"};
    std::string const off = Replaced(Edit(kWeekly, kNewRule), "0,0,0,0,0,1,0", "1,0,0,0,0,0,0");
    Check(base, {
        {.name = "to one-shot", .query = Edit(kWeekly, kNewShow), .after = {{kOneShot, List({kOther.Stored(), kNewShow.Stored()})}, {kRepeat, "[]"}, {kUserDefine, List({kNewShow.Record()})}}, .commands = "reload;"},
        {.name = "to rule", .query = Edit(kWeekly, kNewRule), .after = {{kOneShot, List({kOther.Stored()})}, {kRepeat, List({kNewRule.Stored()})}, {kUserDefine, List({kNewRule.Record()})}}, .commands = "reload;"},
        {.name = "onto its own time, last one-shot left out", .query = Edit(kWeekly, moved), .before = {{kOneShot, List({made})}},
         .after = {{kOneShot, "null\n"}, {kRepeat, List({moved.Stored()})}, {kUserDefine, List({moved.Record()})}}, .commands = "reload;"},
        {.name = "a recording that runs counts", .query = Edit(kWeekly, during), .codes = {405}, .before = {{kOneShot, List({begun})}}},
        {.name = "another channel counts", .query = Edit(kWeekly, during), .codes = {405}, .before = {{kOneShot, List({otherChannel})}}},
        {.name = "a later day of the rule overlaps", .query = Edit(kWeekly, later), .codes = {405}},
        {.name = "no day of an ended rule is tested", .query = Edit(kWeekly, ended), .after = {{kOneShot, List({kOther.Stored()})}, {kRepeat, List({ended.Stored()})}, {kUserDefine, List({ended.Record()})}}, .commands = "reload;"},
        {.name = "no rule in the store", .query = Edit(kWeekly, kNewShow), .before = {{kRepeat, "[]"}}, .after = {{kOneShot, List({made, kOther.Stored(), kNewShow.Stored()})}, {kUserDefine, List({kNewShow.Record()})}}, .commands = "reload;"},
        {.name = "one-shot file not saved", .query = Edit(kWeekly, kNewShow), .codes = {100}, .before = {{kOneShot + std::string(".tmp/x"), "x"}},
         .log = "schedule_recording:1325 Fail to save schedule json. Path is " + kOneShotPath + ";"},
        {.name = "rule not deleted: both stay", .query = Edit(kWeekly, kNewShow), .codes = {100}, .before = {{kRepeat + std::string(".tmp/x"), "x"}},
         .after = {{kOneShot, List({kOther.Stored(), kNewShow.Stored()})}, {kUserDefine, List({kWeekly.Record(), kNewShow.Record()})}}, .commands = "reload;",
         .log = "schedule_recording:1051 Fail to save repeat schedule json. Path is " + kRepeatPath + ";"},
        {.name = "restored afresh", .query = off, .codes = {101}, .after = {{kOneShot, List({kOther.Stored()})}, {kRepeat, List({kWeekly.Stored()})}}, .commands = "reload;"},
        {.name = "id no channel: restored", .query = Edit(kWeekly, badId), .codes = {101}, .after = {{kOneShot, List({kOther.Stored()})}, {kRepeat, List({kWeekly.Stored()})}}, .commands = "reload;"},
        {.name = "to the end of time", .query = Edit(kWeekly, last38), .after = {{kOneShot, List({kOther.Stored()})}, {kRepeat, List({last38.Stored()})}, {kUserDefine, List({last38.Record()})}}, .commands = "reload;"},
    }, kNow);
}

TEST_F(UserDefineTest, DeletesSchedulesAndTheirRecords)
{
    std::string const a = kShow.StartText(), b = kWeekly.StartText(), all = List({kShow.Record(), kWeekly.Record(), kShow.Record("1")});
    std::string const del = "method=delete_userdefine&tuner=0&id=", stop = "stop 0 " + a + " 474 7;";
    Check({{kOneShot, List({kShow.Stored()})}, {kRepeat, List({kWeekly.Stored()})}, {kUserDefine, all}}, {
        {.name = "both kinds, one reload", .query = del + a + "," + b, .after = {{kOneShot, "[]"}, {kRepeat, "[]"}, {kUserDefine, List({kShow.Record("1")})}}, .commands = stop + "reload;"},
        {.name = "none named", .query = del + "5,x", .commands = "reload;"},
        {.name = "one of two", .query = del + "5," + a, .after = {{kOneShot, "[]"}, {kUserDefine, List({kWeekly.Record(), kShow.Record("1")})}}, .commands = stop + "reload;"},
        {.name = "one twice", .query = del + a + "," + a, .codes = {402}, .after = {{kOneShot, "[]"}, {kUserDefine, List({kWeekly.Record(), kShow.Record("1")})}}, .commands = stop + "reload;"},
        {.name = "no id", .query = del, .codes = {101}},
        {.name = "no tuner", .query = "method=delete_userdefine&id=" + a, .codes = {101}},
        {.name = "failed deletes lose their records", .query = del + a + "," + b, .codes = {402, 100}, .before = {{kOneShot, ""}, {kRepeat, ""}}, .after = {{kUserDefine, List({kShow.Record("1")})}},
         .commands = "reload;", .log = "schedule_recording:1032 Fail to load file " + kRepeatPath + ";"},
        {.name = "no reload", .query = del + b, .codes = {100}, .after = {{kRepeat, "[]"}, {kUserDefine, List({kShow.Record(), kShow.Record("1")})}}, .commandsBeforeFailure = 0},
        {.name = "the last one", .query = del + a, .before = {{kUserDefine, List({kShow.Record()})}}, .after = {{kOneShot, "[]"}, {kUserDefine, "null\n"}}, .commands = stop + "reload;"},
        {.name = "negative tuner", .query = "method=delete_userdefine&tuner=-1&id=" + a, .codes = {402}, .before = {{kUserDefine, List({kShow.Record("-1")})}}, .commands = "reload;"},
    }, kNow);
}

TEST_F(UserDefineTest, FillsTheForm)
{
    Zone const zone("Asia/Kolkata");
    std::string const fresh = R"({"channel_name":"","channel_id":"","start_date":"2025-07-01","start_time":"17:30","start_weekday":"2","today_date":"2025-07-01","duration":"00:30",
        "title":"","description":"","is_repeat":false,"weekdaystatus":"0,0,1,0,0,0,0","end_date":"1"})";
    auto const filled = [](Plan const& plan, char const* weekday, char const* length) {
        return R"({"channel_name":"C","channel_id":")" + plan.id + R"(","start_date":")" + plan.date + R"(","start_time":")" + plan.time + R"(","start_weekday":")" + weekday +
               R"(","today_date":"2025-07-01","duration":")" + length + R"(","title":")" + plan.title + R"(","description":"D","is_repeat":)" + (plan.IsRule() ? "true" : "false") +
               R"(,"weekdaystatus":")" + (plan.IsRule() ? plan.days : "0,0,0,0,0,0,0") + R"(","end_date":")" + (plan.IsRule() ? plan.end : "1") + "\"}";
    };
    std::string const info = "method=getinfo_userdefine&tuner=0&start_time=", records = List({kShow.Record(), Replaced(kWeekly.Record(), ":1800,", ":-1,"), kOther.Record("1")});
    Check({{kUserDefine, records}}, {
        {.name = "one-shot", .query = info + kShow.StartText(), .data = filled(kShow, "3", "01:00")},
        {.name = "rule, no length", .query = info + kWeekly.StartText(), .data = filled(kWeekly, "4", "00:00")},
        {.name = "other tuner's", .query = info + kOther.StartText(), .data = fresh},
        {.name = "no start", .query = "method=getinfo_userdefine&tuner=0", .data = fresh},
        {.name = "start no number", .query = info + "x", .codes = {101}},
        {.name = "no tuner", .query = "method=getinfo_userdefine", .codes = {101}},
        {.name = "broken file", .query = info + kShow.StartText(), .data = fresh, .before = {{kUserDefine, "["}}},
    }, kNow);
    seams::now = kNow + 4 * 86400;
    EXPECT_EQ(Run(info + "-5").body["data"]["weekdaystatus"].asString(), "0,0,0,0,0,0,1");
    seams::now = kNow + 5 * 86400;
    EXPECT_EQ(Run(info + "-5").body["data"]["weekdaystatus"].asString(), "1,0,0,0,0,0,0");
}

} // namespace
