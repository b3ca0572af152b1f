/// @file The methods `create_repeat` and `edit_repeat`: the rule of a repeat schedule.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "tremolane/recording_service.h"

namespace {

constexpr int kNoStart = -1;

/// What both methods are told about a rule.
struct RepeatRule {
    int start = kNoStart; ///< epoch seconds; negative if absent or no number
    bool hasStart = false;
    bool isWeekly = true;
    bool hasWeekly = false;
    std::string id;
    std::string weekdays; ///< seven flags, Sunday first
    std::string endDate;
};

/// Reads a rule; `get` gives a parameter's text by its key and a fallback.
template <class Get>
RepeatRule ReadRule(Get const& get)
{
    RepeatRule rule;
    rule.hasStart =
        KALD::WebAPIUtil::ParseInt(std::string(get("start_time", "-1")).c_str(), &rule.start);
    rule.start = rule.hasStart ? rule.start : kNoStart; // a failed parse may have written to it
    rule.hasWeekly =
        KALD::WebAPIUtil::ParseBool(std::string(get("isweekly", "")).c_str(), &rule.isWeekly);
    rule.id = get("id", "");
    rule.weekdays = get("weekdaystatus", "");
    rule.endDate = get("end_date", "");
    return rule;
}

} // namespace

bool ScheduleRecordingAPI::CreateRepeatSchedule()
{
    RepeatRule const rule =
        ReadRule([this](char const* key, char const* fallback) { return GetParam(key, fallback); });
    std::optional<int> const tuner = RequestTuner();
    int service = 0;
    int frequency = 0;
    if (!tuner || rule.start < 0 || rule.weekdays.empty() || rule.endDate.empty() ||
        !IsWeekdaySelected(rule.start, rule.weekdays.c_str()) ||
        KALDTremolane::KALDVideoDTVParserUniqueId(rule.id.c_str(), &service, &frequency) != 0) {
        SetError(kErrorBadParameter);
        return false;
    }
    std::optional<std::string> const uid = RepeatOwner();
    if (!uid) {
        return false;
    }
    Json::Value out;
    if (!KALDTremolane::AddRepeatSchedule(out, *tuner, rule.id, std::to_string(rule.start).c_str(),
                                          uid->c_str(), rule.isWeekly, rule.weekdays.c_str(),
                                          rule.endDate.c_str())) {
        ReportLibraryError(out);
        return false;
    }
    ReloadDaemon();
    return true; // also if that failed: the rule is stored
}

void ScheduleRecordingAPI::EditRepeatSchedule()
{
    RepeatRule const rule = ReadRule(
        [this](char const* key, char const* fallback) { return m_request.In(key, fallback); });
    std::optional<int> const tuner = RequestTuner();
    if (!tuner || !rule.hasStart || !rule.hasWeekly || rule.start < 0 || rule.endDate.empty() ||
        rule.weekdays.empty() || !IsWeekdaySelected(rule.start, rule.weekdays.c_str())) {
        SetError(kErrorBadParameter);
        return;
    }
    Json::Value out;
    if (!KALDTremolane::EditRepeatSche(out, *tuner, rule.id, std::to_string(rule.start).c_str(),
                                       rule.isWeekly, rule.weekdays.c_str(),
                                       rule.endDate.c_str())) {
        ReportLibraryError(out);
        return;
    }
    ReloadDaemon();
}
