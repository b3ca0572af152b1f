/// @file Who may pass, which method runs, and how requests come in and answers go out.
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include "frame/privilege.h"

#include <filesystem>

namespace {

// Tables of requests are laid out by hand.
// clang-format off

std::string const kHeaders = "Content-Type: application/json; charset=utf-8\r\n\r\n";
constexpr char kEmptyList[] = "{'schedules':[],'start':0,'total':0}";

using FrameTest = Appliance;

TEST_F(FrameTest, DecidesWhoMayAskBeforeAnyMethodRuns)
{
    std::string const list = "method=list", path = PathOf(kUsers), deep(100000, '[');
    std::string const noParse = "privilege:70 failed to parse json file[" + path + "]";
    std::vector<Row> rows = {
        Row("administrator, broken privileges", list).Given({{kUsers, "{"}}).Answers(kEmptyList),
        Row("granted", list).As("viewer").Answers(kEmptyList),
        Row("no method", "", 105).As("guest"),
        Row("no file", list, 105).As("viewer").Given({{kUsers, ""}}),
        Row("file is a number", list, 105).As("viewer").Given({{kUsers, "7"}}),
        Row("file is an array", list, 105).As("viewer").Given({{kUsers, "[1,2]"}}),
        Row("broken behind the entry", "").As("viewer").Given({{kUsers, "{'1026':{'dtv':true},"}}).Logs(noParse),
        Row("nested deep", "", 105).As("viewer").Given({{kUsers, "{'1026':{'dtv':true,'x':" + deep}}).Logs(noParse),
        Row("no account", list, 100, 105).As("nobody"),
        Row("uid 0 granted", list, 100).As("nobody").Given({{kUsers, "{'0':{'dtv':true}}"}}).Answers(kEmptyList),
        Row("no login, shared link", list + "&sharing_id=x", 106).As(""),
        Row("locked", list, 107).As("locked"),
    };
    for (char const* user : {"guest", "number", "text", "noobject", "noentry"}) {
        rows.push_back(Row("stores stay", "method=delete&tuner=0", 105).As(user));
    }
    Check({{kUsers, "{'1026':{'dtv':true},'1027':{'sharing':true},'2':{'dtv':1},'3':{'dtv':'true'},'4':1}"},
           {"/etc/passwd", "viewer:x:1026:1::/:\nguest:x:1027:1::/:\nlocked:!x:9:1::/:\nnumber:x:2:1::/:\n"
                           "text:x:3:1::/:\nnoobject:x:4:1::/:\nnoentry:x:5:1::/:\n"}}, rows);
    Remove(kUsers);
    ASSERT_EQ(::symlink("users.conf", path.c_str()), 0); // a loop: access fails, not ENOENT
    seams::logged.clear();
    EXPECT_EQ(Run(Request{.query = "", .user = "viewer"}).codes, std::vector{105});
    EXPECT_EQ(seams::logged.at(0).text,
              "privilege:61 failed to access config file [" + path + "] Too many levels of symbolic links");
}

TEST_F(FrameTest, WritesPrivilegesWhenTheFileObjectGoes)
{
    {
        PrivilegeFile file;
        file.SetPrivilege(7, "dtv", true);
        file.SetPrivilege(1026, "dtv", false);
        EXPECT_TRUE(file.GetPrivilege(7, "dtv"));
        EXPECT_EQ(Read(kUsers), R"({"1026":{"dtv":true}})");
    }
    EXPECT_EQ(Read(kUsers), "{\"1026\":{\"dtv\":false},\"7\":{\"dtv\":true}}\n");
}

TEST_F(FrameTest, RunsTheNamedMethod)
{
    Check({}, {
        Row("in capitals", "method=LIST").Answers(kEmptyList),
        Row("the first counts", "method=list&method=nonsense").Answers(kEmptyList),
        Row("text ends at NUL", "method=list%00x").Answers(kEmptyList),
        Row("broken escapes", "method=list&%=%&%zz=%4&&=&=x").Answers(kEmptyList),
        Row("a key without =", "method=list&limit", 101).Answers(kEmptyList),
    });
    Check({}, Variants("method=list", {}, {{"method=list", ""}, {"list", "lis"}, {"list", "lists"}, {"me", "ME"}}));
}

TEST_F(FrameTest, ReadsFormsFromBodies)
{
    std::string const list = "{\"data\":{\"schedules\":[],\"start\":0,\"total\":0},\"success\":true}\n";
    std::string const bad = "{\"error\":{\"code\":101},\"success\":false}\n", done = "{\"success\":true}\n";
    static std::string const form = "method=list", urlencoded = "application/x-www-form-urlencoded";
    struct { std::string answer, length, body = form, type = urlencoded, query = "", method = "POST"; } const rows[] = {
        {list, "11"},                 {list, "11", form, "Application/X-WWW-Form-URLencoded; charset=x"},
        {list, "11", form + "xxx"},   {list, "15", "method=nonsense", urlencoded, form}, // the query string first
        {done, "11", form, "text/x"}, {done, "11", form, urlencoded, "", "GET"}, {done, ""}, {bad, "12"}, {bad, "11x"},
        {bad, "-1"}, {bad, "999999999999"}, {bad, "99999999999999999999999"},
        {list, "1048576", form + std::string(1048565, '&')}, {bad, "1048577", form + std::string(1048566, '&')},
    };
    for (auto const& [answer, length, body, type, query, method] : rows) {
        EXPECT_EQ(Run({query, "admin", method, body, length, type}).raw, kHeaders + answer) << length;
    }
}

/// A class of the package that serves shared links. It writes down what it was asked.
struct SharingApi : Tremolane::VideoWebAPI {
    void Process() override { asked += CheckSharing() ? "Process " : "?"; asked += std::to_string(m_sharingState); }
    bool SupportsSharing() override { asked += "Supports "; return true; }
    bool IsSharingIdValid(std::string const& id) override { asked += "Id "; return id == "good"; }
    static inline std::string asked;
};

TEST_F(FrameTest, LetsValidSharedLinksPassWhereTheyAreServed)
{
    struct { char const* query; char const* user; std::vector<int> codes; char const* asked; } const rows[] = {
        {"sharing_id=good", "", {}, "Supports Id Process 1"},      {"sharing_id=bad", "", {106}, "Supports Id "},
        {"sharing_id=good", "locked", {}, "Supports Id Process 1"}, {"sharing_id=bad", "locked", {107}, "Supports Id "},
        {"sharing_id=good", "admin", {}, "Supports Id Process 1"}, {"sharing_id=", "", {106}, "Supports "},
        {"", "", {106}, "Supports "},
    };
    for (auto const& [query, user, codes, asked] : rows) {
        SharingApi::asked.clear();
        EXPECT_EQ(Run<SharingApi>({.query = query, .user = user}).codes, codes) << query << user;
        EXPECT_EQ(SharingApi::asked, asked) << query << user;
    }
}

/// The bare answer and the privileges that only other classes of the package ask for.
struct OtherApi : Tremolane::VideoWebAPI {
    void Process() override
    {
        Json::Value answer;
        answer["sharing"] = IsAllowSharing();
        answer["renderer"] = IsAllowRenderer();
        answer["text"] = "\xc3\xa4\xf0\x9f\x98\x80\xff\xed\xa0\x80\xc0\x80\xc3(\xf4\x90\x80\x80\x01"; // then no UTF-8
        SetResponse(answer);
        SendNotFoundPage();
    }
};

TEST_F(FrameTest, OffersTheRestToOtherClasses)
{
    Write(kUsers, R"({"1027":{"sharing":true}})");
    EXPECT_EQ(Run<OtherApi>({.query = "", .user = "guest"}).raw,
              "Cache-control: no-store\r\nStatus: 404 Not Found\r\n\r\n" + kHeaders +
              "{\"data\":{\"renderer\":false,\"sharing\":true,"
              "\"text\":\"\\u00e4\\ud83d\\ude00" + Replaced("~~~~~~~(~~~~", "~", "\\ufffd") +
              "\\u0001\"},\"success\":true}\n");
}

TEST_F(FrameTest, WithstandsHostileInput)
{
    std::string const list = "method=list&tuner=0", create = "method=create&id=7&start_time=5&tuner=";
    std::string many = list, deep(100000, '[');
    for (int i = 0; i < 10000; ++i) { many += "&p" + std::to_string(i) + "=1"; }
    struct { std::string query; std::vector<int> codes; Files before = {}; } const rows[] = {
        {"method=list%0d%0aX-Y:%20z&tuner=0%0d%0aX-Y:%20z", {}}, {"method=create&tuner=0&start_time=5&id=%0d%0a%0d%0a", {101}},
        {"method=list%00&tuner=0%00../x", {}}, {create + "0&id%00=8", {}}, {many, {}},
        {Replaced(create, "id=7", "id=" + std::string(500000, '7')) + "0", {101}}, {create + std::string(20, '9'), {}},
        {create + "../../../../etc/x", {}}, {create + "0", {406}, {{kFolders, deep}}}, {create + "0", {403}, {{kOneShot, deep}}},
        {"method=delete_repeat&tuner=0&id=5&channel_id=7", {100}, {{kRepeat, deep}}}, {create + "0", {}, {{kUserDefine, deep}}},
        {create + "0", {406}, {{kFolders, R"([{"section":"tv_record","share":"../../etc/passwd","subpath":".."}])"}}},
    };
    for (auto const& [query, codes, before] : rows) {
        Reset();
        for (auto const& [path, text] : before) { Write(path, text); }
        Outcome const outcome = Run(query);
        EXPECT_EQ(outcome.codes, codes) << query.substr(0, 99);
        EXPECT_TRUE(outcome.raw.starts_with("Content-Type: application/json; charset=utf-8\r\n\r\n{")) << outcome.raw;
        EXPECT_EQ(outcome.raw.rfind('\r'), sizeof "Content-Type: application/json; charset=utf-8\r\n" - 1) << outcome.raw;
    }
    for (std::string const& link : {std::string(kOneShot), kOneShot + std::string(".tmp")}) {
        Reset();
        Write("/target", "[]");
        std::filesystem::permissions(PathOf("/target"), std::filesystem::perms::owner_read);
        std::filesystem::create_symlink(PathOf("/target"), PathOf(link));
        bool const isStore = link == kOneShot;
        EXPECT_EQ(Run(create + "0").codes, isStore ? std::vector<int>{} : std::vector{403});
        EXPECT_EQ(Read("/target"), "[]");
        EXPECT_EQ(std::filesystem::is_regular_file(std::filesystem::symlink_status(PathOf(kOneShot))), isStore);
        EXPECT_EQ(std::filesystem::status(PathOf(kOneShot)).permissions() == std::filesystem::perms::owner_read, isStore);
    }
}

} // namespace
