/// @file The methods `create_repeat` and `edit_repeat`, which read the same parameters.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "tremolane/recording_service.h"

namespace {

/// A repeat schedule as both methods are given it.
struct RepeatSchedule {
    int start = -1; ///< epoch seconds; negative if absent or no number
    bool isWeekly = true;
    bool hasWeekly = false;
    std::string id;       ///< channel unique id
    std::string weekdays; ///< seven flags, Sunday first
    std::string endDate;
};

/// Reads the parameters. `get` returns a parameter's text by its key and a fallback.
template <class Get>
RepeatSchedule ReadRepeatSchedule(Get const& get)
{
    using namespace KALD::WebAPIUtil;
    RepeatSchedule schedule;
    ParseInt(std::string(get("start_time", "-1")).c_str(), &schedule.start);
    schedule.hasWeekly = ParseBool(std::string(get("isweekly", "")).c_str(), &schedule.isWeekly);
    schedule.id = get("id", "");
    schedule.weekdays = get("weekdaystatus", "");
    schedule.endDate = get("end_date", "");
    return schedule;
}

} // namespace

bool ScheduleRecordingAPI::CreateRepeatSchedule()
{
    RepeatSchedule const schedule = ReadRepeatSchedule(
        [this](char const* key, char const* fallback) { return GetParam(key, fallback); });
    std::optional<int> const tuner = RequestTuner();
    int service = 0;
    int frequency = 0;
    if (!tuner || schedule.start < 0 || schedule.weekdays.empty() || schedule.endDate.empty() ||
        !IsWeekdaySelected(schedule.start, schedule.weekdays.c_str()) ||
        KALDTremolane::KALDVideoDTVParserUniqueId(schedule.id.c_str(), &service, &frequency) != 0) {
        SetError(kErrorBadParameter);
        return false;
    }
    std::optional<std::string> const uid = CheckCanStore(true);
    if (!uid) {
        return false;
    }
    Json::Value out;
    if (!KALDTremolane::AddRepeatSchedule(
            out, *tuner, schedule.id, std::to_string(schedule.start).c_str(), uid->c_str(),
            schedule.isWeekly, schedule.weekdays.c_str(), schedule.endDate.c_str())) {
        ReportLibraryError(out);
        return false;
    }
    ReloadDaemon();
    return true; // the schedule is stored, whether or not the daemon reloaded
}

void ScheduleRecordingAPI::EditRepeatSchedule()
{
    RepeatSchedule const schedule = ReadRepeatSchedule(
        [this](char const* key, char const* fallback) { return m_request.In(key, fallback); });
    std::optional<int> const tuner = RequestTuner();
    if (!tuner || !schedule.hasWeekly || schedule.start < 0 || schedule.endDate.empty() ||
        schedule.weekdays.empty() ||
        !IsWeekdaySelected(schedule.start, schedule.weekdays.c_str())) {
        SetError(kErrorBadParameter);
        return;
    }
    Json::Value out;
    if (!KALDTremolane::EditRepeatSche(out, *tuner, schedule.id,
                                       std::to_string(schedule.start).c_str(), schedule.isWeekly,
                                       schedule.weekdays.c_str(), schedule.endDate.c_str())) {
        ReportLibraryError(out);
        return;
    }
    ReloadDaemon();
}
