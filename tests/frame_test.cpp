/// @file Who may pass, which method runs, how requests come in, answers go out and failures end.
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include "frame/privilege.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <filesystem>

namespace {

// Tables of requests are laid out by hand.
// clang-format off

std::string const kHeaders = "Content-Type: application/json; charset=utf-8\r\n\r\n";

using FrameTest = Appliance;

TEST_F(FrameTest, WritesPrivilegesWhenTheFileObjectGoes)
{
    {
        PrivilegeFile file;
        file.SetPrivilege(7, "dtv", true);
        file.SetPrivilege(1026, "dtv", false);
        EXPECT_EQ(Read(kUsers), R"({"1026":{"dtv":true}})");
    }
    EXPECT_EQ(Read(kUsers), "{\"1026\":{\"dtv\":false},\"7\":{\"dtv\":true}}\n");
}

TEST_F(FrameTest, ReadsFormsFromBodies)
{
    std::string const list = "{\"data\":{\"schedules\":[],\"start\":0,\"total\":0},\"success\":true}\n";
    std::string const bad = "{\"error\":{\"code\":101},\"success\":false}\n", done = "{\"success\":true}\n";
    static std::string const form = "method=list", urlencoded = "application/x-www-form-urlencoded";
    struct { std::string answer, length, body = form, type = urlencoded, query = "", method = "POST"; } const rows[] = {
        {list, "11", form + "xxx", "Application/X-WWW-Form-URLencoded; charset=x"}, {bad, "12"}, {bad, "11x"},
        {list, "15", "method=nonsense", urlencoded, form}, {done, ""}, {done, "11", form, "text/x"}, {bad, "-1"},
        {done, "11", form, urlencoded, "", "GET"}, {bad, "99999999999999999999"},
        {list, "1048576", form + std::string(1048565, '&')}, {bad, "1048577", form + std::string(1048566, '&')},
    };
    for (auto const& [answer, length, body, type, query, method] : rows) {
        EXPECT_EQ(Run({query, "admin", method, body, length, type}).raw, kHeaders + answer) << length;
    }
}

TEST_F(FrameTest, SaysOnceThatAnAnswerIsLost)
{
    Write(kOneShot, "[{\"title\":\"" + std::string(100000, 'x') + "\"}]");
    rlimit limit, little = {20000, RLIM_INFINITY};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &limit) + ::setrlimit(RLIMIT_FSIZE, &little), 0);
    std::size_t const sent = Run("method=list").raw.size();
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    EXPECT_EQ(sent, little.rlim_cur);
    ASSERT_EQ(seams::logged.size(), 1U);
    EXPECT_EQ(seams::logged[0].text, "failed to send the answer: File too large");
}

/// A class of the package that serves shared links and asks all it can. It writes down what it was asked.
struct OtherApi : Tremolane::VideoWebAPI {
    bool SupportsSharing() override { asked += "Supports "; return true; }
    bool IsSharingIdValid(std::string const& id) override { asked += "Id "; return id == "good"; }
    void Process() override
    {
        asked += CheckSharing() ? "Process" : "?";
        Json::Value text = IsAllowSharing() && !IsAllowRenderer() ? "\xc3\xa4\xf0\x9f\x98\x80\x01\"\\" : "";
        SetResponse(text);
        SendNotFoundPage();
    }
    static inline std::string asked;
};

TEST_F(FrameTest, LetsValidSharedLinksPassWhereTheyAreServed)
{
    Write(kUsers, R"({"1027":{"sharing":true}})");
    for (auto const& [query, user, code, asked] : {std::tuple{"=good", "", 100, "Supports Id Process"},
             {"=bad", "locked", 107, "Supports Id "}, {"=good", "admin", 0, "Supports Id Process"},
             {"=bad", "", 106, "Supports Id "}, {"=", "", 106, "Supports "}}) {
        OtherApi::asked.clear();
        Outcome const outcome = Run<OtherApi>({.query = std::string("sharing_id") + query, .user = user});
        EXPECT_EQ(outcome.codes.empty() ? 0 : outcome.codes[0], code) << query << user;
        EXPECT_EQ(OtherApi::asked, asked) << query << user;
    }
    EXPECT_EQ(Run<OtherApi>({.query = "sharing_id=good", .user = "guest"}).raw, "Cache-control: no-store\r\n"
        "Status: 404 Not Found\r\n\r\n" + kHeaders + R"({"data":"\u00e4\ud83d\ude00\u0001\"\\","success":true})" "\n");
}

TEST_F(FrameTest, WritesOverNothingThatDoesNotLoad)
{
    using namespace std::literals;
    std::string const one = "method=create&tuner=0&id=7&start_time=100", deep(2000, '['), user = "{'1026':{'dtv':true,'x':";
    std::vector<Row> rows = {{.name = "nested deep", .user = "viewer", .codes = {105},
        .before = {{kUsers, user + std::string(100000, '[')}},
        .log = "privilege:70 failed to parse json file[" + PathOf(kUsers) + "]"}};
    for (auto const& text : {"[]x"s, "["s, "[{},]"s, "[]//c"s, "{}"s, "[]\0x"s, deep + Replaced(deep, "[", "]")}) {
        rows.push_back({.name = text.substr(0, 9), .query = one, .codes = {403}, .before = {{kOneShot, text}}});
    }
    Check({}, rows);
    ASSERT_EQ(::mkfifo(PathOf(Replaced(kOneShot, "0dtv", "1dtv")).c_str(), 0600), 0); // nobody waits for its writer
    EXPECT_EQ(Run("method=list&tuner=1").codes, std::vector{403});
}

TEST_F(FrameTest, RestoresTheStoredStartUnderAnotherDaylightSaving)
{
    SetZone("Europe/Berlin");
    std::string const plan = "userdefine&tuner=0&is_repeat=false&id=7&duration=01:00&start_date=2025-07-15";
    auto const edit = "method=edit_" + plan + "&start_time=20:15&orig_start_time=21:15&orig_start_date=2025-07-15";
    seams::now = 1735689600; // January: 20:15 without daylight saving is 21:15 in July
    Run("method=create_" + plan + "&start_time=20:15&channel_name=C");
    std::string const stored = Read(kOneShot) + Read(kUserDefine); // both of 1752606900
    seams::now = 1751371200;
    EXPECT_EQ(Run(edit).codes, (std::vector{101, 101}));
    EXPECT_EQ(Read(kOneShot) + Read(kUserDefine), stored);
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
        EXPECT_EQ(Run(create + "0").codes, std::vector<int>{});
        EXPECT_EQ(Read("/target"), "[]");
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(PathOf(kOneShot))));
        EXPECT_EQ(std::filesystem::status(PathOf(kOneShot)).permissions() == std::filesystem::perms::owner_read, isStore);
    }
}

} // namespace
