/// @file The methods `delete_repeat` and `getinfo_repeat`, which work on the repeat file itself.
#include "frame/schedule_recording_api.h"

#include "frame/decimal.h"
#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "schedule/data/log_source.h"
#include "schedule/data/schedule_file.h"
#include "schedule/data/unique_id.h"
#include "tremolane/recording_service.h"

#include <syslog.h>

#include <map>
#include <set>
#include <utility>

namespace {

using namespace appliance;

constexpr int kDeleteLoadLine = 1032;
constexpr int kDeleteSaveLine = 1051;
constexpr int kInfoLoadLine = 926;

/// Loads a repeat file; false, and the failure logged, if it does not load.
bool LoadRepeatFile(Json::Value& records, std::string const& path, int line)
{
    bool const loaded = LoadRecordFile(records, path) == RecordFile::kLoaded;
    if (!loaded) {
        ::syslog(LOG_ERR, "%s:%d Fail to load file %s", kLogSource, line, path.c_str());
    }
    return loaded;
}

/// The services to delete by their start. Two lists that pair by position; a channel's frequency is
/// no part of the key.
std::map<long, std::set<long>> PairKeys(Json::Value const& starts, Json::Value const& channels)
{
    std::map<long, std::set<long>> keys;
    for (Json::ArrayIndex j = 0; j < starts.size(); ++j) {
        keys[LeadingNumber(starts[j].asCString())].insert(LeadingNumber(channels[j].asCString()));
    }
    return keys;
}

/// The first record of a channel and start, or null.
Json::Value* Find(Json::Value& records, int service, int start)
{
    for (Json::Value& record : records) {
        if (record.isObject() && IntOf(record, member::kId) == service &&
            IntOf(record, member::kStartTime) == start) {
            return &record;
        }
    }
    return nullptr;
}

/// What a client sees of a record, its values as they are stored.
Json::Value InfoOf(Json::Value& record)
{
    Json::Value info(Json::objectValue);
    info[member::kId] = RenderUniqueId(record);
    for (Json::StaticString const& name :
         {member::kChannelName, member::kStartTime, member::kStartDate, member::kDuration,
          member::kTitle, member::kDescription, member::kIsWeekly, member::kWeekdayStatus,
          member::kEndDate}) {
        info[name].swap(record[name]);
    }
    return info;
}

} // namespace

bool ScheduleRecordingAPI::DeleteRepeatSchedule()
{
    Json::Value const starts = KALD::WebAPIUtil::ParseToArray(GetParam("id", "").c_str(), ",");
    Json::Value const channels =
        KALD::WebAPIUtil::ParseToArray(GetParam("channel_id", "").c_str(), ",");
    std::optional<int> const tuner = RequestTuner();
    if (!tuner || starts.empty() || channels.empty() || starts.size() != channels.size()) {
        SetError(kErrorBadParameter);
        return false;
    }
    std::string const path = RepeatFile(*tuner);
    Json::Value records;
    if (!LoadRepeatFile(records, path, kDeleteLoadLine)) {
        SetError(kErrorFailed);
        return false;
    }
    auto const keys = PairKeys(starts, channels);
    DropRecords(records, [&keys](Json::Value const& record) {
        auto const named = keys.find(IntOf(record, member::kStartTime));
        return named != keys.end() && named->second.contains(IntOf(record, member::kId));
    });
    if (records.isNull()) { // what a file holds that grew from nothing; a rewrite leaves an array
        records = Json::Value(Json::arrayValue);
    }
    if (!WebUtils::SaveJsonFile(records, path.c_str())) {
        ::syslog(LOG_ERR, "%s:%d Fail to save repeat schedule json. Path is %s", kLogSource,
                 kDeleteSaveLine, path.c_str());
        SetError(kErrorFailed);
        return false;
    }
    return true;
}

void ScheduleRecordingAPI::GetRepeatInfo()
{
    int start = -1;
    int service = 0;
    int frequency = 0;
    bool const hasStart = KALD::WebAPIUtil::ParseInt(m_request.In("start_time", "-1"), &start);
    std::optional<int> const tuner = RequestTuner();
    if (!hasStart || start < 0 ||
        KALDTremolane::KALDVideoDTVParserUniqueId(m_request.In("id", ""), &service, &frequency) !=
            0 ||
        !tuner) {
        SetError(kErrorBadParameter);
        return;
    }
    Json::Value records;
    if (!LoadRepeatFile(records, RepeatFile(*tuner), kInfoLoadLine)) {
        SetError(kErrorFailed);
        return;
    }
    if (Json::Value* const record = Find(records, service, start)) {
        Json::Value info = InfoOf(*record);
        SetResponse(info);
    }
}
