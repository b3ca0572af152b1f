/// @file The method `create_userdefine`: saves the record first, then stores the schedule. If the
/// store refuses the schedule, the record is removed again.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "schedule/userdefine/scoped_flag.h"

bool ScheduleRecordingAPI::CreateUserDefine()
{
    m_innerCreate = false;
    bool isRepeat = false;
    bool const isParsed = KALD::WebAPIUtil::ParseBool(GetParam("is_repeat", "").c_str(), &isRepeat);
    int const start = SaveUserDefineRecord();
    std::optional<int> const tuner = RequestTuner();
    if (!isParsed || start < 1 || !tuner) {
        SetError(kErrorBadParameter);
        return false;
    }
    bool isStored = false;
    {
        ScopedFlag const inner(m_innerCreate);
        isStored = isRepeat ? CreateRepeatSchedule() : CreateSchedule();
    }
    if (!isStored) {
        RemoveUserDefineRecord(start, *tuner);
    }
    return isStored;
}
