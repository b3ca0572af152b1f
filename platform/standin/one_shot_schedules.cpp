/// @file The one-shot schedules of a tuner.
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/standin/record_store.h"
#include "platform/standin/unique_id.h"
#include "tremolane/recording_service.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <iterator>

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
    return frequency.isInt() ? id + '@' + frequency.asString() : id;
}

/// The members that are listed, in the order in which a document keeps them.
Json::StaticString const kListed[] = {member::kChannelName, member::kDescription, member::kDuration,
                                      member::kId,          member::kStartTime,   member::kStatus,
                                      member::kTitle};

bool HasJustListed(Json::Value const& record)
{
    auto present = record.begin();
    return record.size() == std::size(kListed) &&
           std::all_of(std::begin(kListed), std::end(kListed),
                       [&present](char const* name) { return (present++).name() == name; });
}

/// Makes of a stored record what is listed of it. In place where it can: a page of new objects
/// costs as much as the parse.
void MakeListed(Json::Value& record)
{
    standin::RequireObject(record);
    Json::Value id = ChannelOf(record);
    for (char const* const name :
         {member::kServiceId.c_str(), member::kFrequency.c_str(), member::kUid.c_str()}) {
        record.removeMember(name);
    }
    record[member::kId].swap(id);
    if (HasJustListed(record)) {
        return;
    }
    Json::Value listed(Json::objectValue);
    for (Json::StaticString const& name : kListed) {
        listed[name].swap(record[name]);
    }
    record.swap(listed);
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
    Json::Value records;
    int const error = standin::LoadRecords(OneShotFile(tuner), records);
    if (!standin::Answer(out, error)) {
        return false;
    }
    for (Json::Value& record : records) {
        MakeListed(record);
    }
    out[member::kList].swap(records);
    return true;
}

// The texts come by value: so the library declares it.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
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
