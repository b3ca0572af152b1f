/// @file The parameters that a method reads while a user-defined method runs through it.
///
/// The plain methods do not know on whose behalf they run. The client's texts never change; what a
/// stage of the request is to see in their place is chosen here by the method and its flags.
#include "frame/schedule_recording_api.h"

#include "platform/record_members.h"
#include "platform/records.h"

#include <strings.h>

namespace {

using namespace appliance;

enum class RuleSet {
    kNone,      ///< the request's own texts
    kRestore,   ///< the old schedule is put back: everything comes from its record
    kNewStart,  ///< the start is converted from the request's date and time
    kOldRecord, ///< a delete: the record names what to delete
};

enum class Flag { kOff, kOn, kAny };

struct Stage {
    char const* method;
    Flag restoreOld, innerCreate, deleteOld;
    RuleSet rules;
};

/// The first row that fits decides; where none does, the request's own texts hold.
constexpr Stage kStages[] = {
    {"edit_userdefine", Flag::kOn, Flag::kAny, Flag::kAny, RuleSet::kRestore},
    {"edit_userdefine", Flag::kOff, Flag::kOn, Flag::kAny, RuleSet::kNewStart},
    {"edit_userdefine", Flag::kOff, Flag::kOff, Flag::kOn, RuleSet::kOldRecord},
    {"delete_userdefine", Flag::kAny, Flag::kAny, Flag::kOn, RuleSet::kOldRecord},
    {"create_userdefine", Flag::kAny, Flag::kOn, Flag::kAny, RuleSet::kNewStart},
};

bool Fits(Flag wanted, bool isOn)
{
    return wanted == Flag::kAny || (wanted == Flag::kOn) == isOn;
}

std::string AsDecimal(Json::Value const& value)
{
    return std::to_string(AsInt(value));
}

std::string AsFlagText(Json::Value const& value)
{
    return AsFlag(value) ? "true" : "false";
}

/// Serves the field of a record for a key.
struct FieldRule {
    char const* key;
    Json::StaticString field;
    std::string (*render)(Json::Value const& value);
};

FieldRule const kRestore[] = {
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

/// In the inner create of a restore, before the rules above: the store takes the epoch.
FieldRule const kRestoreInner[] = {
    {"start_time", member::kStartTime, AsDecimal},
};

FieldRule const kOldRecord[] = {
    {"id", member::kStartTime, AsDecimal},
    {"channel_id", member::kChannelId, AsText},
};

/// The rule for a key, or null.
template <std::size_t size>
FieldRule const* Find(FieldRule const (&rules)[size], char const* key)
{
    for (FieldRule const& rule : rules) {
        if (::strcasecmp(rule.key, key) == 0) {
            return &rule;
        }
    }
    return nullptr;
}

FieldRule const* FindRestore(char const* key, bool isInner)
{
    FieldRule const* const inner = isInner ? Find(kRestoreInner, key) : nullptr;
    return inner != nullptr ? inner : Find(kRestore, key);
}

} // namespace

std::string ScheduleRecordingAPI::GetParam(char const* key, char const* fallback)
{
    RuleSet rules = RuleSet::kNone;
    for (Stage const& stage : kStages) {
        if (IsMethod(stage.method) && Fits(stage.restoreOld, m_restoreOld) &&
            Fits(stage.innerCreate, m_innerCreate) && Fits(stage.deleteOld, m_deleteOld)) {
            rules = stage.rules;
            break;
        }
    }
    FieldRule const* rule = nullptr;
    if (rules == RuleSet::kRestore) {
        rule = FindRestore(key, m_innerCreate);
    } else if (rules == RuleSet::kOldRecord) {
        rule = Find(kOldRecord, key);
    } else if (rules == RuleSet::kNewStart && ::strcasecmp(key, "start_time") == 0) {
        return std::to_string(
            DateTimeToEpoch(m_request.In("start_date", ""), m_request.In("start_time", "")));
    }
    return rule != nullptr ? rule->render(MemberOf(m_userDefineRecord, rule->field))
                           : m_request.In(key, fallback);
}
