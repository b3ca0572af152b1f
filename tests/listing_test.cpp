/// @file The method list: merge, order, page, and what an element shows.
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include <algorithm>

namespace {

// Tables of requests are laid out by hand.
// clang-format off

using ListTest = Appliance;

/// Records whose titles tell them apart, one for each start time.
std::string Records(std::vector<int> const& starts, std::string const& title, std::string const& rest)
{
    std::vector<std::string> records;
    for (int const start : starts) {
        std::string const number = std::to_string(records.size());
        records.push_back("{'start_time':" + std::to_string(start) + ",'title':'" + title + number + "'," + rest + "}");
    }
    return List(records);
}
std::string OneShots(std::vector<int> const& starts) { return Records(starts, "o", "'service_id':7,'status':4"); }
std::string Repeats(std::vector<int> const& starts) { return Records(starts, "r", "'id':9,'status':19"); }

/// A page in short: the titles, the start and the total.
std::string Page(Outcome const& outcome)
{
    Json::Value const& data = outcome.body["data"];
    std::string text;
    for (Json::Value const& schedule : data["schedules"]) { text += schedule["title"].asString() + ' '; }
    return text + data["start"].asString() + '/' + data["total"].asString();
}

TEST_F(ListTest, OrdersAndPages)
{
    std::string const seven = OneShots({10, 30, 50, 70}), three = Repeats({20, 40, 60}), deep(100000, '[');
    struct { std::string oneShots, repeats; char const* query; int code; char const* page; } const rows[] = {
        {"", "", "", 0, "0/0"},                             {"null", "null", "", 0, "0/0"},
        {"", "", "start=1", 101, "0/0"},                    {"", "", "start=-1", 101, "0/0"},
        {seven, "", "", 0, "o0 o1 o2 o3 0/4"},              {"", three, "", 0, "r0 r1 r2 0/3"},
        {seven, "[", "", 0, "o0 o1 o2 o3 0/4"},             {seven, "{}", "", 0, "o0 o1 o2 o3 0/4"},
        {"[", three, "", 403, "0/0"},                       {"7", three, "start=-1", 403, "0/0"},
        {deep, deep, "", 403, "0/0"},                       {seven, deep, "", 0, "o0 o1 o2 o3 0/4"},
        {seven, three, "start=3", 0, "o0 r0 o1 r1 o2 r2 o3 3/7"}, // no limit: the whole list
        {seven, three, "start=7", 0, "o0 r0 o1 r1 o2 r2 o3 7/7"}, {seven, three, "start=8", 101, "0/0"},
        {seven, three, "start=2&limit=2", 0, "o1 r1 2/7"},  {seven, three, "start=5&limit=10", 0, "r2 o3 5/7"},
        {seven, three, "start=7&limit=2", 0, "0/0"},        {seven, three, "start=-1", 101, "0/0"},
        {seven, three, "start=1&limit=0", 0, "r0 1/7"},     {seven, three, "start=x", 101, "0/0"},
        {seven, three, "limit=-5", 0, "o0 0/7"},            {seven, three, "limit=%2b1", 0, "o0 0/7"},
        {seven, three, "limit=+1", 101, "0/0"},             {seven, three, "tuner=12345678901234567890", 0, "0/0"},
        {seven, three, "limit=", 101, "0/0"},               {seven, three, "limit=2147483648", 101, "0/0"},
        {seven, three, "tuner=1", 0, "0/0"},                {seven, three, "tuner=x", 0, "o0 r0 o1 r1 o2 r2 o3 0/7"},
        {OneShots({5, 5, 5}), Repeats({5, 5}), "", 0, "r1 r0 o2 o1 o0 0/5"}, // of equal starts the latest first
        {OneShots({1, -1}), Repeats({0}), "", 0, "o1 r0 o0 0/3"},
        {seven, "[{'start_time':'x'}]", "", 100, "/"},      {seven, "[7]", "", 100, "/"},
        {"[7]", three, "", 100, "/"},                       {"[{'status':[]}]", three, "", 100, "/"},
    };
    for (auto const& [oneShots, repeats, query, code, page] : rows) {
        SCOPED_TRACE(oneShots.substr(0, 9) + repeats.substr(0, 9) + query);
        Lay({{kOneShot, oneShots}, {kRepeat, repeats}});
        Outcome const outcome = Run(std::string("method=list&") + query);
        EXPECT_EQ(outcome.codes, std::vector<int>(code == 0 ? 0 : 1, code));
        EXPECT_EQ(Page(outcome), page);
    }
}

TEST_F(ListTest, ShowsElements)
{
    SetZone("Europe/Berlin");
    std::string const longId(200, '7');
    std::string const rest = "'channel_name':'','title':'','description':'','duration':0,'status':0,'is_userdefine':false}";
    Check({}, {
        Row("every member", "method=list").Given(
            {{kOneShot, "[{'start_time':1752000001,'service_id':'5','frequency':6,'status':4,'duration':90,"
                        "'channel_name':'Zwei','title':'U','description':'e','uid':'1'},{'frequency':'6'}]"},
             {kRepeat, "[{'start_time':1735686300,'id':8,'frequency':474,'status':20,'duration':60,'channel_name':'Eins',"
                       "'title':'T','description':'d','uid':'1'},{'start_time':1752000000,'id':9,'frequency':'474'}]"}})
            .Answers("{'start':0,'total':4,'schedules':["
            "{'start_time':0,'id':'','primeid':'0..0','start':'1970/01/01 01:00','weekday':4," + rest + ","
            "{'start_time':1735686300,'id':'8@474','primeid':'1735686300.8@474.20','start':'2025/01/01 00:05','weekday':3,"
            "'channel_name':'Eins','title':'T','description':'d','duration':60,'status':13,'is_userdefine':false},"
            "{'start_time':1752000000,'id':'9','primeid':'1752000000.9.0','start':'2025/07/08 20:40','weekday':2," + rest +
            ",{'start_time':1752000001,'id':'5@6','primeid':'1752000001.5@6.4','start':'2025/07/08 20:40','weekday':2,"
            "'channel_name':'Zwei','title':'U','description':'e','duration':90,'status':1,'is_userdefine':false}]}"),
        Row("a folder there", "method=list", 403).Given({{std::string(kOneShot) + "/x", "x"}})
            .Answers("{'start':0,'total':0,'schedules':[]}"),
        Row("primeid cut", "method=list").Given({{kOneShot, "[{'start_time':1,'service_id':'" + longId + "'}]"}})
            .Answers("{'start':0,'total':1,'schedules':[{'start_time':1,'id':'" + longId + "','primeid':'1." +
                     longId.substr(75) + "','start':'1970/01/01 01:00','weekday':4," + rest + "]}"),
    });
}

/// The merge is only seen whole from inside: this recording service lists no members of its own.
struct Merge : ScheduleRecordingAPI {
    using ScheduleRecordingAPI::MergeSchedules;
};

TEST_F(ListTest, LeavesForeignMembersAtTheirPosition)
{
    for (auto const& [listed, repeats, merged] : {std::tuple{"null", "[{'title':'c'}]", "c8 "},
             {"[{'start_time':9,'title':'a','extra':'A'},{'start_time':3,'title':'b'}]",
              "[{'start_time':1,'title':'c','id':1,'frequency':2,'extra':'C'}]", "cA9 b8 a8 "}}) {
        Json::Value view, repeat = Parsed(repeats);
        view["schedules"] = Parsed(listed);
        Merge().MergeSchedules(view, repeat);
        std::string text;
        for (Json::Value const& schedule : view["schedules"]) {
            text += schedule["title"].asString() + schedule["extra"].asString() + std::to_string(schedule.size()) + ' ';
        }
        EXPECT_EQ(text, merged);
    }
}

TEST_F(ListTest, TurnsRawStatusIntoViewStatus)
{
    int raw = -1;
    for (int const view : {0, 0, 0, 2, 3, 1, 0, 0, 0, 4, 11, 5, 6, 7, 8, 9, 10, 11, 0, 0, 12, 13, 14, 0, 15, 0}) {
        Lay({{kOneShot, "[{'status':" + std::to_string(raw++) + "}]"}});
        EXPECT_EQ(Run("method=list").body["data"]["schedules"][0]["status"].asInt(), view) << raw;
    }
}

TEST_F(ListTest, MarksUserDefinedSchedules)
{
    std::string const once = "{'start_time':5,'tuner':0,'is_repeat':false}", rule = Replaced(once, "false", "true");
    for (auto const& [raw, record, isMarked] : {std::tuple{"4", once, true}, {"4", rule, false},
             {"4", Replaced(once, "0", "1"), false}, {"4", Replaced(once, "5", "6"), false},
             {"4", once + "," + rule, true}, {"19", once, true}, {"19", rule, true}, {"20", rule, true},
             {"21", rule, false}}) {
        Lay({{kOneShot, std::string("[{'start_time':5,'status':") + raw + "}]"}, {kUserDefine, "[" + record + ",{}]"}});
        EXPECT_EQ(Run("method=list").body["data"]["schedules"][0]["is_userdefine"].asBool(), isMarked) << raw << record;
    }
    Lay({{Replaced(kOneShot, "0dtv", "1dtv"), "[{'start_time':5}]"}, {kUserDefine, "[{'start_time':5,'tuner':1}]"}});
    EXPECT_TRUE(Run("method=list&tuner=1").body["data"]["schedules"][0]["is_userdefine"].asBool());
}

TEST_F(ListTest, ParsesTheUserDefinedFileOnceForAPage)
{
    Lay({{kOneShot, OneShots(std::vector<int>(10000, 5))}, {kUserDefine, "[{'start_time':5,'tuner':0}]"}});
    seams::opened.clear();
    EXPECT_EQ(Run("method=list").body["data"]["schedules"].size(), 10000U);
    EXPECT_EQ(std::ranges::count(seams::opened, PathOf(kUserDefine)), 1);
}

} // namespace
