/// @file The method `edit_userdefine`: validate, test for overlap, commit.
///
/// Nothing is changed in place. The new times are tested against the stored schedules, among which
/// the old one no longer counts. Then the old schedule is deleted and the new one created, through
/// the methods for that. If the create fails, the old one is created again from its record.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "platform/appliance_paths.h"
#include "platform/local_time.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/schedule_status.h"
#include "schedule/data/schedule_file.h"
#include "schedule/support_log.h"
#include "tremolane/recording_service.h"

#include <syslog.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <utility>

namespace {

using namespace appliance;

constexpr std::size_t kWeekdaysLength = 15; ///< of a longer list the rest is dropped
constexpr int kDaySeconds = 86400;
constexpr int kDaysOfWeek = 7;

/// The new schedule of an edit, and the start of the old one.
struct Edit {
    bool isRepeat = false;
    int start = 0;    ///< epoch seconds
    int duration = 0; ///< seconds
    int oldStart = 0; ///< epoch seconds
    bool isWeekly = false;
    std::string weekdays; ///< seven flags, Sunday first
    std::string endDate;
};

/// The schedules of a tuner, without the old one of an edit.
struct StoredSchedules {
    Json::Value oneShot; ///< array, or null if the file was not loaded; likewise `repeat`
    Json::Value repeat;
    std::optional<Json::Value> newOneShotFile; ///< array, or null if no record remains
};

/// Reads the parameters; returns false if one is missing or unusable.
bool ReadEdit(KALD::WebCGI& request, Edit& edit)
{
    using Api = ScheduleRecordingAPI;
    using KALD::WebAPIUtil::ParseBool;
    auto const text = [&request](char const* key) { return request.In(key, ""); };
    bool const hasKind = ParseBool(text("is_repeat"), &edit.isRepeat);
    edit.start = Api::DateTimeToEpoch(text("start_date"), text("start_time"));
    edit.duration = Api::TimeTextToSeconds(text("duration"));
    edit.oldStart = Api::DateTimeToEpoch(text("orig_start_date"), text("orig_start_time"));
    if (!hasKind || edit.start <= 0 || edit.duration <= 0 || edit.oldStart <= 0) {
        return false;
    }
    bool const hasWeekly = ParseBool(text("isweekly"), &edit.isWeekly);
    edit.endDate = text("end_date");
    edit.weekdays = std::string(text("weekdaystatus")).substr(0, kWeekdaysLength);
    return !edit.isRepeat || (hasWeekly && !edit.endDate.empty() && !edit.weekdays.empty());
}

/// Removes the schedule of the record `old`, which the overlap test must not find. A one-shot
/// schedule that an old repeat schedule generated last, and whose recording has not begun, would
/// collide with its own successor: it is removed too, from the file as well.
void RemoveOldSchedule(Json::Value const& old, StoredSchedules& stored)
{
    int const oldStart = IntOf(old, member::kStartTime);
    auto const isOld = [oldStart](Json::Value const& record) {
        return IntOf(record, member::kStartTime) == oldStart;
    };
    if (!FlagOf(old, member::kIsRepeat)) {
        DropRecords(stored.oneShot, isOld);
        return;
    }
    int generatedStart = 0; // of several repeat schedules the last one's
    for (Json::Value const& record : std::as_const(stored.repeat)) {
        generatedStart = isOld(record) ? IntOf(record, member::kLastCreateTime) : generatedStart;
    }
    DropRecords(stored.repeat, isOld);
    std::string const channelId = TextOf(old, member::kChannelId);
    bool const wasGenerated = DropRecords(stored.oneShot, [&](Json::Value const& record) {
        return IntOf(record, member::kStartTime) == generatedStart &&
               IntOf(record, member::kStatus) == kStatusWaiting &&
               TextOf(record, member::kServiceId) + '@' + TextOf(record, member::kFrequency) ==
                   channelId;
    });
    if (wasGenerated) { // a copy: the overlap test may change its documents
        stored.newOneShotFile = stored.oneShot.empty() ? Json::Value() : stored.oneShot;
    }
}

/// Returns whether a stored schedule overlaps the new one on a day that has to be tested.
bool Overlaps(Edit const& edit, StoredSchedules& stored)
{
    using KALDTremolane::TaskIsOverLap;
    if (!edit.isRepeat) {
        return TaskIsOverLap(edit.start, edit.duration, stored.oneShot, stored.repeat);
    }
    int selected[kDaysOfWeek] = {};
    int const limit = KALDTremolane::GetRepeatLimitTime(
        edit.isWeekly ? 1 : 0, edit.weekdays.c_str(), edit.endDate.c_str(), selected);
    // The days count from today, not from the new start. Beyond 32 bits no stored schedule begins.
    int const today = LocalTime(::time(nullptr)).tm_wday;
    std::int64_t start = edit.start;
    for (int k = 0; k < limit && std::in_range<int>(start); ++k, start += kDaySeconds) {
        if (selected[(today + k) % kDaysOfWeek] == 1 &&
            TaskIsOverLap(static_cast<int>(start), edit.duration, stored.oneShot, stored.repeat)) {
            return true;
        }
    }
    return false;
}

/// Saves the one-shot file without the generated schedule, if it had one. On false the failure is
/// logged.
bool SaveOneShotFile(int tuner, std::optional<Json::Value>& file)
{
    std::string const path = OneShotFile(tuner);
    bool const isSaved = !file || WebUtils::SaveJsonFile(*file, path.c_str());
    if (!isSaved) {
        ::syslog(LOG_ERR, "%s:%d Fail to save schedule json. Path is %s", kLogSource,
                 kUserDefineEditSave, path.c_str());
    }
    return isSaved;
}

} // namespace

void ScheduleRecordingAPI::EditUserDefine()
{
    Edit edit;
    bool const isRead = ReadEdit(m_request, edit);
    std::optional<int> const tuner = RequestTuner();
    if (!isRead || !tuner ||
        KALDTremolane::ReadUserDefineFromFile(m_userDefineRecord, edit.oldStart, *tuner) < 0) {
        SetError(kErrorBadParameter);
        return;
    }
    StoredSchedules stored;
    RecordFile const oneShot = LoadRecordFile(stored.oneShot, OneShotFile(*tuner));
    RecordFile const repeat = LoadRecordFile(stored.repeat, RepeatFile(*tuner));
    RemoveOldSchedule(m_userDefineRecord, stored);
    if (Overlaps(edit, stored)) {
        SetError(kErrorOverlap);
        return;
    }
    // What would fail the new create and the restore alike must not cost the old schedule. A
    // create fails if the daemon cannot be told; a create_repeat does not.
    if (!CheckCanStore(edit.isRepeat)) {
        return;
    }
    if (oneShot == RecordFile::kUnreadable || repeat == RecordFile::kUnreadable) {
        SetError(kErrorFailed);
        return;
    }
    if (!edit.isRepeat && !ReloadDaemon()) {
        return;
    }
    if (!SaveOneShotFile(*tuner, stored.newOneShotFile)) {
        SetError(kErrorFailed);
        return;
    }
    m_deleteOld = true;
    DeleteUserDefine();
    m_deleteOld = false;
    if (!CreateUserDefine()) {
        m_restoreOld = true; // to the end of the request
        CreateUserDefine();
    }
}
