/// @file Stores of schedule records.
#include "platform/standin/record_store.h"

#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/standin/documents.h"
#include "tremolane/recording_service.h"

#include <syslog.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <utility>

namespace standin {

using namespace appliance;

int LoadRecords(std::string const& path, Json::Value& records, Json::Value const& form)
{
    Load const result = LoadDocument(path, records, form);
    if (records.isNull() && (result == Load::kLoaded || result == Load::kMissing)) {
        records = Json::Value(Json::arrayValue);
    }
    if (records.isArray()) {
        return 0;
    }
    char const* const reason = result == Load::kUnreadable ? std::strerror(errno)
                               : result == Load::kNotJson  ? "it is not JSON"
                                                           : "it holds no array";
    ::syslog(LOG_ERR, "cannot load %s: %s", path.c_str(), reason);
    return EIO;
}

bool ChangeRecords(Json::Value& out, std::string const& path,
                   std::function<int(Document& records)> const& change)
{
    Document loaded;
    Document* const saved = Transaction::FindSaved(path);
    Document& records = saved != nullptr ? *saved : loaded;
    int error = saved != nullptr ? 0 : LoadRecords(path, loaded.value);
    if (error == 0) {
        error = change(records);
    }
    if (error == 0 && !SaveDocument(path, std::move(records))) {
        ::syslog(LOG_ERR, "cannot save %s: %s", path.c_str(), std::strerror(errno));
        error = EIO;
    }
    return SetErrno(out, error == kUnchanged ? 0 : error);
}

bool ChangeSchedule(Json::Value& out, std::string const& path, std::string const& id,
                    std::string const& start,
                    std::function<int(Document& records, ScheduleKey const& key)> const& change)
{
    auto const key = ParseKey(id, start);
    return key ? ChangeRecords(out, path, [&](Document& records) { return change(records, *key); })
               : SetErrno(out, EINVAL);
}

bool SetErrno(Json::Value& out, int error)
{
    out = Json::Value();
    if (error != 0) {
        out[member::kErrno] = error;
    }
    return error == 0;
}

int DurationOf(Json::Value const& record)
{
    constexpr int kDefaultDuration = 1800;
    int const duration = IntOf(record, member::kDuration);
    return duration > 0 ? duration : kDefaultDuration;
}

Json::Value NewRecord(ScheduleKey const& key, int status, int tuner, char const* uid)
{
    Json::Value details;
    KALDTremolane::ReadUserDefineFromFile(details, key.start, tuner);
    Json::Value record(Json::objectValue);
    record[member::kStartTime] = key.start;
    if (key.frequency) {
        record[member::kFrequency] = *key.frequency;
    }
    record[member::kStatus] = status;
    record[member::kChannelName] = TextOf(details, member::kChannelName);
    record[member::kTitle] = TextOf(details, member::kEventName);
    record[member::kDescription] = TextOf(details, member::kTextName);
    record[member::kDuration] = DurationOf(details);
    record[member::kUid] = uid;
    return record;
}

} // namespace standin

int MappErrorCode(int error)
{
    static std::map<int, int> const kCodes{{EINVAL, 101}, {EEXIST, 401}, {ENOENT, 402}, {EIO, 403}};
    auto const found = kCodes.find(error);
    return found != kCodes.end() ? found->second : 100;
}
