/// @file The external address: the guard, the probes, hosts and ports, URLs.
#include "platform/environment.h"
#include "network/host_port.h"
#include "network/probes.h"
#include "network/run_as_guard.h"
#include "tests/support/appliance.h"
#include "tests/support/seams.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

// Tables are laid out by hand.
// clang-format off
namespace {

using namespace Tremolane::network_utils;

constexpr char kPortway[] = "/usr/kald/webapi/KALD.Core.Portway.2.get.json";
constexpr char kPermit[] = "/usr/kald/webapi/KALD.Core.Portway.Permission.1.get.json";
constexpr char kOn[] = "{'data':{'enabled':true}}";
constexpr char kPortal[] = "{'data':{'services':[{'enabled':true,'id':'zem_portal'}]}}";

std::string const kBig(1 << 20, 'a');

/// BOX stands for a host under the relay domain.
std::string Spelt(std::string const& text) { return Replaced(text, "BOX", "box.tvr.example.com"); }

/// A tool that prints `output`, a format of printf(1), if its argument is the right one, and notes its start.
Files::value_type Tool(std::string const& name, std::string const& argument, std::string const& output)
{
    return {"/usr/kald/sbin/kald" + name, "#!/bin/sh\n[ '$*' = " + argument + " ] || exit\nprintf " + name[0] + " >>" +
                                          Appliance::PathOf("/started") + "\nprintf '" + Spelt(output) + "'\n"};
}
Files::value_type Ddns(std::string const& output) { return Tool("ddnsinfo", "--get-hostname", output); }
Files::value_type Relay(std::string const& output) { return Tool("relayd", "-p", output); }
Files::value_type Settings(std::string const& text) { return {"/etc/kaldinfo.conf", Spelt(text)}; }

/// What a function gives, then the tools started (d: dynamic DNS, r: relay), the changes of the ids and the log, for an
/// environment of words NAME=value (@: HTTP_HOST=), files beside those of a relay service that is on, and ids.
struct Case { std::string environment, expected; Files files = {}; seams::Ids ids = {0, 0}; };

struct NetworkTest : Appliance {
    /// Each row has a process of its own, because what the relay query found lasts as long.
    static void Check(std::function<std::string()> const& function, std::vector<Case> const& cases)
    {
        for (auto const& [environment, expected, files, ids] : cases) {
            Reset();
            Lay({{kPortway, kOn}, {kPermit, kPortal}});
            Lay(files);
            for (auto const& file : files) { ::chmod(PathOf(file.first).c_str(), S_IRWXU); }
            EXPECT_EXIT({ // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): GoogleTest's own
                seams::ids = ids;
                ::clearenv();
                std::istringstream words(Replaced(Spelt(environment), "@", "HTTP_HOST="));
                for (std::string word; words >> word;) { ::putenv(::strdup(word.c_str())); }
                std::cerr << function() << Read("/started") << (seams::ids ? seams::ids->calls : "");
                ::_exit(::waitpid(-1, nullptr, WNOHANG) == -1 ? EXIT_SUCCESS : EXIT_FAILURE); // all tools have ended
            }, testing::ExitedWithCode(EXIT_SUCCESS), testing::Eq(Spelt(expected))) << environment.substr(0, 200);
        }
    }
};

TEST_F(NetworkTest, GuardChangesTheIdsAndBack)
{
    std::string in = "35 network_utils:7 ERROR: IF_RUN_AS(0, 0)", out = "34 network_utils:7 ERROR: ~IF_RUN_AS(9, 8)";
    Check([] {
        RunAsGuard const guard(7);
        seams::ids->calls += guard.Ok() ? "| " : "";
        std::istringstream(appliance::Environment("UID")) >> seams::ids->uid; // what the block changes
        return "";
    }, {{"", "g0 | g8 ", {}, {0, 8}}, {"", "u0 g0 u0 | g8 u9 ", {}, {9, 8}}, {"UID=9", "u0 g0 u0 | g8 ", {}, {9, 8}},
        {"", "u0 u0 | u9 ", {}, {9, 0}}, {"", "u0 " + in, {}, {9, 8, 1}}, {"", "u0 g0 " + in + "u9 ", {}, {9, 8, 2}},
        {"", "| "}, {"", "u0 g0 u0 " + in + "g8 u9 ", {}, {9, 8, 3}}, {"UID=5", "u0 g0 u0 | u0 " + out, {}, {9, 8, 4}},
        {"", "u0 g0 u0 | ", {}, {~0U, ~0U}}, {"UID=5", "u0 g0 u0 | u0 g8 u9 ", {}, {9, 8}},
        {"", "u0 g0 u0 | g8 " + out, {}, {9, 8, 4}}, {"", "u0 g0 u0 | g8 u9 " + out, {}, {9, 8, 5}}});
    if (::geteuid() != 0) { GTEST_SKIP() << "only root can change its real ids"; }
    Check([] {
        seams::ids.reset();
        bool const left = ::setresgid(100, 100, 0) == 0 && ::setresuid(1000, 1000, 0) == 0;
        bool const root = RunAsGuard(7).Ok() && ::geteuid() == 0 && ::getegid() == 0;
        return left && root && ::geteuid() == 1000 && ::getegid() == 100 ? "root and back" : "";
    }, {{"", "root and back"}});
}

TEST_F(NetworkTest, AsksTheRelayService)
{
    std::string const others = "{'data':{'services':[7,['zem_portal'],{'enabled':true,'id':7},{'enabled':'true','id':"
                               "'zem_portal'},{'enabled':true,'id':'portal'},{'enabled':false,'id':'zem_portal'}]}}";
    ExpectEach<std::string, std::string>([](std::string const& answer) {
        Lay({{kPortway, answer}, {kPermit, answer}});
        return std::string(IsRelayEnabled() ? "on" : "") + (IsRelayPortalEnabled() ? "portal" : "");
    }, {{kOn, "on"}, {"{'data':{'enabled':1}}", "on"}, {Replaced(others, "false", "1"), "portal"},
        {"", ""}, {"7", ""}, {"'text'", ""}, {"{'data':7}", ""}, {"{'data':[]}", ""}, {"{'data':{}}", ""}, {others, ""},
        {"{'data':{'enabled':'true'}}", ""}, {"{'data':{'enabled':{}}}", ""}, {"{'data':{'enabled':false}}", ""},
        {"{'data':{'services':{'x':{'enabled':true,'id':'zem_portal'}}}}", ""}, {kPortal, "portal"}});
    std::string found = "before";
    seams::opened.clear();
    EXPECT_FALSE(QueryRelayName(found) || ReadRelayName(found) || ReadDdnsHostName(found)) << "there are no tools";
    EXPECT_EQ(found + std::to_string(seams::opened.size()), "before1") << "the portal was asked with the service off";
    Files const tools = {Ddns("dyn"), Relay("box")};
    Check([] { // the one change fails, and the second query of the relay name would succeed
        std::string text, name = "before";
        for (auto* ask : {GetDdnsHostName, GetRelayName, GetRelayName}) { text += (ask(name) ? '+' : '-') + name; }
        return text;
    }, {{"", "-before+box+boxru0 35 network_utils:95 ERROR: IF_RUN_AS(0, 0)u0 u0 u9 ", tools, {9, 0, 1}},
        {"", "+dyn--du0 u0 u9 u0 35 network_utils:185 ERROR: IF_RUN_AS(0, 0)", tools, {9, 0, 4}}});
}

TEST(HostPortTest, SplitsNetworkLocations)
{
    std::string const cut(4095, 'a');
    ExpectEach<std::string, std::string>([](std::string const& text) {
        return SplitHostPort(text.c_str()).host + '|' + SplitHostPort(text.c_str()).port;
    }, {{"", "|"}, {"tv", "tv|"}, {"tv:81", "tv|81"}, {":80", "|80"}, {"/x:80", "|"}, {"tv:", "tv|"}, {"tv:/x", "tv|"},
        {"tv/x:80", "tv|"}, {"a:b:c/d", "a|b:c"}, {"[fe80::1]:82/x", "[fe80::1]|82"}, {"[fe80::1", "[fe80::1|"},
        {"[::1]x:80", "[::1]|"}, {"[", "[|"}, {"[a/b]]:1", "[a/b]|"}, {"x[::1]:80", "x[|:1]:80"},
        {"\1\n:\177", "\1\n|\177"}, {"b:" + kBig + "/x", "b|" + cut}, {kBig + ":80", cut + "|80"},
        {'[' + kBig + "]:80", '[' + cut.substr(1) + "|80"}});
}

/// A class of the package that answers what only other classes ask for.
struct UrlApi : Tremolane::VideoWebAPI {
    using VideoWebAPI::GetBasePath, VideoWebAPI::GetExternalUrl, VideoWebAPI::GetRequestUrl;
    void Process() override { Json::Value number = GetIntParamText("n"); SetResponse(number); }
};

TEST_F(NetworkTest, FindsTheExternalAddress)
{
    std::string const ports = "external_port_zem_https=444\nexternal_port_zem_http=88\n", big(1023, 'a');
    auto const out = Settings("external_host_ip=o\n"), all = Settings(ports + out.second);
    // The host is asked for twice.
    Check([] { return GetExternalPort() + ' ' + GetExternalHost() + ' ' + UrlApi::GetExternalUrl() + ' '; }, {
        {"@a:81 HTTPS=oN SERVER_PORT=443", "444 a https://a:444 ", {Settings(ports)}},
        {"@a", "123456789012345 a http://a:123456789012345 ", {Settings("external_port_zem_http=1234567890123456\n")}},
        {"@a:8 HTTPS=on SERVER_PORT=43", "43 a https://a:43 ", {Settings("external_port_zem_https=\n")}},
        {"@[::]:82/x HTTPS=off SERVER_PORT= REQUEST_URI=/tv/webapi", "82 [::] http://[::]:82/tv dd", {Ddns("")}},
        {"@a", " dyn http://dyn rdd", {Ddns("dyn x\\ny"), Relay("BOX\n")}}, {"@a", "  http:// dd", {Ddns(" dyn")}},
        {"@a", " dyn\n http://dyn\n dd", {Ddns("dyn\\nx")}}, {"@a", " a http://a rdd", {Ddns("\\000dyn"), Relay("")}},
        {"", ' ' + big + " http://" + big + " dd", {Ddns(big + 'a')}},
        {"@a", "88 o http://o:88 ", {all, Ddns("dyn x")}}, {"@box", " o http://o r", {out, Relay("BOX")}},
        {"@a SERVER_PORT=80", "88 BOX\r\n https://BOX/direct r", {Settings(ports), Relay("BOX\r\n")}},
        {"@BOX:81/x SERVER_PORT=80 REQUEST_URI=/a/webapi", "81 BOX https://BOX/direct/a r", {all, Relay("BOX\n")}},
        {"@BOXer SERVER_PORT=80", " BOXer https://BOXer/direct r", {all, Relay("box.a")}},
        {"@BOX:1", "1 o http://o:1 r", {out, Relay("bo.a")}}, {"@BOX:1", "1 o http://o:1 r", {out, Relay("Box")}},
        {"", " o http://o ", {out, Relay(""), {kPortway, ""}}}, {"", " o http://o ", {out, Relay(""), {kPermit, ""}}}});
}

TEST_F(NetworkTest, GivesTheRequestBackInANormalForm)
{
    ExpectEach<std::string, std::string>([](auto& in) { return Run<UrlApi>({.query = in}).body["data"].asString(); }, {
        {"n", "0"}, {"n=012", "12"}, {"n=-3", "-3"}, {"n=7x", "7"}, {"n=x7", "0"}, {"N=1", ""}, {"", ""}});
    Check([] { return UrlApi::GetBasePath() + ' ' + UrlApi::GetRequestUrl(); }, {
        {"HTTPS=on REQUEST_URI=/tv/webapi/x", "/tv "}, {"@tv:81 REQUEST_URI=/webapi/x", " http://tv:81"},
        {"@tv:81 HTTPS=off REQUEST_URI=/tv/webapi/webapi", "/tv https://tv:81/tv"}, {"@BOX", " https://BOX"},
        {"@tv HTTPS= REQUEST_URI=/tv?a=/web", "/tv?a=/web https://tv/tv?a=/web"}, {"@BOX:80", " http://BOX:80"},
        {'@' + kBig + " REQUEST_URI=" + kBig, kBig + " http://" + kBig + kBig}});
}

} // namespace
