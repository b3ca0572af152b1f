/// @file The external address: the guard, the probes, hosts and ports, URLs.
#include "network/host_port.h"
#include "network/probes.h"
#include "network/run_as_guard.h"
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>
#include <utility>

// Tables are laid out by hand.
// clang-format off
namespace {

using namespace Tremolane::network_utils;

constexpr char kStarted[] = "/started"; // d for each start of the dynamic-DNS tool, r for the relay tool
constexpr char kOn[] = R"({"data":{"enabled":true}})";
constexpr char kPortal[] = R"({"data":{"services":[{"enabled":true,"id":"zem_portal"}]}})";

class NetworkTest : public Appliance {
protected:
    /// Lays tools that print what is given, a format of printf(1), if their argument is the right one, and the
    /// answers of the relay service.
    static void Lay(std::string const& ddns, std::string const& relay, std::string const& portway = kOn,
                    std::string const& permission = kPortal)
    {
        for (std::string const tool : {"kaldddnsinfo --get-hostname", "kaldrelayd -p"}) {
            std::string const path = "/usr/kald/sbin/" + tool.substr(0, tool.find(' '));
            Write(path, "#!/bin/sh\n[ \"${0##*/} $*\" = '" + tool + "' ] || exit\nprintf " + tool[4] + " >>" +
                        PathOf(kStarted) + "\nprintf '" + (tool[4] == 'd' ? ddns : relay) + "'\n");
            std::filesystem::permissions(PathOf(path), std::filesystem::perms::owner_all);
        }
        Write("/usr/kald/webapi/KALD.Core.Portway.2.get.json", portway);
        Write("/usr/kald/webapi/KALD.Core.Portway.Permission.1.get.json", permission);
    }

    /// Runs `body` as root in a child, since what the relay query found lasts as long as its process. The
    /// environment is words `NAME=value`.
    static void InFreshProcess(std::string const& environment, std::function<void()> const& body)
    {
        std::fflush(stdout);
        if (pid_t const child = ::fork(); child != 0) {
            int status = -1;
            EXPECT_TRUE(::waitpid(child, &status, 0) == child && status == 0) << environment.substr(0, 200);
            return;
        }
        seams::ids.emplace();
        ::clearenv();
        std::istringstream words(environment);
        for (std::string name, value; std::getline(words, name, '=') && std::getline(words, value, ' ');) {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
        body();
        EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1) << "a tool was not waited for";
        std::fflush(stdout);
        ::_exit(HasFailure() ? EXIT_FAILURE : EXIT_SUCCESS);
    }
};

TEST_F(NetworkTest, GuardChangesTheIdsAndBack)
{
    constexpr uid_t kNone = ~uid_t{0}; // as what a block makes of the uid: nothing, but it throws
    struct { seams::Ids ids; std::string expected; uid_t uidInBlock = kNone; } const cases[] = {
        {{0, 0}, "| "}, {{0, 8}, "g0 | g8 "}, {{9, 0}, "u0 u0 | u9 "}, {{9, 8}, "u0 g0 u0 | g8 u9 "},
        {{9, 8}, "u0 g0 u0 | u0 g8 u9 ", 5}, {{9, 8}, "u0 g0 u0 | g8 ", 9}, {{kNone, kNone}, "u0 g0 u0 | "},
        {{9, 8, 1}, "u0 | IN"}, {{9, 8, 2}, "u0 g0 | u9 IN"}, {{9, 8, 3}, "u0 g0 u0 | g8 u9 IN"},
        {{9, 8, 4}, "u0 g0 u0 | g8 OUT"}, {{9, 8, 5}, "u0 g0 u0 | g8 u9 OUT"}, {{9, 8, 4}, "u0 g0 u0 | u0 OUT", 5},
    };
    for (auto const& row : cases) {
        seams::Reset();
        seams::ids = row.ids;
        try {
            RunAsGuard const guard(7);
            EXPECT_EQ(guard.Ok(), !row.expected.ends_with("IN"));
            seams::ids->calls += "| ";
            row.uidInBlock == kNone ? throw 0 : seams::ids->uid = row.uidInBlock;
        } catch (int) {
        }
        for (auto const& [priority, text] : seams::logged) {
            seams::ids->calls += std::to_string(priority) + ' ' + text;
        }
        std::string const expected = Replaced(row.expected, "IN", "35 network_utils:7 ERROR: IF_RUN_AS(0, 0)");
        EXPECT_EQ(seams::ids->calls, Replaced(expected, "OUT", "34 network_utils:7 ERROR: ~IF_RUN_AS(9, 8)"));
    }
}

TEST_F(NetworkTest, GuardChangesTheRealIds)
{
    if (::geteuid() != 0) {
        GTEST_SKIP() << "needs root";
    }
    InFreshProcess("", [] {
        seams::ids.reset();
        ASSERT_TRUE(::setresgid(100, 100, 0) == 0 && ::setresuid(1000, 1000, 0) == 0);
        EXPECT_TRUE(RunAsGuard(7).Ok() && ::geteuid() == 0 && ::getegid() == 0);
        EXPECT_TRUE(::geteuid() == 1000 && ::getegid() == 100);
        ASSERT_EQ(::setresuid(1000, 1000, 1000), 0); // no way back to root
        EXPECT_FALSE(RunAsGuard(7).Ok());
    });
}

TEST_F(NetworkTest, AsksTheRelayServiceInOrder)
{
    std::string const others = R"({"data":{"services":[7,["zem_portal"],{"enabled":true,"id":7},{"enabled":"true",
        "id":"zem_portal"},{"enabled":true,"id":"portal"},{"enabled":false,"id":"zem_portal"}]}})";
    struct { std::string portway, permission, on; } const cases[] = { // E: the service is on, P: for the portal too
        {kOn, kPortal, "EP"}, {"", "", ""}, {"7", "\"text\"", ""}, {R"({"data":7})", R"({"data":[]})", ""},
        {R"({"data":{"enabled":false}})", kPortal, "P"}, {R"({"data":{"enabled":"true"}})", R"({"data":{}})", ""},
        {R"({"data":{"enabled":{}}})", R"({"data":{"services":{"x":{"enabled":true,"id":"zem_portal"}}}})", ""},
        {R"({"data":{"enabled":1}})", others, "E"}, {kOn, Replaced(others, "false", "true"), "EP"},
    };
    for (auto const& row : cases) {
        Reset();
        Lay("", "box\n", row.portway, row.permission);
        EXPECT_EQ(std::string(IsRelayEnabled() ? "E" : "") + (IsRelayPortalEnabled() ? "P" : ""), row.on);
        seams::opened.clear();
        std::string name = "before";
        EXPECT_EQ(QueryRelayName(name), row.on == "EP");
        EXPECT_EQ(seams::opened.size(), row.on.starts_with('E') ? 2U : 1U);
        EXPECT_EQ(name + Read(kStarted), row.on == "EP" ? "box\nr" : "before");
    }
}

