/// @file User-defined schedules: create, change, delete, inspect, and what stands after a failure.
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

namespace {

// Tables of requests are laid out by hand.
// clang-format off

constexpr int kNow = 1751371200; // noon of Tuesday 2025-07-01 in UTC, the same day from New York to Kolkata

// What the client sends of a schedule, what the files of tuner 0 hold of it and what its form shows; see Plan::In.
constexpr char kQuery[] = "&start_date=DATE&start_time=TIME&duration=LENGTH&title=TITLE&channel_name=C&id=ID"
    "&description=D.TITLE&is_repeat=REPEAT";
constexpr char kRuleQuery[] = "&isweekly=true&weekdaystatus=DAYS&end_date=END";
constexpr char kShot[] = "{'start_time':BEGIN,'service_id':SERVICE,'frequency':FREQUENCY,'status':4,'channel_name':'C',"
    "'title':'TITLE','description':'D.TITLE','duration':SECONDS,'uid':'1024'}";
constexpr char kRule[] = "{'start_time':BEGIN,'id':SERVICE,'frequency':FREQUENCY,'status':19,'channel_name':'C',"
    "'title':'TITLE','description':'D.TITLE','duration':SECONDS,'uid':'1024','lastcreatetime':0,'start_date':'DATE',"
    "'isweekly':true,'weekdaystatus':'DAYS','end_date':'END'}";
constexpr char kRecord[] = "{'start_time':BEGIN,'event_name':'TITLE','text_name':'D.TITLE','duration':SECONDS,'tuner':0,"
    "'input_start_date':'DATE','input_start_time':'TIME','input_duration':'LENGTH','channel_name':'C','channel_id':'ID',"
    "'is_repeat':REPEAT,'isweekly':true,'weekdaystatus':'DAYS','end_date':'END'}";
constexpr char kForm[] = "{'channel_name':'C','channel_id':'ID','start_date':'DATE','start_time':'TIME',"
    "'start_weekday':'3','today_date':'2025-07-01','duration':'LENGTH','title':'TITLE','description':'D.TITLE',"
    "'is_repeat':REPEAT,'weekdaystatus':'DAYS','end_date':'END'}";

struct Inside : ScheduleRecordingAPI {
    using ScheduleRecordingAPI::DateTimeToEpoch, ScheduleRecordingAPI::TimeTextToSeconds;
};

/// A schedule of tuner 0 as a client describes it.
struct Plan {
    std::string date, time, length, title, id, days = "0,0,0,0,0,0,0", end = "1", repeat = "false";

