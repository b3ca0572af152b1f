/// @file Loading files of schedule records.
#include "schedule/data/schedule_file.h"

#include "kald/web_utils.h"

#include <sys/stat.h>
#include <syslog.h>

#include <cerrno>

RecordFile LoadRecordFile(Json::Value& records, std::string const& path)
{
    if (!WebUtils::LoadJsonFile(records, path.c_str())) {
        // A dangling link is not missing: its target may come back with the volume that holds it.
        struct stat info {};
        bool const isMissing = ::lstat(path.c_str(), &info) != 0 && errno == ENOENT;
        return isMissing ? RecordFile::kMissing : RecordFile::kUnreadable;
    }
    if (!records.isArray() && !records.isNull()) {
        records = Json::Value();
        return RecordFile::kUnreadable;
    }
    return RecordFile::kLoaded;
}

bool LoadRepeatFile(Json::Value& records, std::string const& path, SupportCode code)
{
    bool const isLoaded = LoadRecordFile(records, path) == RecordFile::kLoaded;
    if (!isLoaded) {
        ::syslog(LOG_ERR, "%s:%d Fail to load file %s", kLogSource, code, path.c_str());
    }
    return isLoaded;
}
