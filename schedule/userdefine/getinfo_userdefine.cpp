/// @file The method `getinfo_userdefine`: answers a stored schedule, or the defaults of a new one,
/// as a client edits it.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "tremolane/recording_service.h"

#include <ctime>

namespace {

using namespace appliance;

constexpr char kDate[] = "%Y-%m-%d";
constexpr char kTimeOfDay[] = "%R";
constexpr char kWeekday[] = "%w"; ///< Sunday is 0

Json::StaticString const kStartWeekday{"start_weekday"};
Json::StaticString const kTodayDate{"today_date"};

/// Renders a local date or time; empty if the time cannot be broken down.
std::string LocalText(std::time_t time, char const* format)
{
    std::tm local{};
    char text[64];
    if (::localtime_r(&time, &local) == nullptr) {
        return "";
    }
    return {text, std::strftime(text, sizeof text, format, &local)};
}

/// Renders seven flags, Sunday first, of which only the one of `weekday` is set.
std::string FlagsOf(std::string const& weekday)
{
    std::string flags;
    for (int day = 0; day < 7; ++day) {
        flags += day > 0 ? "," : "";
        flags += std::to_string(day) == weekday ? '1' : '0';
    }
    return flags;
}

/// Fills in what both answers show of a start.
Json::Value StartInfo(std::time_t start, std::time_t now)
{
    Json::Value info(Json::objectValue);
    info[member::kStartDate] = LocalText(start, kDate);
    info[member::kStartTime] = LocalText(start, kTimeOfDay);
    info[kStartWeekday] = LocalText(start, kWeekday);
    info[kTodayDate] = LocalText(now, kDate);
    return info;
}

Json::Value StoredScheduleInfo(Json::Value const& record, std::time_t now)
{
    char duration[64];
    ScheduleRecordingAPI::SecondsToTimeText(duration, sizeof duration,
                                            IntOf(record, member::kDuration));
    Json::Value info = StartInfo(IntOf(record, member::kStartTime), now);
    info[member::kChannelName] = TextOf(record, member::kChannelName);
    info[member::kChannelId] = TextOf(record, member::kChannelId);
    info[member::kDuration] = duration;
    info[member::kTitle] = TextOf(record, member::kEventName);
    info[member::kDescription] = TextOf(record, member::kTextName);
    info[member::kIsRepeat] = MemberOf(record, member::kIsRepeat);
    info[member::kWeekdayStatus] = TextOf(record, member::kWeekdayStatus);
    info[member::kEndDate] = TextOf(record, member::kEndDate);
    return info;
}

Json::Value NewScheduleInfo(std::time_t now)
{
    Json::Value info = StartInfo(now, now);
    info[member::kChannelName] = "";
    info[member::kChannelId] = "";
    info[member::kDuration] = "00:30";
    info[member::kTitle] = "";
    info[member::kDescription] = "";
    info[member::kIsRepeat] = false;
    info[member::kWeekdayStatus] = FlagsOf(info[kStartWeekday].asString());
    info[member::kEndDate] = "1";
    return info;
}

} // namespace

void ScheduleRecordingAPI::GetUserDefineInfo()
{
    int start = -1;
    bool const isParsed = KALD::WebAPIUtil::ParseInt(m_request.In("start_time", "-1"), &start);
    std::optional<int> const tuner = RequestTuner();
    if (!isParsed || !tuner) {
        SetError(kErrorBadParameter);
        return;
    }
    std::time_t const now = ::time(nullptr);
    Json::Value record;
    bool const isStored =
        start >= 0 && KALDTremolane::ReadUserDefineFromFile(record, start, *tuner) >= 0;
    Json::Value info = isStored ? StoredScheduleInfo(record, now) : NewScheduleInfo(now);
    SetResponse(info);
}
