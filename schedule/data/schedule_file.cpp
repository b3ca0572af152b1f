/// @file Documents of schedule records.
#include "schedule/data/schedule_file.h"

#include "kald/web_utils.h"

#include <utility>

bool LoadRecordFile(Json::Value& records, std::string const& path)
{
    records = Json::Value();
    if (!WebUtils::LoadJsonFile(records, path.c_str())) {
        return false;
    }
    if (!records.isArray() && !records.isNull()) {
        records = Json::Value();
        return false;
    }
    for (Json::Value const& record : std::as_const(records)) {
        if (!record.isObject()) {
            throw Json::LogicError("a stored record is no object");
        }
    }
    return true;
}

void KeepRecords(Json::Value& records, Json::Value& kept,
                 std::function<bool(Json::Value const& record)> const& isDropped)
{
    for (Json::Value& record : records) {
        if (!isDropped(record)) {
            kept.append(std::move(record));
        }
    }
}
