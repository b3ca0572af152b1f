/// @file The client of the tuner daemon, which owns the running recordings.
#pragma once

/// Makes the daemon read the stored schedules again. False if it could not be told.
bool KALDDTVDReloadSchedule();

/// Stops the recording of one schedule, successfully also if it is not running; with -1 three
/// times, whatever the tuner records. `start` is epoch seconds. False if it could not be told.
bool KALDDTVDStopRecording(int tuner, int start, int frequency, int service);
