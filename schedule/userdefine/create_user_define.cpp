/// @file The method `create_userdefine`: the record first, then the schedule; if the store refuses
/// the schedule, the record is taken back.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "schedule/userdefine/scoped_flag.h"

bool ScheduleRecordingAPI::CreateUserDefine()
{
    m_innerCreate = false;
    bool isRepeat = false;
    bool const parsed = KALD::WebAPIUtil::ParseBool(GetParam("is_repeat", "").c_str(), &isRepeat);
    int const start = SaveUserDefineRecord();
    std::optional<int> const tuner = RequestTuner();
    if (!parsed || start < 1 || !tuner) {
        SetError(kErrorBadParameter);
        return false;
    }
    if (StoreUserDefine(isRepeat)) {
        return true;
    }
    RemoveUserDefineRecord(start, *tuner);
    return false;
}

bool ScheduleRecordingAPI::StoreUserDefine(bool isRepeat)
{
    ScopedFlag const inner(m_innerCreate);
    return isRepeat ? CreateRepeatSchedule() : CreateSchedule();
}
