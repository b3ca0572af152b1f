/// @file The method `delete_userdefine`, and the delete inside `edit_userdefine`: schedules and
/// their records.
#include "frame/schedule_recording_api.h"

#include "frame/decimal.h"
#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "schedule/userdefine/scoped_flag.h"
#include "tremolane/recording_service.h"

#include <utility>
#include <vector>

namespace {

constexpr int kNamesNone = 0;

/// The starts that a comma-separated list names, in its order.
std::vector<int> ParseStarts(char const* text)
{
    std::vector<int> starts;
    for (Json::Value const& piece : KALD::WebAPIUtil::ParseToArray(text, ",")) {
        long const start = LeadingNumber(piece.asCString());
        starts.push_back(std::in_range<int>(start) ? static_cast<int>(start) : kNamesNone);
    }
    return starts;
}

} // namespace

void ScheduleRecordingAPI::DeleteUserDefine()
{
    if (IsMethod("edit_userdefine")) {
        DeleteOldUserDefine();
    } else {
        DeleteNamedUserDefines();
    }
}

void ScheduleRecordingAPI::DeleteNamedUserDefines()
{
    std::vector<int> const starts = ParseStarts(m_request.In("id", ""));
    std::optional<int> const tuner = RequestTuner();
    if (!tuner || starts.empty()) {
        SetError(kErrorBadParameter);
        return;
    }
    for (int const start : starts) {
        if (KALDTremolane::ReadUserDefineFromFile(m_userDefineRecord, start, *tuner) >= 0) {
            ScopedFlag const deleting(m_deleteOld);
            DeleteRecordedSchedule();
        }
    }
    ReloadDaemon();
    RemoveUserDefineRecords({starts.begin(), starts.end()}, *tuner);
}

void ScheduleRecordingAPI::DeleteOldUserDefine()
{
    std::vector<int> const starts = ParseStarts(GetParam("id", "").c_str());
    std::optional<int> const tuner = RequestTuner();
    if (DeleteRecordedSchedule() && tuner) {
        RemoveUserDefineRecords({starts.begin(), starts.end()}, *tuner);
    }
}

bool ScheduleRecordingAPI::DeleteRecordedSchedule()
{
    bool const isRepeat = appliance::FlagOf(m_userDefineRecord, appliance::member::kIsRepeat);
    return isRepeat ? DeleteRepeatSchedule() : DeleteSchedule() != 0;
}
