/// @file The client of the tuner daemon, which owns the running recordings.
#pragma once

/// Tells the daemon to reload the stored schedules. Returns false if the daemon cannot be reached.
bool KALDDTVDReloadSchedule();

/// Tells the daemon to stop the recording of one schedule; it need not be running. If `start`,
/// `frequency` and `service` are all -1, stops whatever the tuner records. `start` is in epoch
/// seconds. Returns false if the daemon cannot be reached.
bool KALDDTVDStopRecording(int tuner, int start, int frequency, int service);
