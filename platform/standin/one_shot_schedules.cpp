/// @file The one-shot schedules of a tuner.
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/standin/record_store.h"
#include "platform/standin/unique_id.h"
#include "tremolane/recording_service.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace KALDTremolane {

namespace {

using namespace appliance;
using standin::ScheduleKey;

constexpr int kStatusWaiting = 4;

std::string_view const kListed[] = {member::kStartTime.c_str(),   member::kChannelName.c_str(),
                                    member::kDescription.c_str(), member::kDuration.c_str(),
                                    member::kStatus.c_str(),      member::kTitle.c_str()};

/// The member of that name, which goes; null if there is none.
Json::Value Take(Json::Value& record, Json::StaticString const& name)
{
    Json::Value value;
    record.removeMember(name.c_str(), &value);
    return value;
}

void DropUnlisted(Json::Value& record)
{
    std::vector<std::string> unlisted;
    for (auto member = record.begin(); member != record.end(); ++member) {
        char const* end = nullptr;
        char const* const name = member.memberName(&end);
        if (std::ranges::find(kListed, std::string_view(name, end)) == std::end(kListed)) {
            unlisted.emplace_back(name, end);
        }
    }
    for (std::string const& name : unlisted) {
        record.removeMember(name);
    }
}

/// Turns a stored record into what is listed of it, where it stands: a list of its own would be as
/// large as the store once more.
void ToListEntry(Json::Value& record)
{
    std::string id = AsText(Take(record, member::kServiceId)); // stored as a number or as text
    if (auto const frequency = standin::FrequencyOf(Take(record, member::kFrequency))) {
        id += '@' + std::to_string(*frequency);
    }
    DropUnlisted(record);
    record[member::kId] = id;
}

/// Removes the elements that are no records.
void DropStrays(Json::Value& records)
{
    Json::Value kept(Json::arrayValue);
    for (Json::Value& record : records) {
        if (record.isObject()) {
            kept.append(std::move(record));
        }
    }
    records.swap(kept);
}

bool Matches(Json::Value const& record, ScheduleKey const& key)
{
    return IntOf(record, member::kStartTime) == key.start &&
           TextOf(record, member::kServiceId) == std::to_string(key.service);
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
    bool hasStrays = false; // elements that are no records
    int const error = standin::LoadRecords(OneShotFile(tuner), records, [&](Json::Value& record) {
        if (record.isObject()) {
            ToListEntry(record);
        } else {
            hasStrays = true;
        }
    });
    if (!standin::Answer(out, error)) {
        return false;
    }
    if (hasStrays) {
        DropStrays(records);
    }
    out[member::kList].swap(records);
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
                                   if (Matches(record, *key)) {
                                       return EEXIST;
                                   }
                               }
                               if (!standin::CanReadUserDefines()) {
                                   return EIO;
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
                               return DropRecords(records, isDropped) ? 0 : ENOENT;
                           }));
}

bool ScheduleDeletePass(Json::Value& out, int tuner)
{
    std::int64_t const now = ::time(nullptr);
    auto const isPassed = [now](Json::Value const& record) {
        Json::Value const& start = MemberOf(record, member::kStartTime);
        return start.isInt() && start.asInt() + standin::DurationOf(record) <= now;
    };
    return standin::Answer(out,
                           standin::ChangeRecords(OneShotFile(tuner), [&](Json::Value& records) {
                               return DropRecords(records, isPassed) ? 0 : standin::kUnchanged;
                           }));
}

std::string GetFullPath(std::string const& share, std::string const& subpath)
{
    return std::string(kVolumeFolder) + '/' + share + '/' + subpath;
}

} // namespace KALDTremolane
