/// @file The method list: merge, order, page, and what an element shows.
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include <algorithm>

namespace {

// Tables of requests are laid out by hand.
// clang-format off

constexpr char kEmpty[] = R"({"schedules":[],"start":0,"total":0})";

using ListTest = Appliance;

/// Records whose titles tell them apart, one for each start time.
std::string Records(std::vector<int> const& starts, std::string const& title,
                    std::string const& members)
{
    Json::Value records(Json::arrayValue);
    for (int const start : starts) {
        Json::Value record = Parsed("{" + members + "}");
        record["start_time"] = start;
        record["title"] = title + std::to_string(records.size());
        records.append(record);
    }
    return records.toStyledString();
}

std::string OneShots(std::vector<int> const& starts)
{
    return Records(starts, "o", R"("service_id":7,"status":4)");
}

std::string Repeats(std::vector<int> const& starts)
{
    return Records(starts, "r", R"("id":9,"status":19)");
}

/// A page in short: the titles, the start and the total.
std::string Page(Outcome const& outcome)
{
    Json::Value const& data = outcome.body["data"];
    std::string text;
    for (Json::Value const& schedule : data["schedules"]) {
        text += schedule["title"].asString() + ' ';
    }
    return text + data["start"].asString() + '/' + data["total"].asString();
}

TEST_F(ListTest, OrdersAndPages)
{
    std::string const seven = OneShots({10, 30, 50, 70});
    std::string const three = Repeats({20, 40, 60});
    struct {
        char const* name;
        std::string oneShots, repeats;
        char const* query;
        std::vector<int> codes;
        char const* page;
    } const rows[] = {
        {"nothing", "", "", "", {}, "0/0"},
        {"nothing, null files", "null", "null", "", {}, "0/0"},
        {"nothing, start out of range", "", "", "start=1", {101}, "0/0"},
        {"nothing, start negative", "", "", "start=-1", {101}, "0/0"},
        {"whole", seven, three, "", {}, "o0 r0 o1 r1 o2 r2 o3 0/7"},
        {"one-shot only", seven, "", "", {}, "o0 o1 o2 o3 0/4"},
        {"repeat only", "", three, "", {}, "r0 r1 r2 0/3"},
        {"repeat file broken", seven, "[", "", {}, "o0 o1 o2 o3 0/4"},
        {"repeat file no array", seven, "{}", "", {}, "o0 o1 o2 o3 0/4"},
        {"one-shot file broken", "[", three, "", {403}, "0/0"},
        {"one-shot file no array", "7", three, "start=-1", {403}, "0/0"},
        {"whole list whatever start", seven, three, "start=3", {}, "o0 r0 o1 r1 o2 r2 o3 3/7"},
        {"page", seven, three, "start=2&limit=2", {}, "o1 r1 2/7"},
        {"page beyond the end", seven, three, "start=5&limit=10", {}, "r2 o3 5/7"},
        {"page at the end", seven, three, "start=7&limit=2", {}, "0/0"},
        {"start at the end, no limit", seven, three, "start=7", {}, "o0 r0 o1 r1 o2 r2 o3 7/7"},
        {"start behind the end", seven, three, "start=8", {101}, "0/0"},
        {"start negative", seven, three, "start=-1", {101}, "0/0"},
        {"limit 1", seven, three, "start=1&limit=1", {}, "r0 1/7"},
        {"limit 0", seven, three, "start=1&limit=0", {}, "r0 1/7"},
        {"limit below -1", seven, three, "limit=-5", {}, "o0 0/7"},
        {"start no number", seven, three, "start=x", {101}, "0/0"},
        {"limit no number", seven, three, "limit=", {101}, "0/0"},
        {"limit beyond 32 bits", seven, three, "limit=2147483648", {101}, "0/0"},
        {"another tuner", seven, three, "tuner=1", {}, "0/0"},
        {"tuner no number", seven, three, "tuner=x", {}, "o0 r0 o1 r1 o2 r2 o3 0/7"},
        {"tuner of twenty digits", seven, three, "tuner=12345678901234567890", {}, "0/0"},
        {"equal starts, latest first", OneShots({5, 5, 5}), Repeats({5, 5}), "", {},
         "r1 r0 o2 o1 o0 0/5"},
        {"negative start first", OneShots({1, -1}), Repeats({0}), "", {}, "o1 r0 o0 0/3"},
        {"repeat start a text", seven, R"([{"start_time":"x"}])", "", {100}, "/"},
        {"repeat record no object", seven, "[7]", "", {100}, "/"},
        {"one-shot record no object", "[7]", three, "", {100}, "/"},
        {"one-shot status a list", R"([{"status":[]}])", three, "", {100}, "/"},
    };
    for (auto const& row : rows) {
        SCOPED_TRACE(row.name);
        Reset();
        Write(kOneShot, row.oneShots);
        Write(kRepeat, row.repeats);
        if (row.oneShots.empty()) { Remove(kOneShot); }
        if (row.repeats.empty()) { Remove(kRepeat); }
        Outcome const outcome = Run(std::string("method=list&") + row.query);
        EXPECT_EQ(outcome.codes, row.codes);
        EXPECT_EQ(Page(outcome), row.page);
    }
    Write(kOneShot, std::string(100000, '['));
    Write(kRepeat, std::string(100000, '['));
    EXPECT_EQ(Run("method=list").raw,
              "Content-Type: application/json; charset=utf-8\r\n\r\n{\"data\":{\"schedules\":[],"
              "\"start\":0,\"total\":0},\"error\":{\"code\":403},\"success\":false}\n");
}

TEST_F(ListTest, ShowsElements)
{
    Zone const zone("Europe/Berlin");
    std::string const longId(200, '7');
    Check({}, {
        {.name = "every member", .query = "method=list",
         .data = R"({"start":0,"total":4,"schedules":[
            {"start_time":0,"channel_name":"","description":"","duration":0,"id":"","title":"",
             "status":0,"primeid":"0..0","is_userdefine":false,"start":"1970/01/01 01:00","weekday":4},
            {"start_time":1735686300,"channel_name":"Eins","description":"d","duration":60,"id":"8@474",
             "title":"T","status":13,"primeid":"1735686300.8@474.20","is_userdefine":false,
             "start":"2025/01/01 00:05","weekday":3},
            {"start_time":1752000000,"channel_name":"","description":"","duration":0,"id":"9","title":"",
             "status":0,"primeid":"1752000000.9.0","is_userdefine":false,
             "start":"2025/07/08 20:40","weekday":2},
            {"start_time":1752000001,"channel_name":"Zwei","description":"e","duration":90,"id":"5@6",
             "title":"U","status":1,"primeid":"1752000001.5@6.4","is_userdefine":false,
             "start":"2025/07/08 20:40","weekday":2}]})",
         .before = {{kOneShot, R"([{"start_time":1752000001,"service_id":"5","frequency":6,"status":4,
            "channel_name":"Zwei","title":"U","description":"e","duration":90,"uid":"1"},{}])"},
            {kRepeat, R"([{"start_time":1735686300,"id":8,"frequency":474,"status":20,"duration":60,
            "channel_name":"Eins","title":"T","description":"d","uid":"1"},
            {"start_time":1752000000,"id":9,"frequency":"474"}])"}}},
        {.name = "primeid cut", .query = "method=list",
         .data = R"({"start":0,"total":1,"schedules":[{"start_time":1,"channel_name":"",
            "description":"","duration":0,"id":")" + longId + R"(","title":"","status":0,"primeid":"1.)" +
            std::string(125, '7') + R"(","is_userdefine":false,"start":"1970/01/01 01:00","weekday":4}]})",
         .before = {{kOneShot, R"([{"start_time":1,"service_id":")" + longId + "\"}]"}}},
        {.name = "neither source", .query = "method=list", .data = kEmpty},
    });
}

