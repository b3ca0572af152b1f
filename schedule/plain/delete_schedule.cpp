/// @file The methods `delete` and `delete_passed`: one-shot schedules and running recordings.
#include "frame/schedule_recording_api.h"

#include "frame/decimal.h"
#include "frame/web_api_error.h"
#include "tremolane/recording_service.h"
#include "tremolane/tuner_daemon.h"

namespace {

// What DeleteSchedule() answers. The second does not tell failure from success.
constexpr int kReloadLeftToCaller = 0;
constexpr int kEnded = 1;

constexpr int kAny = -1; ///< three of them stop whatever the tuner records

} // namespace

int ScheduleRecordingAPI::DeleteSchedule()
{
    std::string const start = GetParam("id", "");
    std::string const channelId = GetParam("channel_id", "");
    std::optional<int> const tuner = RequestTuner();
    if (!tuner) {
        SetError(kErrorBadParameter);
        return kEnded;
    }
    bool const stopped =
        start.empty() ? StopTuner(*tuner) : RemoveSchedule(*tuner, start, channelId);
    if (!stopped) {
        return kEnded;
    }
    if (IsMethod("delete_userdefine")) {
        return kReloadLeftToCaller; // once for a whole list
    }
    ReloadDaemon();
    return kEnded;
}

bool ScheduleRecordingAPI::StopTuner(int tuner)
{
    bool const stopped = KALDDTVDStopRecording(tuner, kAny, kAny, kAny);
    if (!stopped) {
        SetError(kErrorFailed);
    }
    return stopped;
}

bool ScheduleRecordingAPI::RemoveSchedule(int tuner, std::string const& start,
                                          std::string const& channelId)
{
    int service = 0;
    int frequency = 0;
    if (channelId.empty() ||
        KALDTremolane::KALDVideoDTVParserUniqueId(channelId.c_str(), &service, &frequency) != 0) {
        SetError(kErrorBadParameter);
        return false;
    }
    Json::Value out;
    if (!KALDTremolane::DelSchedule(out, tuner, channelId.c_str(), start.c_str())) {
        ReportLibraryError(out);
        return false;
    }
    if (!KALDDTVDStopRecording(tuner, LeadingInt(start.c_str()), frequency, service)) {
        SetError(kErrorFailed);
        return false;
    }
    return true;
}

void ScheduleRecordingAPI::DeletePassedSchedule()
{
    std::optional<int> const tuner = RequestTuner();
    if (!tuner) {
        SetError(kErrorBadParameter);
        return;
    }
    Json::Value out;
    if (!KALDTremolane::ScheduleDeletePass(out, *tuner)) {
        ReportLibraryError(out);
    }
}
