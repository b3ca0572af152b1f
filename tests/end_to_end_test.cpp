/// @file The program behind a real web server: its logins and addresses, and what clients are
/// answered over HTTP.
#include "platform/appliance_paths.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace {

sockaddr_in Loopback(int port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<in_port_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

/// A port that was free a moment ago.
int FreePort()
{
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof address;
    int const fd = ::socket(AF_INET, SOCK_STREAM, 0);
    EXPECT_EQ(::bind(fd, reinterpret_cast<sockaddr*>(&address), size), 0);
    EXPECT_EQ(::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size), 0);
    ::close(fd);
    return ntohs(address.sin_port);
}

bool Listens(int port)
{
    sockaddr_in const address = Loopback(port);
    int const fd = ::socket(AF_INET, SOCK_STREAM, 0);
    int const result = ::connect(fd, reinterpret_cast<sockaddr const*>(&address), sizeof address);
    ::close(fd);
    return result == 0;
}

/// What a command prints.
std::string OutputOf(std::string const& command)
{
    std::string output;
    std::array<char, 4096> part{};
    FILE* const stream = ::popen(command.c_str(), "re");
    while (std::size_t const size = std::fread(part.data(), 1, part.size(), stream)) {
        output.append(part.data(), size);
    }
    EXPECT_EQ(::pclose(stream), 0) << command;
    return output;
}

/// The web server of the development appliance, for a fresh appliance tree. It ends with the test.
class EndToEndTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::filesystem::remove_all(appliance::kRoot);
        OutputOf(std::string("'" SOURCE_DIR "/dev/lay-out' '") + appliance::kRoot + "'");
        m_port = FreePort();
        ::setenv("WEB_PORT", std::to_string(m_port).c_str(), 1);
        ::setenv("WEB_PROGRAM", PROGRAM, 1);
        ::setenv("WEB_LOGINS", (std::string(appliance::kRoot) + "/etc/logins").c_str(), 1);
        ::setenv("WEB_ACCESS_LOG", "/dev/null", 1);
        m_server = ::fork();
        if (m_server == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGTERM); // also if the test is killed
            ::execl(LIGHTTPD, LIGHTTPD, "-D", "-f", SOURCE_DIR "/dev/lighttpd.conf", nullptr);
            ::_exit(127);
        }
        for (int tries = 0; tries < 200 && !Listens(m_port); ++tries) {
            ASSERT_EQ(::waitpid(m_server, nullptr, WNOHANG), 0) << "lighttpd has ended";
            ::usleep(50000);
        }
    }

    void TearDown() override
    {
        if (m_server > 0) {
            ::kill(m_server, SIGTERM);
            ::waitpid(m_server, nullptr, 0);
        }
    }

    /// The answered body, a space and the HTTP status.
    std::string Ask(std::string const& login, std::string const& request) const
    {
        return OutputOf("curl --silent --noproxy '*' --write-out ' %{http_code}' --user '" + login +
                        "' http://127.0.0.1:" + std::to_string(m_port) + request);
    }

private:
    int m_port = 0;
    pid_t m_server = -1;
};

std::string Failed(char const* code)
{
    return std::string(R"({"error":{"code":)") + code + "},\"success\":false}\n 200";
}

// The table of requests is laid out by hand.
// clang-format off
TEST_F(EndToEndTest, AnswersOverHttp)
{
    std::string const endpoint = "/webapi/schedule_recording";
    std::string const noLogin = "/open/schedule_recording";
    std::string const post = endpoint + " --data ";
    std::string const done = "{\"success\":true}\n 200";
    std::string const first = R"({"data":{"schedules":[{"channel_name":"Kanal Ahorn","description":"Fernsehfilm",)";
    std::string const last = R"({"data":{"schedules":[{"channel_name":"Channel Cedar",)";
    std::string const created = R"({"data":{"schedules":[{"channel_name":"","description":"","duration":1800,"id":"9@8",)";
    auto const page = [](char const* start, char const* total) {
        return std::string("\"start\":") + start + ",\"total\":" + total + "},\"success\":true}\n 200";
    };
    struct {
        char const* name;
        std::string login, request, begin, end;
    } const cases[] = {
        {"both kinds", "viewer:viewer", endpoint + "'?method=list'", first, page("0", "12")},
        {"the other tuner", "admin:admin", endpoint + "'?method=LIST&tuner=1&start=3&limit=9'", last, page("3", "4")},
        {"form", "viewer:viewer", post + "'method=list&limit=1'", first, page("0", "12")},
        {"create", "viewer:viewer", post + "'method=create&tuner=1&id=9@8&start_time=2000000000'", done, done},
        {"created", "viewer:viewer", endpoint + "'?method=list&tuner=1&start=4&limit=1'", created, page("4", "5")},
        {"unknown method", "viewer:viewer", endpoint + "?method=nonsense", done, done},
        {"not granted", "guest:guest", endpoint + "?method=list", Failed("105"), ""},
        {"locked", "locked:locked", endpoint + "?method=list", Failed("107"), ""},
        {"wrong password", "viewer:admin", endpoint + "?method=list", "", " 401"},
        {"no such login", "nobody:", endpoint + "?method=list", "", " 401"},
        {"no login where one is due", ":", endpoint + "?method=list", "", " 401"},
        {"no login where none is due", ":", noLogin + "?method=list", Failed("106"), ""},
        {"login not asked for", "admin:admin", noLogin + "?method=list", Failed("106"), ""},
        {"another address", "admin:admin", "/webapi/schedule", "", " 404"},
    };
    for (auto const& [name, login, request, begin, end] : cases) {
        std::string const answer = Ask(login, request);
        EXPECT_TRUE(answer.starts_with(begin) && answer.ends_with(end)) << name << ": " << answer;
    }
}

} // namespace
