/// @file The external address: the guard.
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

class NetworkTest : public Appliance {
protected:
    /// Runs `body` as root in a child, since what changes there lasts as long as its process. The
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

} // namespace
