/// @file The method `delete_userdefine`, and the delete inside `edit_userdefine`: removes schedules
/// together with their records.
#include "frame/schedule_recording_api.h"

#include "frame/decimal.h"
#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "schedule/userdefine/userdefine_file.h"
#include "tremolane/recording_service.h"

#include <set>
#include <utility>
#include <vector>

namespace {

using namespace appliance;

constexpr int kNamesNone = 0; ///< also the start of a text that is no number

/// Returns the starts that a comma-separated list names, in its order.
std::vector<int> ParseStarts(char const* text)
{
    std::vector<int> starts;
    for (Json::Value const& piece : KALD::WebAPIUtil::ParseToArray(text, ",")) {
        std::int64_t const start = ParseNumberPrefix(piece.asCString());
        starts.push_back(std::in_range<int>(start) ? static_cast<int>(start) : kNamesNone);
    }
    return starts;
}

} // namespace

void ScheduleRecordingAPI::DeleteUserDefine()
{
    bool const isEdit = IsMethod("edit_userdefine");
    std::vector<int> const starts =
        ParseStarts(isEdit ? GetParam("id", "").c_str() : m_request.In("id", ""));
    std::optional<int> const tuner = RequestTuner();
    if (!tuner || starts.empty()) {
        SetError(kErrorBadParameter);
        return;
    }
    if (isEdit) {
        if (!DeleteRecordedSchedule()) {
            return;
        }
    } else {
        std::set<int> deletedRules; // to delete one again would rewrite its file without a change
        for (int const start : starts) {
            if (start != kNamesNone && !deletedRules.contains(start) &&
                KALDTremolane::ReadUserDefineFromFile(m_userDefineRecord, start, *tuner) >= 0) {
                m_deleteOld = true;
                bool const isDeleted = DeleteRecordedSchedule();
                m_deleteOld = false;
                if (isDeleted && FlagOf(m_userDefineRecord, member::kIsRepeat)) {
                    deletedRules.insert(start);
                }
            }
        }
        ReloadDaemon();
    }
    std::set<int> named(starts.begin(), starts.end());
    named.erase(kNamesNone); // a damaged record can read as 0, too
    RemoveUserDefineRecords(named, *tuner);
}

bool ScheduleRecordingAPI::DeleteRecordedSchedule()
{
    if (FlagOf(m_userDefineRecord, member::kIsRepeat)) {
        return DeleteRepeatSchedule();
    }
    DeleteSchedule();
    return true; // after an error too
}
