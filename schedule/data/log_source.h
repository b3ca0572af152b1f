/// @file The name under which the methods stand in the system log.
#pragma once

/// First argument of every log line, before a line number that names the failure to support.
inline constexpr char kLogSource[] = "schedule_recording";
