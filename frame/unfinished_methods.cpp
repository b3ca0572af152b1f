/// @file Methods that are not built yet: each fails and changes nothing.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"

bool ScheduleRecordingAPI::CreateSchedule()
{
    SetError(kErrorFailed);
    return false;
}

int ScheduleRecordingAPI::DeleteSchedule()
{
    SetError(kErrorFailed);
    return 1;
}

void ScheduleRecordingAPI::DeletePassedSchedule()
{
    SetError(kErrorFailed);
}

bool ScheduleRecordingAPI::CreateRepeatSchedule()
{
    SetError(kErrorFailed);
    return false;
}

void ScheduleRecordingAPI::EditRepeatSchedule()
{
    SetError(kErrorFailed);
}

bool ScheduleRecordingAPI::DeleteRepeatSchedule()
{
    SetError(kErrorFailed);
    return false;
}

void ScheduleRecordingAPI::GetRepeatInfo()
{
    SetError(kErrorFailed);
}

bool ScheduleRecordingAPI::CreateUserDefine()
{
    SetError(kErrorFailed);
    return false;
}

void ScheduleRecordingAPI::EditUserDefine()
{
    SetError(kErrorFailed);
}

void ScheduleRecordingAPI::DeleteUserDefine()
{
    SetError(kErrorFailed);
}

void ScheduleRecordingAPI::GetUserDefineInfo()
{
    SetError(kErrorFailed);
}
