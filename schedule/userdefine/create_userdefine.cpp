/// @file The method `create_userdefine`: saves the record first, then stores the schedule. If the
/// store refuses the schedule, the record is removed again.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"

bool ScheduleRecordingAPI::CreateUserDefine()
{
    bool isRepeat = false;
    KALD::WebAPIUtil::ParseBool(GetParam("is_repeat", "").c_str(), &isRepeat);
    int const start = SaveUserDefineRecord();
    if (start < 1) {
        SetError(kErrorBadParameter);
        return false;
    }
    m_innerCreate = true;
    bool const isStored = isRepeat ? CreateRepeatSchedule() : CreateSchedule();
    m_innerCreate = false;
    if (!isStored) {
        RemoveUserDefineRecord(start, *RequestTuner()); // without a tuner nothing was saved
    }
    return isStored;
}
