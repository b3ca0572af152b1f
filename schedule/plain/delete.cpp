/// @file The methods `delete` and `delete_passed`: one-shot schedules and running recordings.
#include "frame/schedule_recording_api.h"

#include "frame/decimal.h"
#include "frame/web_api_error.h"
#include "tremolane/recording_service.h"
#include "tremolane/tuner_daemon.h"

namespace {

constexpr int kAny = -1; ///< given three times, it stops whatever the tuner records

} // namespace

void ScheduleRecordingAPI::DeleteSchedule()
{
    std::string const start = GetParam("id", "");
    std::string const channelId = GetParam("channel_id", "");
    std::optional<int> const tuner = RequestTuner();
    int service = kAny;
    int frequency = kAny;
    bool const namesSchedule = !start.empty();
    if (!tuner || (namesSchedule &&
                   (channelId.empty() || KALDTremolane::KALDVideoDTVParserUniqueId(
                                             channelId.c_str(), &service, &frequency) != 0))) {
        SetError(kErrorBadParameter);
        return;
    }
    Json::Value out;
    if (namesSchedule &&
        !KALDTremolane::DelSchedule(out, *tuner, channelId.c_str(), start.c_str())) {
        ReportLibraryError(out);
        return;
    }
    int const startTime = namesSchedule ? static_cast<int>(ParseNumberPrefix(start.c_str())) : kAny;
    if (!KALDDTVDStopRecording(*tuner, startTime, frequency, service)) {
        SetError(kErrorFailed);
        return;
    }
    if (!IsMethod("delete_userdefine")) { // which reloads once for the whole list
        ReloadDaemon();
    }
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
