/// @file The parameters that a method reads while a user-defined method runs through it.
///
/// The plain methods do not know on whose behalf they run. The client's texts never change; what a
/// stage of the request sees in their place is chosen here by the method and its flags.
#include "frame/schedule_recording_api.h"

#include "platform/record_members.h"
#include "platform/records.h"
#include "schedule/userdefine/userdefine_file.h"

#include <strings.h>

#include <optional>

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

bool IsKey(char const* key, char const* name)
{
    return ::strcasecmp(key, name) == 0;
}

bool Fits(std::optional<bool> wanted, bool flag)
{
    return wanted.value_or(flag) == flag;
}

/// Returns a parameter of the old schedule; none if its record does not keep it. The start is the
/// client's text for a record, and an epoch for the store of an inner create.
std::optional<std::string> RestoredParam(Json::Value const& record, char const* key,
                                         bool isInnerCreate)
{
    if (isInnerCreate && IsKey(key, "start_time")) {
        return std::to_string(IntOf(record, member::kStartTime));
    }
    for (char const* const flag : {"is_repeat", "isweekly"}) { // the record has the same names
        if (IsKey(key, flag)) {
            return FlagOf(record, flag) ? "true" : "false";
        }
    }
    Json::StaticString const* const name = TextMemberOf(key);
    return name != nullptr ? std::optional(TextOf(record, *name)) : std::nullopt;
}

/// Returns a parameter of a delete from the record of what it deletes; none if it has none.
std::optional<std::string> DeleteParam(Json::Value const& record, char const* key)
{
    if (IsKey(key, "id")) {
        return std::to_string(IntOf(record, member::kStartTime));
    }
    return IsKey(key, "channel_id") ? std::optional(TextOf(record, member::kChannelId))
                                    : std::nullopt;
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
    std::optional<std::string> replacement;
    if (source == Source::kRestore) {
        replacement = RestoredParam(m_userDefineRecord, key, m_innerCreate);
    } else if (source == Source::kOldRecord) {
        replacement = DeleteParam(m_userDefineRecord, key);
    } else if (source == Source::kNewStart && IsKey(key, "start_time")) {
        replacement = std::to_string(
            DateTimeToEpoch(m_request.In("start_date", ""), m_request.In("start_time", "")));
    }
    return replacement.value_or(m_request.In(key, fallback));
}
