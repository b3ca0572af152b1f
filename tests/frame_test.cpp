/// @file Who may pass, which method runs, and how requests come in and answers go out.
#include "platform/appliance_paths.h"
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include "frame/privilege.h"

namespace {

// Tables of requests are laid out by hand.
// clang-format off

constexpr char kEmptyList[] = R"({"schedules":[],"start":0,"total":0})";

using FrameTest = Appliance;

TEST_F(FrameTest, DecidesWhoMayAskBeforeAnyMethodRuns)
{
    Files const bare = {{kUsers, R"({"1026":{"dtv":true,"sharing":false},
        "1027":{"sharing":true,"renderer":true}, "2":{"dtv":1}, "3":{"dtv":"true"}, "4":true})"},
                        {"/etc/passwd", "viewer:x:1026:1::/:\nguest:x:1027:1::/:\nlocked:!x:9:1::/:\n"
                                        "two:x:2:1::/:\nthree:x:3:1::/:\nfour:x:4:1::/:\nfive:x:5:1::/:\n"}};
    std::string const list = "method=list";
    Check(bare, {
        {.name = "administrator", .query = list, .data = kEmptyList},
        {.name = "administrator, broken privileges", .query = list, .data = kEmptyList,
         .before = {{kUsers, "{"}}},
        {.name = "granted", .query = list, .data = kEmptyList, .user = "viewer"},
        {.name = "other privileges", .query = list, .codes = {105}, .user = "guest"},
        {.name = "any method", .query = "method=nonsense", .codes = {105}, .user = "guest"},
        {.name = "no method", .query = "", .codes = {105}, .user = "guest"},
        {.name = "stores stay", .query = "method=delete&tuner=0", .codes = {105}, .user = "guest"},
        {.name = "a number", .query = list, .codes = {105}, .user = "two"},
        {.name = "a text", .query = list, .codes = {105}, .user = "three"},
        {.name = "no object", .query = list, .codes = {105}, .user = "four"},
        {.name = "no entry", .query = list, .codes = {105}, .user = "five"},
        {.name = "no file", .query = list, .codes = {105}, .before = {{kUsers, ""}},
         .user = "viewer"},
        {.name = "no account", .query = list, .codes = {100, 105}, .user = "nobody"},
        {.name = "no account, uid 0 granted", .query = list, .codes = {100}, .data = kEmptyList,
         .before = {{kUsers, R"({"0":{"dtv":true}})"}}, .user = "nobody"},
        {.name = "no login", .query = list, .codes = {106}, .user = ""},
        {.name = "no login, shared link", .query = list + "&sharing_id=x", .codes = {106},
         .user = ""},
        {.name = "locked", .query = list, .codes = {107}, .user = "locked"},
    });
}

TEST_F(FrameTest, RefusesOnPrivilegeFilesThatAreNotWhatTheyShouldBe)
{
    std::string const parseError =
        std::string("privilege:70 failed to parse json file[") + appliance::kPrivilegeFile + "];";
    Check({}, {
        {.name = "a number", .query = "", .codes = {105}, .before = {{kUsers, "7"}},
         .user = "viewer"},
        {.name = "an array", .query = "", .codes = {105}, .before = {{kUsers, "[1,2]"}},
         .user = "viewer"},
        {.name = "broken behind the entry", .query = "",
         .before = {{kUsers, R"({"1026":{"dtv":true},)"}}, .log = parseError, .user = "viewer"},
        {.name = "nested deep", .query = "", .codes = {105},
         .before = {{kUsers, R"({"1026":{"dtv":true,"x":)" + std::string(100000, '[')}},
         .log = parseError, .user = "viewer"},
    });
    Reset();
    Remove(kUsers);
    ASSERT_EQ(::symlink("users.conf", PathOf(kUsers).c_str()), 0); // a loop: access fails, not ENOENT
    EXPECT_EQ(Run(Request{.query = "", .user = "viewer"}).codes, std::vector{105});
    ASSERT_EQ(seams::logged.size(), 1U);
    EXPECT_EQ(seams::logged[0].text, std::string("privilege:61 failed to access config file [") +
                                         appliance::kPrivilegeFile +
                                         "] Too many levels of symbolic links");
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
        {.name = "capitals", .query = "method=LIST", .data = kEmptyList},
        {.name = "a prefix is no name", .query = "method=lis"},
        {.name = "longer than the name", .query = "method=lists"},
        {.name = "unknown", .query = "method=nonsense"},
        {.name = "none", .query = ""},
        {.name = "the first counts", .query = "method=list&method=nonsense", .data = kEmptyList},
        {.name = "text ends at NUL", .query = "method=list%00x", .data = kEmptyList},
        {.name = "keys are exact", .query = "METHOD=list"},
        {.name = "a key without =", .query = "method=list&limit", .codes = {101},
         .data = kEmptyList},
        {.name = "broken escapes", .query = "method=list&%=%&%zz=%4&&=&=x", .data = kEmptyList},
    });
}

