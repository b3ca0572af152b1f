/// @file The method `delete_repeat`: rewrites the repeat file without the named schedules.
#include "frame/schedule_recording_api.h"

#include "frame/decimal.h"
#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "schedule/data/schedule_file.h"

#include <syslog.h>

#include <cstdint>
#include <set>
#include <utility>

bool ScheduleRecordingAPI::DeleteRepeatSchedule()
{
    using namespace appliance;
    using KALD::WebAPIUtil::ParseToArray;
    Json::Value const starts = ParseToArray(GetParam("id", "").c_str(), ",");
    Json::Value const channels = ParseToArray(GetParam("channel_id", "").c_str(), ",");
    std::optional<int> const tuner = RequestTuner();
    if (!tuner || starts.empty() || channels.empty() || starts.size() != channels.size()) {
        SetError(kErrorBadParameter);
        return false;
    }
    std::string const path = RepeatFile(*tuner);
    Json::Value records;
    if (!LoadRepeatFile(records, path, kRepeatDeleteLoad)) {
        SetError(kErrorFailed);
        return false;
    }
    // Start and service number, paired by position. The frequency is not part of the key.
    std::set<std::pair<std::int64_t, std::int64_t>> keys;
    for (Json::ArrayIndex j = 0; j < starts.size(); ++j) {
        keys.emplace(ParseNumberPrefix(starts[j].asCString()),
                     ParseNumberPrefix(channels[j].asCString()));
    }
    DropRecords(records, [&keys](Json::Value const& record) {
        return keys.contains({IntOf(record, member::kStartTime), IntOf(record, member::kId)});
    });
    if (records.isNull()) { // a rewritten repeat file always holds an array
        records = Json::Value(Json::arrayValue);
    }
    if (!WebUtils::SaveJsonFile(records, path.c_str())) {
        ::syslog(LOG_ERR, "%s:%d Fail to save repeat schedule json. Path is %s", kLogSource,
                 kRepeatDeleteSave, path.c_str());
        SetError(kErrorFailed);
        return false;
    }
    return true;
}
