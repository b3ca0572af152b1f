/// @file Loading a tuner's repeat file.
#include "schedule/plain/repeat_file.h"

#include "schedule/data/schedule_file.h"

#include <syslog.h>

bool LoadRepeatFile(Json::Value& records, std::string const& path, SupportCode code)
{
    bool const isLoaded = LoadRecordFile(records, path) == RecordFile::kLoaded;
    if (!isLoaded) {
        ::syslog(LOG_ERR, "%s:%d Fail to load file %s", kLogSource, code, path.c_str());
    }
    return isLoaded;
}
