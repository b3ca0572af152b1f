/// @file The method `create`: stores one or several one-shot schedules.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "tremolane/recording_service.h"

namespace {

using namespace appliance;

constexpr int kAllStored = 0;

/// Returns whether a single channel id names a channel, as far as the parser can read it.
bool NamesChannel(std::string const& id)
{
    int service = 0;
    int frequency = 0;
    KALDTremolane::KALDVideoDTVParserUniqueId(id.c_str(), &service, &frequency);
    return service > 0 || frequency > 0;
}

/// Stores a schedule for each piece of comma-separated `ids`, with the start at the same position
/// of `starts`. Tries every position. Returns kAllStored, or an error code: that of the last
/// position that failed with an errno.
int StoreList(int tuner, std::string const& ids, std::string const& starts, std::string const& uid)
{
    Json::Value const idPieces = KALD::WebAPIUtil::ParseToArray(ids.c_str(), ",");
    Json::Value const startPieces = KALD::WebAPIUtil::ParseToArray(starts.c_str(), ",");
    Json::Value out;
    int code = kErrorFailed;
    bool areAllStored = true;
    for (Json::ArrayIndex i = 0; i < idPieces.size(); ++i) {
        std::string const start = startPieces[i].asString(); // empty beyond the last piece
        if (KALDTremolane::AddSchedule(out, tuner, idPieces[i].asString(), start, uid.c_str())) {
            continue;
        }
        areAllStored = false;
        Json::Value const& error = MemberOf(out, member::kErrno);
        code = error.isNull() ? code : MappErrorCode(AsInt(error));
    }
    return areAllStored ? kAllStored : code;
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
    Json::Value out;
    if (isList) {
        int const code = StoreList(*tuner, id, start, *uid);
        if (code != kAllStored) {
            SetError(code);
            return false;
        }
    } else if (!KALDTremolane::AddSchedule(out, *tuner, id, start, uid->c_str())) {
        ReportLibraryError(out);
        return false;
    }
    return ReloadDaemon();
}
