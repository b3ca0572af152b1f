/// @file Another API class of the package, as a CGI program: it answers what it is asked about its
/// base class, network/ and text_list/. The parameter `ask` names the questions, with commas
/// between.
#include "frame/privilege.h"
#include "frame/video_web_api.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "network/host_port.h"
#include "network/run_as_guard.h"
#include "platform/appliance_paths.h"
#include "text_list/text_list.h"

#include <syslog.h>
#include <unistd.h>

#include <map>

namespace {

using namespace Tremolane::network_utils;

struct OtherApi : Tremolane::VideoWebAPI {
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
        static std::map<std::string, std::string (*)(OtherApi&)> const kAnswers = {
            {"sharing", [](OtherApi& api) { return Text(api.CheckSharing()); }},
            {"may share", [](OtherApi& api) { return Text(api.IsAllowSharing()); }},
            {"may render", [](OtherApi& api) { return Text(api.IsAllowRenderer()); }},
            {"grant",
             [](OtherApi&) {
                 PrivilegeFile file;
                 file.SetPrivilege(7, "dtv", true);
                 file.SetPrivilege(1026, "dtv", false);
                 return Text(file.GetPrivilege(7, "dtv"));
             }},
            {"save",
             [](OtherApi&) {
                 Json::Value document(7);
                 return Text(WebUtils::SaveJsonFile(document, appliance::kUserDefineFile));
             }},
            {"not found", [](OtherApi& api) { return api.SendNotFoundPage(), Text(true); }},
            {"number", [](OtherApi& api) { return api.GetIntParamText("n"); }},
            {"parts",
             [](OtherApi& api) {
                 auto const parts = kalddbquery::SplitString(api.m_request.In("text", ""),
                                                             *api.m_request.In("separator", ""));
                 return kalddbquery::JoinString(parts, " | ");
             }},
            {"request", [](OtherApi&) { return GetBasePath() + ' ' + GetRequestUrl(); }},
            {"external", [](OtherApi&) { return GetExternalUrl(); }},
            {"host", [](OtherApi&) { return GetExternalHost(); }},
            {"port", [](OtherApi&) { return GetExternalPort(); }},
            {"become", [](OtherApi&) { return Text(::setegid(8) == 0 && ::seteuid(9) == 0); }},
            {"guard", [](OtherApi&) { // of a block that gives up root
                 RunAsGuard const guard(7);
                 return Text(guard.Ok() && ::seteuid(5) == 0);
             }}};
        Json::Value answers;
        for (auto const& word : KALD::WebAPIUtil::ParseToArray(m_request.In("ask", ""), ",")) {
            answers.append(kAnswers.at(word.asString())(*this));
        }
        SetResponse(answers);
    }

    static std::string Text(bool holds) { return holds ? "yes" : "no"; }
};

} // namespace

int main()
{
    OtherApi().Run();
}