/// The merge is only seen whole from inside: this recording service lists no members of its own.
struct Merge : ScheduleRecordingAPI {
    static std::string Of(char const* listed, char const* repeats)
    {
        Json::Value view;
        Json::Value repeat = Parsed(repeats);
        view["schedules"] = Parsed(listed);
        Merge().MergeSchedules(view, repeat);
        std::string text;
        for (Json::Value const& schedule : view["schedules"]) {
            text += schedule["title"].asString() + schedule["extra"].asString() + ' ' +
                    std::to_string(schedule.size()) + ';';
        }
        return text;
    }
};

TEST_F(ListTest, LeavesForeignMembersAtTheirPosition)
{
    EXPECT_EQ(Merge::Of(R"([{"start_time":9,"title":"a","extra":"A"},{"start_time":3,"title":"b"}])",
                        R"([{"start_time":1,"title":"c","id":1,"frequency":2,"extra":"C"}])"),
              "cA 9;b 8;a 8;");
    EXPECT_EQ(Merge::Of("null", R"([{"title":"c"}])"), "c 8;");
}

TEST_F(ListTest, TurnsRawStatusIntoViewStatus)
{
    constexpr int kView[] = {0, 0, 2, 3, 1, 0, 0, 0, 4, 11, 5, 6, 7, 8, 9, 10, 11, 0, 0, 12, 13, 14, 0, 15, 0};
    for (int raw = -1; raw <= 24; ++raw) {
        Write(kOneShot, R"([{"status":)" + std::to_string(raw) + "}]");
        EXPECT_EQ(Run("method=list").body["data"]["schedules"][0]["status"].asInt(),
                  raw < 0 ? 0 : kView[raw]) << raw;
    }
}

TEST_F(ListTest, MarksUserDefinedSchedules)
{
    struct {
        int raw;
        char const* record;
        bool marked;
    } const rows[] = {
        {4, R"({"start_time":5,"tuner":0,"is_repeat":false})", true},
        {4, R"({"start_time":5,"tuner":0,"is_repeat":true})", false},
        {19, R"({"start_time":5,"tuner":0,"is_repeat":true})", true},
        {20, R"({"start_time":5,"tuner":0,"is_repeat":true})", true},
        {19, R"({"start_time":5,"tuner":0,"is_repeat":false})", true},
        {21, R"({"start_time":5,"tuner":0,"is_repeat":true})", false},
        {4, R"({"start_time":5,"tuner":1,"is_repeat":false})", false},
        {4, R"({"start_time":6,"tuner":0,"is_repeat":false})", false},
        {4, R"({"start_time":5,"tuner":0,"is_repeat":false},{"start_time":5,"tuner":0,"is_repeat":true})", true},
    };
    for (auto const& row : rows) {
        Write(kOneShot, R"([{"start_time":5,"status":)" + std::to_string(row.raw) + "}]");
        Write(kUserDefine, std::string("[{},") + row.record + "]");
        EXPECT_EQ(Run("method=list").body["data"]["schedules"][0]["is_userdefine"].asBool(), row.marked)
            << row.raw << row.record;
    }
}

TEST_F(ListTest, ParsesTheUserDefinedFileOnceForAPage)
{
    Write(kOneShot, OneShots(std::vector<int>(10000, 5)));
    Write(kUserDefine, R"([{"start_time":5,"tuner":0,"is_repeat":false}])");
    seams::opened.clear();
    EXPECT_EQ(Run("method=list").body["data"]["schedules"].size(), 10000U);
    EXPECT_EQ(std::ranges::count(seams::opened, PathOf(kUserDefine)), 1);
}

} // namespace
