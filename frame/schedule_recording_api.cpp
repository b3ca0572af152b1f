/// @file The dispatcher, and what the methods share of the frame.
#include "frame/schedule_recording_api.h"

#include "frame/decimal.h"
#include "frame/web_api_error.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "tremolane/recording_service.h"
#include "tremolane/tuner_daemon.h"

#include <strings.h>

void ScheduleRecordingAPI::Process()
{
    using Api = ScheduleRecordingAPI;
    static constexpr struct {
        char const* name;
        void (*run)(Api& api);
    } kMethods[] = {
        {"list", [](Api& api) { api.ListSchedule(); }},
        {"getinfo_repeat", [](Api& api) { api.GetRepeatInfo(); }},
        {"getinfo_userdefine", [](Api& api) { api.GetUserDefineInfo(); }},
        {"create", [](Api& api) { api.CreateSchedule(); }},
        {"delete", [](Api& api) { api.DeleteSchedule(); }},
        {"delete_passed", [](Api& api) { api.DeletePassedSchedule(); }},
        {"create_repeat", [](Api& api) { api.CreateRepeatSchedule(); }},
        {"edit_repeat", [](Api& api) { api.EditRepeatSchedule(); }},
        {"delete_repeat", [](Api& api) { api.DeleteRepeatSchedule(); }},
        {"create_userdefine", [](Api& api) { api.CreateUserDefine(); }},
        {"edit_userdefine", [](Api& api) { api.EditUserDefine(); }},
        {"delete_userdefine", [](Api& api) { api.DeleteUserDefine(); }},
    };
    if (!IsAllowDtv()) {
        SetError(kErrorNoPrivilege);
        return;
    }
    for (auto const& method : kMethods) {
        if (IsMethod(method.name)) {
            method.run(*this);
        }
    }
}

bool ScheduleRecordingAPI::IsMethod(char const* name) const
{
    return ::strcasecmp(m_request.m_methodName, name) == 0;
}

std::optional<int> ScheduleRecordingAPI::RequestTuner()
{
    char const* const text = m_request.In("tuner", nullptr);
    return text != nullptr ? std::optional(static_cast<int>(ParseNumberPrefix(text)))
                           : std::nullopt;
}

void ScheduleRecordingAPI::ReportLibraryError(Json::Value& out)
{
    Json::Value const& error = appliance::MemberOf(out, appliance::member::kErrno);
    SetError(error.isNull() ? kErrorFailed : MappErrorCode(appliance::AsInt(error)));
}

bool ScheduleRecordingAPI::ReloadDaemon()
{
    bool const isReloaded = KALDDTVDReloadSchedule();
    if (!isReloaded) {
        SetError(kErrorFailed);
    }
    return isReloaded;
}
