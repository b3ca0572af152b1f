/// @file Stores of schedule records over JSON files.
#include "platform/standin/record_store.h"

#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/standin/documents.h"
#include "tremolane/recording_service.h"

#include <cerrno>
#include <utility>

namespace standin {

namespace {

using namespace appliance;

constexpr int kDefaultDuration = 1800;

constexpr int kWebApiErrorFailed = 100;
struct ErrorCode {
    int error, code;
};
constexpr ErrorCode kErrorCodes[] = {{EINVAL, 101}, {EEXIST, 401}, {ENOENT, 402}, {EIO, 403}};

} // namespace

int LoadRecords(std::string const& path, Json::Value& records, ElementHook const& hook)
{
    if (LoadDocument(path, records, hook) == Load::kBroken) {
        return EIO;
    }
    if (records.isNull()) {
        records = Json::Value(Json::arrayValue);
    }
    return records.isArray() ? 0 : EIO;
}

int ChangeRecords(std::string const& path, std::function<int(Json::Value& records)> const& change)
{
    Json::Value records;
    int error = LoadRecords(path, records);
    if (error == 0) {
        error = change(records);
    }
    if (error == kUnchanged) {
        return 0;
    }
    return error == 0 && !ReplaceFile(path, records) ? EIO : error;
}

bool Answer(Json::Value& out, int error)
{
    out = Json::Value();
    if (error != 0) {
        out[member::kErrno] = error;
    }
    return error == 0;
}

int DurationOf(Json::Value const& record)
{
    int const duration = IntOf(record, member::kDuration);
    return duration > 0 ? duration : kDefaultDuration;
}

Details DetailsOf(int start, int tuner)
{
    Json::Value record;
    KALDTremolane::ReadUserDefineFromFile(record, start, tuner);
    return {TextOf(record, member::kChannelName), TextOf(record, member::kEventName),
            TextOf(record, member::kTextName), DurationOf(record)};
}

} // namespace standin

int MappErrorCode(int error)
{
    for (auto const& known : standin::kErrorCodes) {
        if (known.error == error) {
            return known.code;
        }
    }
    return standin::kWebApiErrorFailed;
}
