/// @file What the test program puts in the place of the C library: the system log, the clock, files
/// that do not open and the ids of the process.
#pragma once

#include <sys/types.h>

#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace seams {

struct LogLine {
    int priority;
    std::string text;
};

/// Every syslog line since the test began.
extern std::vector<LogLine> logged;

/// What time() answers; none: the real time.
extern std::optional<std::time_t> now;

/// The paths given to open() since the test began, and how many more of `failingPath` succeed.
extern std::vector<std::string> opened;
extern std::string failingPath;
extern int opensBeforeFailure;

/// Ids in the place of the process's effective ones, and the changes asked for.
struct Ids {
    uid_t uid;
    gid_t gid;
    int failing = 0;        ///< which change fails, from 1 on; 0: none
    std::string calls = {}; ///< "u0 ", "g0 ": a uid, a gid; "!" before it: not the effective alone.
                            ///< Between them stands what was logged, after its priority.
};

/// The ids that the calls see and change; none: the real ones.
extern std::optional<Ids> ids;

/// Back to the state before a test.
void Reset();

} // namespace seams
