/// @file The CGI program. It answers one request and exits.
#include "frame/schedule_recording_api.h"

int main()
{
    ScheduleRecordingAPI api;
    api.Run();
    return 0;
}
