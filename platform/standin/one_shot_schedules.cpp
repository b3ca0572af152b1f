/// @file The store operations on the one-shot schedules of a tuner.
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/schedule_status.h"
#include "platform/standin/record_store.h"
#include "platform/standin/schedule_key.h"
#include "tremolane/recording_service.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <ctime>
#include <set>
#include <string>
#include <utility>

namespace KALDTremolane {

namespace {

using namespace appliance;
using namespace standin;

/// The members of a record that its entry in the list is made from, and its id.
Json::Value ListedForm()
{
    Json::Value form;
    for (Json::StaticString const& name :
         {member::kStartTime, member::kChannelName, member::kDescription, member::kDuration,
          member::kStatus, member::kTitle, member::kServiceId, member::kFrequency, member::kId}) {
        form[name] = Json::Value();
    }
    return form;
}

/// Turns a stored record into its entry in the list, in place: a second document would need as much
/// memory as the store again.
void ToListEntry(Json::Value& record)
{
    std::string id = TextOf(record, member::kServiceId); // stored as a number or as text
    if (auto const frequency = FrequencyOf(record[member::kFrequency])) {
        id += '@' + std::to_string(*frequency);
    }
    record.removeMember(member::kServiceId);
    record.removeMember(member::kFrequency);
    record[member::kId] = id;
}

/// Whether a stored record belongs to the schedule that a key names.
struct BelongsTo {
    ScheduleKey const& key;

    bool operator()(Json::Value const& record) const
    {
        return IntOf(record, member::kStartTime) == key.start &&
               TextOf(record, member::kServiceId) == std::to_string(key.service);
    }
};

/// Returns the starts and services of the schedules in a store that the request has saved before,
/// so that a list of schedules does not search it for each of them. Null for another store: the
/// first search costs less than an index.
Document::Keys* FindKeys(std::string const& path, Document& records)
{
    if (Transaction::FindSaved(path) == nullptr) {
        return nullptr;
    }
    if (!records.keys) {
        records.keys.emplace();
        for (Json::Value const& record : records.value) {
            records.keys->emplace(IntOf(record, member::kStartTime),
                                  TextOf(record, member::kServiceId));
        }
    }
    return &*records.keys;
}

} // namespace

bool GetSchedule(Json::Value& out, int tuner)
{
    Json::Value records;
    if (!SetErrno(out, LoadRecords(OneShotFile(tuner), records, ListedForm()))) {
        return false;
    }
    DropElements(records, [](Json::Value const& element) { return !element.isObject(); });
    for (Json::Value& record : records) {
        ToListEntry(record);
    }
    out[member::kList].swap(records);
    return true;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the appliance's library takes them by value
bool AddSchedule(Json::Value& out, int tuner, std::string id, std::string start, char const* uid)
{
    std::string const path = OneShotFile(tuner);
    auto const add = [=](Document& records, ScheduleKey const& key) {
        auto* const keys = FindKeys(path, records);
        bool const isNew = keys != nullptr
                               ? keys->emplace(key.start, std::to_string(key.service)).second
                               : std::ranges::none_of(records.value, BelongsTo{key});
        if (!isNew) {
            return EEXIST;
        }
        Json::Value record = NewRecord(key, kStatusWaiting, tuner, uid);
        record[member::kServiceId] = key.service;
        records.value.append(std::move(record));
        return 0;
    };
    return ChangeSchedule(out, path, id, start, add);
}

bool DelSchedule(Json::Value& out, int tuner, char const* channelId, char const* start)
{
    std::string const path = OneShotFile(tuner);
    auto const remove = [&path](Document& records, ScheduleKey const& key) {
        auto* const keys = FindKeys(path, records);
        bool const isStored =
            keys == nullptr || keys->erase({key.start, std::to_string(key.service)}) > 0;
        return isStored && DropRecords(records.value, BelongsTo{key}) ? 0 : ENOENT;
    };
    return ChangeSchedule(out, path, channelId, start, remove);
}

bool ScheduleDeletePass(Json::Value& out, int tuner)
{
    std::int64_t const now = ::time(nullptr);
    auto const isPassed = [now](Json::Value const& record) {
        Json::Value const& start = MemberOf(record, member::kStartTime);
        return start.isInt() && std::int64_t{start.asInt()} + DurationOf(record) <= now;
    };
    return ChangeRecords(out, OneShotFile(tuner), [&](Document& records) {
        records.keys.reset();
        return DropRecords(records.value, isPassed) ? 0 : kUnchanged;
    });
}

std::string GetFullPath(std::string const& share, std::string const& subpath)
{
    return std::string(kVolumeFolder) + '/' + share + '/' + subpath;
}

} // namespace KALDTremolane
