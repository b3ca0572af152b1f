/// @file The method `create`: one or several one-shot schedules.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "tremolane/recording_service.h"

namespace {

/// Whether a single channel id names a channel, as far as the parser reads it.
bool NamesChannel(std::string const& id)
{
    int service = 0;
    int frequency = 0;
    KALDTremolane::KALDVideoDTVParserUniqueId(id.c_str(), &service, &frequency);
    return service > 0 || frequency > 0;
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
    std::optional<std::string> const uid = OneShotOwner();
    if (!uid) {
        return false;
    }
    bool const stored =
        isList ? StoreSchedules(*tuner, id, start, *uid) : StoreSchedule(*tuner, id, start, *uid);
    return stored && ReloadDaemon();
}

bool ScheduleRecordingAPI::StoreSchedule(int tuner, std::string const& id, std::string const& start,
                                         std::string const& uid)
{
    Json::Value out;
    if (!KALDTremolane::AddSchedule(out, tuner, id, start, uid.c_str())) {
        ReportLibraryError(out);
        return false;
    }
    return true;
}

bool ScheduleRecordingAPI::StoreSchedules(int tuner, std::string const& ids,
                                          std::string const& starts, std::string const& uid)
{
    Json::Value const idPieces = KALD::WebAPIUtil::ParseToArray(ids.c_str(), ",");
    Json::Value const startPieces = KALD::WebAPIUtil::ParseToArray(starts.c_str(), ",");
    Json::Value out;
    int code = kErrorFailed; // of the last position that failed with an errno
    bool allStored = true;
    for (Json::ArrayIndex i = 0; i < idPieces.size(); ++i) {
        std::string const start = startPieces[i].asString(); // empty beyond the last piece
        if (KALDTremolane::AddSchedule(out, tuner, idPieces[i].asString(), start, uid.c_str())) {
            continue;
        }
        allStored = false;
        Json::Value const& error = appliance::MemberOf(out, appliance::member::kErrno);
        code = error.isNull() ? code : MappErrorCode(appliance::AsInt(error));
    }
    if (!allStored) {
        SetError(code);
    }
    return allStored;
}
