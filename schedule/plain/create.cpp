/// @file The method `create`: stores one or several one-shot schedules.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "tremolane/recording_service.h"

namespace {

using namespace appliance;

/// Returns whether a single channel id names a channel, as far as the parser can read it.
bool NamesChannel(std::string const& id)
{
    int service = 0;
    int frequency = 0;
    KALDTremolane::KALDVideoDTVParserUniqueId(id.c_str(), &service, &frequency);
    return service > 0 || frequency > 0;
}

/// Stores a schedule for each id, with the start at the same position, or an empty one beyond the
/// last. Tries every position. Returns none if all were stored, otherwise an error code: that of
/// the last position that failed with an errno.
std::optional<int> StoreAll(int tuner, Json::Value const& ids, Json::Value const& starts,
                            std::string const& uid)
{
    Json::Value out; // for all positions: the errno of an earlier failure would stand anyway
    std::optional<int> code;
    for (Json::ArrayIndex i = 0; i < ids.size(); ++i) {
        if (!KALDTremolane::AddSchedule(out, tuner, ids[i].asString(), starts[i].asString(),
                                        uid.c_str())) {
            Json::Value const& error = MemberOf(out, member::kErrno);
            code = error.isNull() ? code.value_or(kErrorFailed) : MappErrorCode(AsInt(error));
        }
    }
    return code;
}

} // namespace

bool ScheduleRecordingAPI::CreateSchedule()
{
    std::string const start = GetParam("start_time", "");
    std::string const id = GetParam("id", "");
    std::optional<int> const tuner = RequestTuner();
    bool const isList = id.find(',') != std::string::npos;
    if (start.empty() || id.empty() || !tuner || (!isList && !NamesChannel(id))) {
        SetError(kErrorBadParameter);
        return false;
    }
    std::optional<std::string> const uid = CheckCanStore(false);
    if (!uid) {
        return false;
    }
    Json::Value const ids = KALD::WebAPIUtil::ParseToArray(id.c_str(), ",");
    Json::Value starts;
    starts.append(start); // a comma in the start alone makes no list
    if (isList) {
        starts = KALD::WebAPIUtil::ParseToArray(start.c_str(), ",");
    }
    std::optional<int> const error = StoreAll(*tuner, ids, starts, *uid);
    if (error) {
        SetError(*error);
        return false;
    }
    return ReloadDaemon();
}
