/// @file Another API class of the package, as a CGI program: it answers what it is asked about its
/// base class and about network/. The parameter `ask` names the questions, with commas between.
#include "frame/video_web_api.h"
#include "kald/web_api_util.h"
#include "network/host_port.h"
#include "network/probes.h"
#include "network/run_as_guard.h"

#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <map>

namespace network_utils = Tremolane::network_utils;

namespace {

constexpr uid_t kUid = 9;
constexpr gid_t kGid = 8;
constexpr uid_t kBlockUid = 5;

class OtherApi : public Tremolane::VideoWebAPI {
public:
    bool SupportsSharing() override
    {
        ::syslog(LOG_DEBUG, "SupportsSharing");
        return true;
    }

    bool IsSharingIdValid(std::string const& id) override
    {
        ::syslog(LOG_DEBUG, "IsSharingIdValid");
        return id == "good";
    }

    void Process() override
    {
        Json::Value answers;
        for (Json::Value const& question :
             KALD::WebAPIUtil::ParseToArray(m_request.In("ask", ""), ",")) {
            answers.append(Answer(question.asString()));
        }
        SetResponse(answers);
        if (::waitpid(-1, nullptr, WNOHANG) != -1) {
            std::abort(); // a tool is left behind
        }
    }

private:
    std::string Answer(std::string const& question)
    {
        static std::map<std::string, std::string (*)(OtherApi&)> const kAnswers = {
            {"sharing", [](OtherApi& api) { return Text(api.CheckSharing()); }},
            {"may share", [](OtherApi& api) { return Text(api.IsAllowSharing()); }},
            {"may render", [](OtherApi& api) { return Text(api.IsAllowRenderer()); }},
            {"number", [](OtherApi& api) { return api.GetIntParamText("n"); }},
            {"base", [](OtherApi&) { return GetBasePath(); }},
            {"request", [](OtherApi&) { return GetRequestUrl(); }},
            {"external", [](OtherApi&) { return GetExternalUrl(); }},
            {"host", [](OtherApi&) { return network_utils::GetExternalHost(); }},
            {"port", [](OtherApi&) { return network_utils::GetExternalPort(); }},
            {"relay", [](OtherApi&) { return Name(network_utils::GetRelayName); }},
            {"ddns", [](OtherApi&) { return Name(network_utils::GetDdnsHostName); }},
            {"is on", [](OtherApi&) { return Text(network_utils::IsRelayEnabled()); }},
            {"is portal", [](OtherApi&) { return Text(network_utils::IsRelayPortalEnabled()); }},
            {"not found", [](OtherApi& api) { return api.SendNotFoundPage(), std::string(); }},
            {"as gid", [](OtherApi&) { return Text(::setresgid(-1, kGid, -1) == 0); }},
            {"as uid", [](OtherApi&) { return Text(::setresuid(-1, kUid, -1) == 0); }},
            {"guard", [](OtherApi&) { return Text(network_utils::RunAsGuard(7).Ok()); }},
            {"guard that loses its uid",
             [](OtherApi&) {
                 network_utils::RunAsGuard const guard(7);
                 return Text(guard.Ok() && ::setresuid(-1, kBlockUid, -1) == 0);
             }},
        };
        return kAnswers.at(question)(*this);
    }

    static std::string Text(bool holds) { return holds ? "yes" : "no"; }

    static std::string Name(bool (*ask)(std::string& name))
    {
        std::string name = "untouched";
        return (ask(name) ? "found " : "none ") + name;
    }
};

void Log(int priority, char const* format, std::va_list arguments)
{
    std::fprintf(stderr, "other_api[0]: <%d> ", priority);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): both callers have started it
    std::vfprintf(stderr, format, arguments);
    std::fputc('\n', stderr);
}

} // namespace

// In the place of the C library's, to show the priority of each line.
// NOLINTBEGIN(readability-identifier-naming,bugprone-reserved-identifier): the library's names
extern "C" void syslog(int priority, char const* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    Log(priority, format, arguments);
    va_end(arguments);
}

extern "C" void __syslog_chk(int priority, int /*flag*/, char const* format, ...)
{
    std::va_list arguments;
    va_start(arguments, format);
    Log(priority, format, arguments);
    va_end(arguments);
}
// NOLINTEND(readability-identifier-naming,bugprone-reserved-identifier)

int main()
{
    OtherApi api;
    api.Run();
    return 0;
}
