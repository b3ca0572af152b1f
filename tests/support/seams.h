/// @file What the test program puts in the place of the C library: the system log, the
/// clock and files that do not open.
#pragma once

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

/// Back to the state before a test.
void Reset();

} // namespace seams