TEST_F(FrameTest, ReadsFormsFromBodies)
{
    std::string const list = "{\"data\":{\"schedules\":[],\"start\":0,\"total\":0},\"success\":true}\n";
    std::string const bad = "{\"error\":{\"code\":101},\"success\":false}\n";
    std::string const done = "{\"success\":true}\n";
    std::string const form = "method=list";
    std::string const urlencoded = "application/x-www-form-urlencoded";
    auto const post = [](std::string const& body, std::string const& length,
                         std::string const& type, std::string const& query) {
        return Request{.query = query, .method = "POST", .body = body, .contentLength = length,
                       .contentType = type};
    };
    struct {
        char const* name;
        Request request;
        std::string answer;
    } const cases[] = {
        {"form", post(form, "11", urlencoded, ""), list},
        {"form with a charset", post(form, "11", "Application/X-WWW-Form-URLencoded; charset=x", ""), list},
        {"other type", post(form, "11", "text/plain", ""), done},
        {"query string first", post("method=nonsense", "15", urlencoded, form), list},
        {"no length", post(form, "", urlencoded, ""), done},
        {"longer than it says", post("method=listxxx", "11", urlencoded, ""), list},
        {"shorter than it says", post(form, "12", urlencoded, ""), bad},
        {"huge length", post(form, "999999999999", urlencoded, ""), bad},
        {"length above 64 bits", post(form, "99999999999999999999999", urlencoded, ""), bad},
        {"negative length", post(form, "-1", urlencoded, ""), bad},
        {"length is no number", post(form, "11x", urlencoded, ""), bad},
        {"one byte over the limit", post(form + std::string(1048566, '&'), "1048577", urlencoded, ""), bad},
        {"as long as allowed", post(form + std::string(1048565, '&'), "1048576", urlencoded, ""), list},
        {"GET has no body", {.query = "", .body = form, .contentLength = "11"}, done},
    };
    for (auto const& [name, request, answer] : cases) {
        EXPECT_EQ(Run(request).raw, "Content-Type: application/json; charset=utf-8\r\n\r\n" + answer)
            << name;
    }
}

/// A class of the package that serves shared links, and what it was asked.
class SharingApi : public Tremolane::VideoWebAPI {
public:
    void Process() override
    {
        ++processed;
        again = CheckSharing();
        stateAfter = m_sharingState;
    }
    bool SupportsSharing() override
    {
        ++supportAsked;
        return true;
    }
    bool IsSharingIdValid(std::string const& id) override
    {
        ++idsAsked;
        return id == "good";
    }

    static inline int processed, supportAsked, idsAsked, stateAfter;
    static inline bool again;
};

TEST_F(FrameTest, LetsValidSharedLinksPassWhereTheyAreServed)
{
    struct {
        char const* query;
        char const* user;
        std::vector<int> codes;
        int supportAsked, idsAsked;
    } const cases[] = {
        {"sharing_id=good", "", {}, 1, 1},         {"sharing_id=good", "locked", {}, 1, 1},
        {"sharing_id=bad", "", {106}, 1, 1},       {"sharing_id=bad", "locked", {107}, 1, 1},
        {"sharing_id=", "", {106}, 1, 0},          {"", "", {106}, 1, 0},
    };
    for (auto const& row : cases) {
        SCOPED_TRACE(std::string(row.query) + " " + row.user);
        SharingApi::processed = SharingApi::supportAsked = SharingApi::idsAsked = 0;
        EXPECT_EQ(Run<SharingApi>({.query = row.query, .user = row.user}).codes, row.codes);
        EXPECT_EQ(SharingApi::processed, row.codes.empty() ? 1 : 0);
        EXPECT_EQ(SharingApi::supportAsked, row.supportAsked);
        EXPECT_EQ(SharingApi::idsAsked, row.idsAsked);
    }
    SharingApi::supportAsked = 0; // a good login does not ask; the first question comes in Process
    Run<SharingApi>({.query = "sharing_id=good"});
    EXPECT_TRUE(SharingApi::again);
    EXPECT_EQ(SharingApi::stateAfter, 1);
    EXPECT_EQ(SharingApi::supportAsked, 1);
}

/// The bare answer and the privileges that only other classes of the package ask for.
class OtherApi : public Tremolane::VideoWebAPI {
public:
    void Process() override
    {
        Json::Value answer;
        answer["sharing"] = IsAllowSharing();
        answer["renderer"] = IsAllowRenderer();
        answer["text"] = "\"\xc3\xa4\xf0\x9f\x93\xba\xff\xed\xa0\x80\x01";
        SetResponse(answer);
        SendNotFoundPage();
    }
};

TEST_F(FrameTest, OffersTheRestToOtherClasses)
{
    Write(kUsers, R"({"1027":{"sharing":true}})");
    EXPECT_EQ(Run<OtherApi>({.query = "", .user = "guest"}).raw,
              "Cache-control: no-store\r\nStatus: 404 Not Found\r\n\r\n"
              "Content-Type: application/json; charset=utf-8\r\n\r\n"
              "{\"data\":{\"renderer\":false,\"sharing\":true,"
              "\"text\":\"\\\"\\u00e4\\ud83d\\udcfa\\ufffd\\ufffd\\ufffd\\ufffd\\u0001\"},"
              "\"success\":true}\n");
}

} // namespace