TEST_F(NetworkTest, AsksNothingWithoutRoot)
{
    std::string found = "before";
    EXPECT_FALSE(ReadDdnsHostName(found) || ReadRelayName(found)) << "there are no tools";
    Lay("dyn", "box");
    InFreshProcess("", [&] {
        seams::ids = {.uid = 9, .gid = 0, .failing = 1};
        EXPECT_FALSE(GetDdnsHostName(found));
        EXPECT_EQ(found, "before");
        seams::ids->changes = 0;
        EXPECT_FALSE(GetRelayName(found) || GetRelayName(found)); // the second time it would succeed
        EXPECT_EQ(found + Read(kStarted), "");
        ASSERT_EQ(seams::logged.size(), 2U);
        EXPECT_EQ(seams::logged[0].text, "network_utils:95 ERROR: IF_RUN_AS(0, 0)");
        EXPECT_EQ(seams::logged[1].text, "network_utils:185 ERROR: IF_RUN_AS(0, 0)");
    });
}

TEST(HostPortTest, SplitsNetworkLocations)
{
    std::string const big(1 << 20, 'a'), cut(4095, 'a');
    std::pair<std::string, std::string> const cases[] = { // the text; the host, a bar, the port
        {"", "|"}, {"tvbox", "tvbox|"}, {"tvbox:81", "tvbox|81"}, {":80", "|80"}, {"/x:80", "|"}, {"tvbox:", "tvbox|"},
        {"tvbox:/x", "tvbox|"}, {"tvbox/x:80", "tvbox|"}, {"a:b:c/d", "a|b:c"}, {"[fe80::1]:82/x", "[fe80::1]|82"},
        {"[fe80::1", "[fe80::1|"}, {"[::1]x:80", "[::1]|"}, {"[", "[|"}, {"[a/b]]:1", "[a/b]|"},
        {"x[::1]:80", "x[|:1]:80"}, {"\1\n:\177", "\1\n|\177"}, {"b:" + big + "/x", "b|" + cut},
        {big + ":80", cut + "|80"}, {'[' + big + "]:80", '[' + cut.substr(1) + "|80"},
    };
    for (auto const& [text, expected] : cases) {
        HostAndPort const parts = SplitHostPort(text.c_str());
        EXPECT_EQ(parts.host + '|' + parts.port, expected);
    }
}

/// A class of the package that answers what only other classes ask for.
struct UrlApi : Tremolane::VideoWebAPI {
    using VideoWebAPI::GetBasePath, VideoWebAPI::GetExternalUrl, VideoWebAPI::GetRequestUrl;
    void Process() override
    {
        Json::Value number = GetIntParamText("n");
        SetResponse(number);
    }
};

