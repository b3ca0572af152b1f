/// @file The CGI program: one request, then the end.
#include "frame/schedule_recording_api.h"

int main()
{
    ScheduleRecordingAPI api;
    api.Run();
    return 0;
}
