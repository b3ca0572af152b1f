/// @file Loading files of schedule records.
#include "schedule/data/schedule_file.h"

#include "kald/web_utils.h"

#include <unistd.h>

#include <cerrno>

RecordFile LoadRecordFile(Json::Value& records, std::string const& path)
{
    records = Json::Value();
    if (!WebUtils::LoadJsonFile(records, path.c_str())) {
        bool const isMissing = ::access(path.c_str(), F_OK) != 0 && errno == ENOENT;
        return isMissing ? RecordFile::kMissing : RecordFile::kUnreadable;
    }
    if (!records.isArray() && !records.isNull()) {
        records = Json::Value();
        return RecordFile::kUnreadable;
    }
    return RecordFile::kLoaded;
}
