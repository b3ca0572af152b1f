/// @file The method `getinfo_repeat`: answers the details of one repeat schedule.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "schedule/data/channel_id.h"
#include "schedule/data/schedule_file.h"
#include "tremolane/recording_service.h"

namespace {

using namespace appliance;

/// Moves what a client is shown out of a record. The values stay as they are stored.
Json::Value TakeInfo(Json::Value& record)
{
    Json::Value info(Json::objectValue);
    info[member::kId] = RenderChannelId(record);
    for (Json::StaticString const& name :
         {member::kChannelName, member::kStartTime, member::kStartDate, member::kDuration,
          member::kTitle, member::kDescription, member::kIsWeekly, member::kWeekdayStatus,
          member::kEndDate}) {
        info[name].swap(record[name]);
    }
    return info;
}

} // namespace

void ScheduleRecordingAPI::GetRepeatInfo()
{
    int start = -1;
    int service = 0;
    int frequency = 0;
    KALD::WebAPIUtil::ParseInt(m_request.In("start_time", "-1"), &start);
    std::optional<int> const tuner = RequestTuner();
    if (start < 0 ||
        KALDTremolane::KALDVideoDTVParserUniqueId(m_request.In("id", ""), &service, &frequency) !=
            0 ||
        !tuner) {
        SetError(kErrorBadParameter);
        return;
    }
    Json::Value records;
    if (!LoadRepeatFile(records, RepeatFile(*tuner), kRepeatInfoLoad)) {
        SetError(kErrorFailed);
        return;
    }
    for (Json::Value& record : records) {
        if (record.isObject() && IntOf(record, member::kId) == service &&
            IntOf(record, member::kStartTime) == start) {
            Json::Value info = TakeInfo(record);
            SetResponse(info);
            return; // of several the first
        }
    }
}
