/// @file The parameters that a method reads while a user-defined method runs through it.
///
/// The plain methods do not know on whose behalf they run. The client's texts never change; what a
/// stage of the request sees in their place is chosen here by the method and its flags.
#include "frame/schedule_recording_api.h"

#include "platform/record_members.h"
#include "platform/records.h"

#include <strings.h>

#include <optional>
#include <span>

namespace {

using namespace appliance;

/// Where the parameters of a stage come from.
enum class Source {
    kRequest,   ///< the request's own texts
    kRestore,   ///< the old schedule is restored: everything comes from its record
    kNewStart,  ///< the start is converted from the request's date and time
    kOldRecord, ///< a delete: the record names what to delete
};

/// A stage of a request. A flag without a value does not matter.
struct Stage {
    char const* method;
    std::optional<bool> restoreOld, innerCreate, deleteOld;
    Source source;
};

constexpr std::nullopt_t kAny = std::nullopt;

/// The first row that fits decides. If none fits, the source is the request.
constexpr Stage kStages[] = {
    {"edit_userdefine", true, kAny, kAny, Source::kRestore},
    {"edit_userdefine", false, true, kAny, Source::kNewStart},
    {"edit_userdefine", false, false, true, Source::kOldRecord},
    {"delete_userdefine", kAny, kAny, true, Source::kOldRecord},
    {"create_userdefine", kAny, true, kAny, Source::kNewStart},
};

bool Fits(std::optional<bool> wanted, bool flag)
{
    return wanted.value_or(flag) == flag;
}

std::string AsDecimal(Json::Value const& value)
{
    return std::to_string(AsInt(value));
}

std::string AsFlagText(Json::Value const& value)
{
    return AsFlag(value) ? "true" : "false";
}

/// A parameter and the member of the record that is served for it.
struct FieldMapping {
    char const* key;
    Json::StaticString field;
    std::string (*render)(Json::Value const& value);
};

FieldMapping const kRestore[] = {
    {"id", member::kChannelId, AsText},
    {"channel_name", member::kChannelName, AsText},
    {"title", member::kEventName, AsText},
    {"description", member::kTextName, AsText},
    {"start_time", member::kInputStartTime, AsText},
    {"start_date", member::kInputStartDate, AsText},
    {"duration", member::kInputDuration, AsText},
    {"is_repeat", member::kIsRepeat, AsFlagText},
    {"isweekly", member::kIsWeekly, AsFlagText},
    {"weekdaystatus", member::kWeekdayStatus, AsText},
    {"end_date", member::kEndDate, AsText},
};

FieldMapping const kOldRecord[] = {
    {"id", member::kStartTime, AsDecimal},
    {"channel_id", member::kChannelId, AsText},
};

/// Finds the mapping of a key, case-insensitively; null if the table has none.
FieldMapping const* Find(std::span<FieldMapping const> mappings, char const* key)
{
    for (FieldMapping const& mapping : mappings) {
        if (::strcasecmp(mapping.key, key) == 0) {
            return &mapping;
        }
    }
    return nullptr;
}

} // namespace

std::string ScheduleRecordingAPI::GetParam(char const* key, char const* fallback)
{
    Source source = Source::kRequest;
    for (Stage const& stage : kStages) {
        if (IsMethod(stage.method) && Fits(stage.restoreOld, m_restoreOld) &&
            Fits(stage.innerCreate, m_innerCreate) && Fits(stage.deleteOld, m_deleteOld)) {
            source = stage.source;
            break;
        }
    }
    bool const isStart = ::strcasecmp(key, "start_time") == 0;
    if (source == Source::kNewStart && isStart) {
        return std::to_string(
            DateTimeToEpoch(m_request.In("start_date", ""), m_request.In("start_time", "")));
    }
    if (source == Source::kRestore && isStart && m_innerCreate) { // the store takes the epoch
        return AsDecimal(MemberOf(m_userDefineRecord, member::kStartTime));
    }
    std::span<FieldMapping const> mappings;
    if (source == Source::kRestore) {
        mappings = kRestore;
    } else if (source == Source::kOldRecord) {
        mappings = kOldRecord;
    }
    FieldMapping const* const mapping = Find(mappings, key);
    return mapping != nullptr ? mapping->render(MemberOf(m_userDefineRecord, mapping->field))
                              : m_request.In(key, fallback);
}