TEST_F(NetworkTest, FindsTheExternalAddress)
{
    std::string const ports = "external_port_zem_https=444\nexternal_port_zem_http=88\n";
    std::string const host = "external_host_ip=out\n";
    // `relay` is what its tool prints, or "off" for the service; expected are port, host, URL and the tools started,
    // where the host is asked for twice. BOX is a host under the relay domain.
    struct { std::string environment, settings, ddns, relay, expected; } const cases[] = {
        {"", "", "", "off", "  http:///tv dd"},
        {"HTTP_HOST=[::1]:82/x HTTPS=off", "", "", "off", "82 [::1] http://[::1]:82/tv dd"},
        {"HTTP_HOST=tvbox SERVER_PORT=", "", "", "off", " tvbox http://tvbox/tv dd"},
        {"HTTP_HOST=tvbox:81 HTTPS=oN SERVER_PORT=443", ports, "", "off", "444 tvbox https://tvbox:444/tv dd"},
        {"HTTP_HOST=a:8 HTTPS=on SERVER_PORT=43", "external_port_zem_https=\n", "", "off", "43 a https://a:43/tv dd"},
        {"", "external_port_zem_http=12345678901234567\n", "a ", "off",
         "123456789012345 a http://a:123456789012345/tv dd"},
        {"HTTP_HOST=tvbox", ports + host, "dyn x", "off", "88 out http://out:88/tv "},
        {"HTTP_HOST=tvbox", "", "dyn x\\ny", "BOX\n", " dyn http://dyn/tv rdd"},
        {"HTTP_HOST=tvbox", "", "dyn\\nx", "", " dyn\n http://dyn\n/tv rdd"},
        {"HTTP_HOST=tvbox", "", " dyn", "BOX\n", "  http:///tv rdd"},
        {"HTTP_HOST=tvbox", "", "\\000dyn", "", " tvbox http://tvbox/tv rdd"},
        {"", "", std::string(2000, 'a'), "off", Replaced(" A http://A/tv dd", "A", std::string(1023, 'a'))},
        {"HTTP_HOST=tvbox SERVER_PORT=80", ports, "", "BOX\r\n", "88 BOX\r\n https://BOX/direct/tv rdd"},
        {"HTTP_HOST=[", "external_host_ip=BOX\n", "", "BOX", " BOX https://BOX/direct/tv r"},
        {"HTTP_HOST=BOX:81/x SERVER_PORT=80", ports + host, "dyn x", "BOX\n", "81 BOX https://BOX/direct/tv r"},
        {"HTTP_HOST=BOX SERVER_PORT=80", ports + host, "dyn x", "box", " BOX https://BOX/direct/tv r"},
        {"HTTP_HOST=BOXer", host, "", "box.a", " BOXer https://BOXer/direct/tv r"},
        {"HTTP_HOST=box", host, "", "BOX", " out http://out/tv r"},
        {"HTTP_HOST=BOX:1", host, "", "bo.a", "1 out http://out:1/tv r"},
        {"HTTP_HOST=BOX:1", host, "", "Box", "1 out http://out:1/tv r"},
        {"HTTP_HOST=BOX:1", host, "", "off", "1 out http://out:1/tv "},
    };
    auto const spelt = [](std::string const& text) { return Replaced(text, "BOX", "box.tvr.example.com"); };
    for (auto const& row : cases) {
        Reset();
        Lay(row.ddns, spelt(row.relay), row.relay != "off" ? kOn : "{}");
        Write("/etc/kaldinfo.conf", spelt(row.settings));
        InFreshProcess("REQUEST_URI=/tv/webapi/x " + spelt(row.environment), [&] {
            std::string const found = GetExternalPort() + ' ' + GetExternalHost() + ' ' + UrlApi::GetExternalUrl();
            EXPECT_EQ(found + ' ' + Read(kStarted), spelt(row.expected));
        });
    }
}

TEST_F(NetworkTest, GivesTheRequestBackInANormalForm)
{
    std::string const big(1 << 20, 'a');
    struct { std::string query, environment, expected; } const cases[] = { // number, base path, URL
        {"", "HTTPS=on REQUEST_URI=/tv/webapi/x", " /tv "},
        {"n", "HTTP_HOST=tvbox:81 REQUEST_URI=/webapi/x", "0  http://tvbox:81"},
        {"n=012", "HTTP_HOST=tvbox:81 HTTPS=off REQUEST_URI=/tv/webapi/webapi", "12 /tv https://tvbox:81/tv"},
        {"n=-3", "HTTP_HOST=tvbox HTTPS= REQUEST_URI=/tv?a=/web", "-3 /tv?a=/web https://tvbox/tv?a=/web"},
        {"n=7x", "HTTP_HOST=box.tvr.example.com", "7  https://box.tvr.example.com"},
        {"n=x7", "HTTP_HOST=box.tvr.example.com:80", "0  http://box.tvr.example.com:80"},
        {"N=1", "HTTP_HOST=" + big + " REQUEST_URI=" + big, ' ' + big + " http://" + big + big},
    };
    for (auto const& row : cases) {
        InFreshProcess(row.environment, [&] {
            std::string const number = Run<UrlApi>({.query = row.query}).body["data"].asString();
            EXPECT_EQ(number + ' ' + UrlApi::GetBasePath() + ' ' + UrlApi::GetRequestUrl(), row.expected);
        });
    }
}

} // namespace
