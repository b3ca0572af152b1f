/// @file The method `getinfo_userdefine`: answers a stored schedule, or the defaults of a new one,
/// as a client edits it.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "platform/local_time.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "tremolane/recording_service.h"

#include <ctime>

namespace {

using namespace appliance;

constexpr char kDate[] = "%Y-%m-%d";

/// Returns what a new schedule is offered: half an hour, and today as its only weekday.
Json::Value NewRecord(std::time_t now)
{
    std::string weekdays = "0,0,0,0,0,0,0";
    weekdays[2 * static_cast<std::size_t>(LocalTime(now).tm_wday)] = '1';
    Json::Value record;
    record[member::kDuration] = 1800;
    record[member::kIsRepeat] = false;
    record[member::kWeekdayStatus] = weekdays;
    record[member::kEndDate] = "1";
    return record;
}

/// Returns what a client is shown of a record that starts at `start`.
Json::Value InfoOf(Json::Value const& record, std::time_t start, std::time_t now)
{
    char duration[64];
    ScheduleRecordingAPI::SecondsToTimeText(duration, sizeof duration,
                                            IntOf(record, member::kDuration));
    Json::Value info;
    info[member::kChannelName] = TextOf(record, member::kChannelName);
    info[member::kChannelId] = TextOf(record, member::kChannelId);
    info[member::kStartDate] = LocalText(start, kDate);
    info[member::kStartTime] = LocalText(start, "%R");
    info["start_weekday"] = LocalText(start, "%w");
    info["today_date"] = LocalText(now, kDate);
    info[member::kDuration] = duration;
    info[member::kTitle] = TextOf(record, member::kEventName);
    info[member::kDescription] = TextOf(record, member::kTextName);
    info[member::kIsRepeat] = MemberOf(record, member::kIsRepeat);
    info[member::kWeekdayStatus] = TextOf(record, member::kWeekdayStatus);
    info[member::kEndDate] = TextOf(record, member::kEndDate);
    return info;
}

} // namespace

void ScheduleRecordingAPI::GetUserDefineInfo()
{
    int start = -1;
    bool const isParsed = KALD::WebAPIUtil::ParseInt(m_request.In("start_time", "-1"), &start);
    std::optional<int> const tuner = RequestTuner();
    if (!isParsed || !tuner) {
        SetError(kErrorBadParameter);
        return;
    }
    std::time_t const now = ::time(nullptr);
    Json::Value record;
    bool const isStored =
        start >= 0 && KALDTremolane::ReadUserDefineFromFile(record, start, *tuner) >= 0;
    Json::Value info = isStored ? InfoOf(record, IntOf(record, member::kStartTime), now)
                                : InfoOf(NewRecord(now), now, now);
    SetResponse(info);
}
