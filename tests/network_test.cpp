/// @file The external address: the guard and the probes.
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

} // namespace
