/// @file Another API class of the package, as a CGI program: it answers what it is asked about its
/// base class, network/ and text_list/, and about the merge of schedules. The parameter `ask` names
/// the questions, with commas between.
#include "frame/privilege.h"
#include "frame/schedule_recording_api.h"
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

constexpr uid_t kAsBefore = static_cast<uid_t>(-1);

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
            {"rights",
             [](OtherApi& api) {
                 return Text(api.IsAllowSharing()) + ' ' + Text(api.IsAllowRenderer());
             }},
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
            {"merge",
             [](OtherApi&) { // of schedules with a member that it does not know
                 Json::Value view;
                 Json::Value repeat;
                 view["schedules"][0]["foreign"] = true;
                 repeat[0]["start_time"] = -1;
                 ScheduleRecordingAPI::MergeSchedules(view, repeat);
                 Json::Value const& first = view["schedules"][0];
                 return first["start_time"].asString() + ' ' + first["foreign"].asString();
             }},
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
            {"become",
             [](OtherApi&) {
                 return Text(::setresgid(kAsBefore, 8, kAsBefore) == 0 &&
                             ::setresuid(kAsBefore, 9, kAsBefore) == 0);
             }},
            {"guard", [](OtherApi&) { // of a block that gives up root
                 RunAsGuard const guard(7);
                 return Text(guard.Ok() && ::setresuid(kAsBefore, 5, kAsBefore) == 0);
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
    return 0;
}
