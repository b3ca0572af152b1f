/// @file The one-shot schedules of a tuner.
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/standin/record_store.h"
#include "platform/standin/unique_id.h"
#include "tremolane/recording_service.h"

#include <cerrno>
#include <cstdint>
#include <ctime>

namespace KALDTremolane {

namespace {

using namespace appliance;
using standin::ScheduleKey;

constexpr int kStatusWaiting = 4;

/// A text of one of the stored types: service numbers and frequencies may be numbers or texts.
std::string ChannelOf(Json::Value const& record)
{
    Json::Value const& frequency = record[member::kFrequency];
    std::string id = record[member::kServiceId].asString();
    return frequency.isInt() ? id + '@' + std::to_string(frequency.asInt()) : id;
}

/// Moves what is listed of a stored record into an object of its own.
Json::Value ListedForm(Json::Value& record)
{
    standin::RequireObject(record);
    Json::Value listed(Json::objectValue);
    listed[member::kId] = ChannelOf(record);
    for (Json::StaticString const& name :
         {member::kStartTime, member::kChannelName, member::kDescription, member::kDuration,
          member::kStatus, member::kTitle}) {
        listed[name].swap(record[name]);
    }
    return listed;
}

bool Matches(Json::Value const& record, ScheduleKey const& key)
{
    return record[member::kStartTime].asInt() == key.start &&
           record[member::kServiceId].asString() == std::to_string(key.service);
}

Json::Value NewRecord(ScheduleKey const& key, int tuner, char const* uid)
{
    standin::Details details = standin::DetailsOf(key.start, tuner);
    Json::Value record(Json::objectValue);
    record[member::kStartTime] = key.start;
    record[member::kServiceId] = key.service;
    if (key.frequency) {
        record[member::kFrequency] = *key.frequency;
    }
    record[member::kStatus] = kStatusWaiting;
    record[member::kChannelName].swap(details.channelName);
    record[member::kTitle].swap(details.title);
    record[member::kDescription].swap(details.description);
    record[member::kDuration] = details.duration;
    record[member::kUid] = uid;
    return record;
}

} // namespace

bool GetSchedule(Json::Value& out, int tuner)
{
    // Left to the end of the process: what is given back in between lies in small pieces all over
    // the heap, and a long list that is then built from them takes a third more time.
    static Json::Value& records = *new Json::Value;
    int const error = standin::LoadRecords(OneShotFile(tuner), records);
    if (!standin::Answer(out, error)) {
        return false;
    }
    Json::Value& list = out[member::kList] = Json::Value(Json::arrayValue);
    for (Json::Value& record : records) {
        list.append(ListedForm(record));
    }
    return true;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the appliance's library takes them by value
bool AddSchedule(Json::Value& out, int tuner, std::string id, std::string start, char const* uid)
{
    auto const key = standin::ParseKey(id, start);
    if (!key) {
        return standin::Answer(out, EINVAL);
    }
    return standin::Answer(out,
                           standin::ChangeRecords(OneShotFile(tuner), [&](Json::Value& records) {
                               for (Json::Value const& record : records) {
                                   standin::RequireObject(record);
                                   if (Matches(record, *key)) {
                                       return EEXIST;
                                   }
                               }
                               records.append(NewRecord(*key, tuner, uid));
                               return 0;
                           }));
}

bool DelSchedule(Json::Value& out, int tuner, char const* channelId, char const* start)
{
    auto const key = standin::ParseKey(channelId, start);
    if (!key) {
        return standin::Answer(out, EINVAL);
    }
    auto const isDropped = [&key](Json::Value const& record) { return Matches(record, *key); };
    return standin::Answer(out,
                           standin::ChangeRecords(OneShotFile(tuner), [&](Json::Value& records) {
                               return standin::DropRecords(records, isDropped) > 0 ? 0 : ENOENT;
                           }));
}

bool ScheduleDeletePass(Json::Value& out, int tuner)
{
    std::int64_t const now = ::time(nullptr);
    auto const isPassed = [now](Json::Value const& record) {
        return std::int64_t{record[member::kStartTime].asInt()} +
                   record[member::kDuration].asInt() <=
               now;
    };
    return standin::Answer(
        out, standin::ChangeRecords(OneShotFile(tuner), [&](Json::Value& records) {
            return standin::DropRecords(records, isPassed) > 0 ? 0 : standin::kUnchanged;
        }));
}

std::string GetFullPath(std::string const& share, std::string const& subpath)
{
    return std::string(kVolumeFolder) + '/' + share + '/' + subpath;
}

} // namespace KALDTremolane
