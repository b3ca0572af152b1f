/// @file The method list: merge, order, page, and what an element shows.
#include "tests/support/appliance.h"

namespace {

// Tables of requests are laid out by hand.
// clang-format off

using ListTest = Appliance;

TEST_F(ListTest, OrdersAndPages)
{
    auto const records = [](std::string const& text) { // a title and a start each
        return "[{'title':'" + Replaced(Replaced(text, ",", "},{'title':'"), "=", "','start_time':") + "}]";
    };
    std::string const four = records("a=10,c=30,e=50,g=70"), three = records("b=20,d=40,f=60");
    std::string const same = records("a=10,c=10,e=-1,g=70"), more = records("b=20,d=20,f=60");
    std::string const large = Replaced(std::string(50000, 'x'), "x", "x\\"); // escapes meet every border of a block
    std::string const odd = records("\xc3(\xe2""AB\xf4\x90\x80\x80\x80""A\xed\xa0\x80\xc0\x80\xff\xc3\xa4\xc3=0");
    struct { std::string oneShots, repeats; char const* query; int code; std::string page; } const rows[] = {
        {"", "", "", 0, "0/0"},                               {"null", "null", "", 0, "0/0"},
        {"7", three, "start=-1", 403, "0/0"},                 {"", three, "", 0, "b d f 0/3"},
        {four, "{}", "", 0, "a c e g 0/4"},                   {four, "", "start=-1", 101, "0/0"},
        {four, "[{}", "", 0, "a c e g 0/4"},                  {"", "", "start=1", 101, "0/0"},
        {four, three, "start=7", 0, "a b c d e f g 7/7"},     {four, three, "start=8", 101, "0/0"}, // no limit: all
        {four, three, "start=2&limit=2", 0, "c d 2/7"},       {four, three, "start=5&limit=10", 0, "f g 5/7"},
        {four, three, "start=7&limit=2", 0, "0/0"},           {four, three, "start=1&limit=0", 0, "b 1/7"},
        {four, three, "start=x", 101, "0/0"},                 {four, three, "limit=+1", 101, "0/0"},
        {four, three, "limit=-5", 0, "a 0/7"},                {four, three, "limit=%2b1", 0, "a 0/7"},
        {four, three, "tuner=1", 0, "0/0"},                   {four, "", "tuner=x", 0, "a c e g 0/4"},
        {same, more, "", 0, "e c a d b f g 0/7"},             {four, "[7]", "", 0, "a c e g 0/4"}, // of equals the latest first
        {four, "[{'start_time':'x'}]", "", 0, " a c e g 0/5"}, {"[7]", three, "", 0, "b d f 0/3"},
        {"[{'status':[]}]", three, "", 0, " b d f 0/4"},             {"[7", three, "", 403, "0/0"}, // broken behind it, too
        {"{'x':7}", three, "", 403, "0/0"},                   {"[{'service_id':[]}]", "", "", 0, " 0/1"},
        {"[{'x':[7]}]", "", "", 0, " 0/1"},                   {records(Replaced(large, "\\", "\\\\") + "=0"), "", "", 0, large + " 0/1"},
        {odd, "", "", 0, Replaced("~(~AB~~~~~A~~~~~~\u00e4~ 0/1", "~", "\ufffd")},
    };
    for (auto const& [oneShots, repeats, query, code, page] : rows) {
        Lay({{kOneShot, oneShots}, {kRepeat, repeats}});
        Outcome const outcome = Run(std::string("method=list&") + query);
        Json::Value const& data = outcome.body["data"];
        std::string titles;
        for (Json::Value const& schedule : data["schedules"]) { titles += schedule["title"].asString() + ' '; }
        SCOPED_TRACE(oneShots + repeats + query);
        EXPECT_EQ(titles + data["start"].asString() + '/' + data["total"].asString(), page);
        EXPECT_EQ(outcome.codes, std::vector<int>(code == 0 ? 0 : 1, code));
    }
}

/// The merge is only seen whole from inside: this recording service lists no members of its own.
struct Merge : ScheduleRecordingAPI { using ScheduleRecordingAPI::MergeSchedules; };

TEST_F(ListTest, LeavesForeignMembersAtTheirPosition)
{
    Json::Value repeat = Parsed("[{'start_time':1,'title':'c','id':1,'frequency':2,'extra':'C'}]"), view;
    view["schedules"] = Parsed("[{'start_time':9,'title':'a','extra':'A'},{'start_time':3,'title':'b'}]");
    Merge().MergeSchedules(view, repeat);
    std::string text;
    for (Json::Value const& schedule : view["schedules"]) {
        text += schedule["title"].asString() + schedule["extra"].asString() + std::to_string(schedule.size()) + ' ';
    }
    EXPECT_EQ(text, "cA9 b8 a8 ");
}

TEST_F(ListTest, TurnsRawStatusIntoViewStatus)
{
    std::string records, views;
    for (int raw = -1; raw <= 24; ++raw) { records += "{'status':" + std::to_string(raw) + "},"; }
    Lay({{kRepeat, "[" + records + "{}]"}});
    Json::Value const data = Run("method=list").body["data"];
    for (Json::Value const& schedule : data["schedules"]) { views += schedule["status"].asString() + ' '; }
    EXPECT_EQ(views, "0 0 15 0 14 13 12 0 0 11 10 9 8 7 6 5 11 4 0 0 0 1 3 2 0 0 0 "); // the latest first
}

} // namespace