    /// Puts what the words in capitals stand for in their place.
    std::string In(std::string text) const
    {
        seams::now = kNow;
        std::string const begin = std::to_string(Inside().DateTimeToEpoch(date.c_str(), time.c_str()));
        std::string const seconds = std::to_string(Inside().TimeTextToSeconds(length.c_str()));
        std::string const service = id.substr(0, id.find('@')), frequency = id.substr(id.find('@') + 1);
        for (auto const& [word, value] : {std::pair{"DATE", date}, {"TIME", time}, {"LENGTH", length}, {"TITLE", title},
                 {"ID", id}, {"DAYS", days}, {"END", end}, {"REPEAT", repeat}, {"BEGIN", begin}, {"SECONDS", seconds},
                 {"SERVICE", service}, {"FREQUENCY", frequency}}) {
            text = Replaced(text, word, value);
        }
        return text;
    }
    Plan With(std::string Plan::*part, char const* value) const { Plan plan = *this; plan.*part = value; return plan; }
};

Plan const kShow{"2025-07-02", "20:15", "01:00", "Show", "7@474"};
Plan const kOther{"2025-07-05", "20:15", "01:00", "Other", "8@490"};
Plan const kNewShow{"2025-07-04", "21:00", "02:00", "New", "7@474"};
Plan const kWeekly{"2025-07-03", "18:00", "00:30", "Weekly", "9@500", "0,0,0,0,1,0,0", "2025-12-31", "true"};
Plan const kNewRule{"2025-07-04", "20:30", "00:45", "NewRule", "7@474", "0,0,0,0,0,1,0", "2025-08-01", "true"};

/// An element of a file: a plan, or itself.
std::string Element(Plan const& plan, char const* form) { return plan.In(form); }
std::string Element(std::string const& json, char const* /*form*/) { return json; }

using File = Files::value_type;
template <class... Of> File Shots(Of const&... of) { return {kOneShot, List({Element(of, kShot)...})}; }
template <class... Of> File Rules(Of const&... of) { return {kRepeat, List({Element(of, kRule)...})}; }
template <class... Of> File Records(Of const&... of) { return {kUserDefine, List({Element(of, kRecord)...})}; }
File const kNoRecords{kUserDefine, "null\n"}, kNoFolder{kFolders, ""};

std::string OfTuner1(Plan const& plan) { return Replaced(plan.In(kRecord), "'tuner':0", "'tuner':1"); }

std::string Query(Plan const& plan) { return plan.In(kQuery) + (plan.repeat == "true" ? plan.In(kRuleQuery) : ""); }

std::string Edit(Plan const& from, Plan const& to)
{
    return from.In("method=Edit_UserDefine&tuner=0&orig_start_date=DATE&orig_start_time=TIME") + Query(to);
}

/// What stands after an edit, beside kOther.
Files Edited(Plan const& to)
{
    return to.repeat == "true" ? Files{Shots(kOther), Rules(to), Records(to)} : Files{Shots(kOther, to), Records(to)};
}

std::string const kNoInt = "request failed: Value is not convertible to Int.";
std::string const kNoText = "request failed: Type is not convertible to string";
std::string const kLog = "schedule_recording:";

using UserDefineTest = Appliance;

TEST_F(UserDefineTest, CreatesTheRecordAndThenTheSchedule)
{
    std::string const create = "method=create_userdefine&tuner=0", atTuner1 = OfTuner1(kShow);
    std::string const ok = create + Query(kShow), rule = create + Query(kWeekly);
    std::string const notWeekly = Replaced(kWeekly.In(kRecord), "'isweekly':true", "'isweekly':false");
    Check({}, Variants(ok, {101, 101}, {{"&tuner=0", ""}, {"is_repeat=false", "is_repeat=1"}, {"2025-07-02", ""},
        {"20:15", ""}, {"channel_name=C", "channel_name="}, {"id=7@474", "id="}}), kNow);
    Check({}, Variants(rule, {101, 101}, {{"weekdaystatus", "x"}, {"end_date", "x"}}), kNow);
    Check({Records(kShow)}, Variants(ok, {101}, {{"2025-07-02", "2025-7-2"}, {"20:15", "8:15"},
        {"2025-07-02", "1960-01-01"}, {"2025-07-02", "2999-01-01"}}), kNow);
    Check({}, {
        Row("one-shot", ok + "&isweekly=x&weekdaystatus=y&end_date=z").Then({Shots(kShow), Records(kShow)}, "reload;"),
        Row("rule", rule).Then({Rules(kWeekly), Records(kWeekly)}, "reload;"),
        Row("isweekly=1", Replaced(rule, "ly=true", "ly=1")).Then({Rules(kWeekly), Records(notWeekly)}, "reload;"),
        Row("no length", Replaced(ok, "01:00", ""))
            .Then({Shots(kShow.With(&Plan::length, "00:30")), Records(kShow.With(&Plan::length, ""))}, "reload;"),
        Row("same pair replaced, others stay", ok).Given({Records(kShow.With(&Plan::title, "x"), atTuner1, kOther)})
            .Then({Shots(kShow), Records(atTuner1, kOther, kShow)}, "reload;"),
        Row("no folder, no former record", ok, 406).Given({kNoFolder, Records(kOther, kShow)}).Then({Records(kOther)}),
        Row("already stored", ok, 401).Given({Shots(kShow)}).Then({kNoRecords}),
        Row("id no channel", Replaced(ok, "7@474", "x"), 101).Then({kNoRecords}),
        Row("one-shot, no reload: the schedule stays", ok, 100).Then({Shots(kShow), kNoRecords}).FailsAfter(0),
        Row("rule, no reload: both stay", rule, 100).Then({Rules(kWeekly), Records(kWeekly)}).FailsAfter(0),
        Row("no save keeps the former record", ok, 101).Given({{kUserDefine + kInTheWay, "x"}, Records(kShow)}),
        Row("file does not load", ok, 101).Given({{kUserDefine, "{"}}),
        Row("file no array", ok, 101).Given({{kUserDefine, "{}"}}),
        Row("file of wrong types", ok, 100).Given({Records("{'start_time':'x'}")}).Logs(kNoInt),
    }, kNow);
}

TEST_F(UserDefineTest, ValidatesAnEditBeforeItReadsAnything)
{
    Files const base = {Shots(kShow, kOther), Records(kShow)};
    std::string const again = Edit(kShow, kNewShow), rule = Edit(kShow, kNewRule), record = kShow.In(kRecord);
    Check(base, Variants(rule, {101}, {{"is_repeat=true", ""}, {"&start_date=2025-07-04", ""}, {"20:30", "2030"},
        {"00:45", "00:00"}, {"00:45", "45"}, {"orig_start_date", "x"}, {"20:15", "20:16"}, {"isweekly=true", "isweekly=x"},
        {"end_date", "x"}, {"weekdaystatus", "x"}, {"&tuner=0", ""}, {"&tuner=0", "&tuner=1"}}), kNow);
    Check(base, {
        Row("overlap", Edit(kShow, kOther), 405),
        Row("overlap with a rule", Edit(kShow, kWeekly.With(&Plan::repeat, "false")), 405).Given({Rules(kWeekly)}),
        Row("no folder", again, 406).As("ghost").Given({kNoFolder}),
        Row("no user", again, 100).As("ghost").Logs(kLog + "661 Failed to KALDUserGet function."),
        Row("no uid for a rule", rule, 100).As("nouid").Given({kNoFolder}).Logs(kLog + "862 uid is error."),
        Row("wrong type in a record", again, 100).Given({Records(Replaced(record, "'D.Show'", "{}"))}).Logs(kNoText),
        Row("wrong type in a store", again, 100).Given({Shots("{'start_time':5,'service_id':[]}")}).Logs(kNoText),
        Row("wrong type in a rule", again, 100).Given({Rules("{'id':'x'}")}).Logs(kNoInt),
    }, kNow);
}

TEST_F(UserDefineTest, EditsOneShotSchedules)
{
    std::string const stop = kShow.In("stop 0 BEGIN FREQUENCY SERVICE;"), replaced = stop + "reload;reload;";
    std::string const toShow = Edit(kShow, kNewShow);
    Plan const renamed = kShow.With(&Plan::title, "Renamed"), off = kNewRule.With(&Plan::days, "1,0,0,0,0,0,0");
    Files const restored = {Shots(kOther, kShow), Records(kShow)};
    Check({Shots(kShow, kOther), Records(kShow)}, {
        Row("to one-shot", toShow).Then(Edited(kNewShow), replaced),
        Row("to rule", Edit(kShow, kNewRule)).Then(Edited(kNewRule), replaced),
        Row("title only", Edit(kShow, renamed)).Then(Edited(renamed), replaced),
        Row("no channel name: restored", Replaced(toShow, "channel_name", "x"), 101, 101).Then(restored, replaced),
        Row("weekday not selected: restored", Edit(kShow, off), 101).Then(restored, replaced),
        Row("no reload for a rule", Edit(kShow, kNewRule), 100).Then(Edited(kNewRule), stop + "reload;").FailsAfter(2),
        Row("no reload: all schedules stay, no record", toShow, 100, 100)
            .Then({Shots(kOther, kNewShow, kShow), kNoRecords}, stop + "reload;").FailsAfter(2),
        Row("old not in the store", toShow, 402).Given({Shots(kOther)}).Then(Edited(kNewShow), "reload;"),
        Row("neither can be stored", Edit(kShow, kNewShow.With(&Plan::id, "x@1")), 101, 101, 101)
            .Given({Records(Replaced(kShow.In(kRecord), "7@474", "x"))}).Then({kNoRecords}),
    }, kNow);
}

TEST_F(UserDefineTest, EditsRules)
{
    // The one-shot schedule that the rule made last, its service number kept as text.
    std::string const made = Replaced(kWeekly.In(kShot), "'service_id':9", "'service_id':'9'");
    std::string const rule = Replaced(kWeekly.In(kRule), "createtime':0", "createtime':" + kWeekly.In("BEGIN"));
    std::string const toShow = Edit(kWeekly, kNewShow);
    Plan const during{kWeekly.date, kWeekly.time, kWeekly.length, "During", kWeekly.id};
    Plan const later{"2025-07-01", "20:30", "01:00", "Later", "7@474", "0,0,1,0,0,0,1", "2025-08-01", "true"};
    Plan const moved = kWeekly.With(&Plan::time, "18:10"), ended = later.With(&Plan::end, "2025-06-30");
    Plan const badId = kNewShow.With(&Plan::id, "x@1"), off = kNewRule.With(&Plan::days, "1,0,0,0,0,0,0");
    Plan const last38 = kNewRule.With(&Plan::date, "2038-01-15").With(&Plan::end, "2999-01-01");
    Files const restored = {Shots(kOther), Rules(kWeekly), Records(kWeekly)};
    Check({Shots(made, kOther), Rules(rule), Records(kWeekly)}, {
        Row("to one-shot", toShow).Then({Shots(kOther, kNewShow), Rules(), Records(kNewShow)}, "reload;"),
        Row("to rule", Edit(kWeekly, kNewRule)).Then(Edited(kNewRule), "reload;"),
        Row("its own time", Edit(kWeekly, during)).Then({Shots(kOther, during), Rules(), Records(during)}, "reload;"),
        Row("no other one-shot is left", Edit(kWeekly, moved)).Given({Shots(made)})
            .Then({{kOneShot, "null\n"}, Rules(moved), Records(moved)}, "reload;"),
        Row("a recording that runs counts", Edit(kWeekly, during), 405).Given({Shots(Replaced(made, ":4,", ":2,"))}),
        Row("another channel counts", Edit(kWeekly, during), 405).Given({Shots(Replaced(made, "500", "501"))}),
        Row("the second day of the rule hits kOther", Edit(kWeekly, later), 405),
        Row("no day of an ended rule is tested", Edit(kWeekly, ended)).Then(Edited(ended), "reload;"),
        Row("no rule in the store", toShow).Given({Rules()})
            .Then({Shots(made, kOther, kNewShow), Rules(), Records(kNewShow)}, "reload;"),
        Row("one-shot file not saved", toShow, 100).Given({{kOneShot + kInTheWay, "x"}})
            .Logs(kLog + "1325 Fail to save schedule json. Path is " + PathOf(kOneShot)),
        Row("rule not deleted: both stay", toShow, 100).Given({{kRepeat + kInTheWay, "x"}})
            .Then({Shots(kOther, kNewShow), Records(kWeekly, kNewShow)}, "reload;")
            .Logs(kLog + "1051 Fail to save repeat schedule json. Path is " + PathOf(kRepeat)),
        Row("restored afresh", Edit(kWeekly, off), 101).Then(restored, "reload;"),
        Row("id no channel: restored", Edit(kWeekly, badId), 101).Then(restored, "reload;"),
        Row("to the end of time", Edit(kWeekly, last38)).Then(Edited(last38), "reload;"),
    }, kNow);
}

TEST_F(UserDefineTest, DeletesSchedulesAndTheirRecords)
{
    std::string const a = kShow.In("BEGIN"), b = kWeekly.In("BEGIN"), stop = "stop 0 " + a + " 474 7;reload;";
    std::string const del = "method=delete_userdefine&tuner=0&id=";
    std::string const other = OfTuner1(kShow), none = Replaced(other, ":1,", ":-1,");
    Files const noShow = {Shots(), Records(kWeekly, other)};
    Check({Shots(kShow), Rules(kWeekly), Records(kShow, kWeekly, other)}, {
        Row("both kinds, one reload", del + a + "," + b).Then({Shots(), Rules(), Records(other)}, stop),
        Row("none named", del + "5,x").Then({Records(kShow, kWeekly, other)}, "reload;"),
        Row("one of two", del + "5," + a).Then(noShow, stop),
        Row("one twice", del + a + "," + a, 402).Then(noShow, stop),
        Row("no id", del, 101),
        Row("broken file", del + a).Given({{kUserDefine, "["}}).Then({}, "reload;"),
        Row("no tuner", "method=delete_userdefine&id=" + a, 101),
        Row("failed deletes lose their records", del + a + "," + b, 402, 100).Given({{kOneShot, ""}, {kRepeat, ""}})
            .Then({Records(other)}, "reload;").Logs(kLog + "1032 Fail to load file " + PathOf(kRepeat)),
        Row("no reload", del + b, 100).Then({Rules(), Records(kShow, other)}).FailsAfter(0),
        Row("the last one", del + a).Given({Records(kShow)}).Then({Shots(), kNoRecords}, stop),
        Row("negative tuner", Replaced(del, "=0", "=-1") + a, 402).Given({Records(none)}).Then({}, "reload;"),
    }, kNow);
}

TEST_F(UserDefineTest, FillsTheForm)
{
    SetZone("Asia/Kolkata");
    Plan const now{"2025-07-01", "17:30", "00:30", "", "", "0,0,1,0,0,0,0"}, none = kWeekly.With(&Plan::length, "00:00");
    std::string const fresh = Replaced(Replaced(Replaced(now.In(kForm), "'C'", "''"), "'D.'", "''"), "'3'", "'2'");
    std::string const info = "method=getinfo_userdefine&tuner=0&start_time=";
    Check({Records(kShow, Replaced(kWeekly.In(kRecord), ":1800,", ":-1,"), OfTuner1(kOther))}, {
        Row("one-shot", info + kShow.In("BEGIN")).Answers(kShow.In(kForm)),
        Row("rule, no length", info + kWeekly.In("BEGIN")).Answers(Replaced(none.In(kForm), "'3'", "'4'")),
        Row("other tuner's", info + kOther.In("BEGIN")).Answers(fresh),
        Row("no start", "method=getinfo_userdefine&tuner=0").Answers(fresh),
        Row("start no number", info + "x", 101),
        Row("no tuner", "method=getinfo_userdefine", 101),
        Row("broken file", info + kShow.In("BEGIN")).Given({{kUserDefine, "["}}).Answers(fresh),
    }, kNow);
    seams::now = kNow + 4 * 86400;
    EXPECT_EQ(Run(info + "-5").body["data"]["weekdaystatus"].asString(), "0,0,0,0,0,0,1");
    seams::now = kNow + 5 * 86400;
    EXPECT_EQ(Run(info + "-5").body["data"]["weekdaystatus"].asString(), "1,0,0,0,0,0,0");
}

} // namespace
