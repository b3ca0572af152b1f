/// @file The method `edit_userdefine`: validate, exclude the old schedule, test for overlap,
/// commit.
///
/// Nothing is changed in place. The new times are tested against the stored schedules, among which
/// the old one no longer counts. Then the old schedule is deleted and the new one created, through
/// the methods for that. If the create fails, the old one is created again from its record.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/schedule_status.h"
#include "schedule/data/schedule_file.h"
#include "schedule/support_log.h"
#include "tremolane/recording_service.h"

#include <syslog.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <utility>

namespace {

using namespace appliance;

constexpr std::size_t kWeekdaysLength = 15; ///< of a longer list the rest is dropped
constexpr int kExcludedStart = 0; ///< a record that starts here takes no part in the overlap test
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
    bool mustRewrite = false; ///< `remaining` is to replace the one-shot file
    Json::Value remaining;    ///< array, or null if no record remains
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

/// Excludes the one-shot records that `isOld` selects from the overlap test.
template <class Predicate>
void ExcludeOneShots(Json::Value& oneShot, Predicate const& isOld)
{
    for (Json::Value& record : oneShot) {
        if (record.isObject() && isOld(record)) {
            record[member::kStartTime] = kExcludedStart;
        }
    }
}

/// Excludes the repeat schedules that begin at `start`. Returns the start of the one-shot schedule
/// that was generated last from the last of them, or 0.
int ExcludeRepeats(Json::Value& repeat, int start)
{
    int lastGeneratedStart = 0;
    for (Json::Value& record : repeat) {
        if (record.isObject() && IntOf(record, member::kStartTime) == start) {
            lastGeneratedStart = IntOf(record, member::kLastCreateTime);
            record[member::kStartTime] = kExcludedStart;
            record[member::kLastCreateTime] = 0;
        }
    }
    return lastGeneratedStart;
}

/// Returns whether a one-shot record is the one that the repeat schedule of this channel generated
/// last and whose recording has not begun.
bool IsGeneratedBy(Json::Value const& record, std::string const& channelId, int lastGeneratedStart)
{
    return IntOf(record, member::kStartTime) == lastGeneratedStart &&
           IntOf(record, member::kStatus) == kStatusWaiting &&
           TextOf(record, member::kServiceId) + '@' + TextOf(record, member::kFrequency) ==
               channelId;
}

/// Excludes the schedule of the record `old` from the overlap test. A one-shot schedule that an old
/// repeat schedule generated would collide with its own successor: it is excluded too, and it is
/// left out of `remaining`.
void ExcludeOldSchedule(Json::Value const& old, StoredSchedules& stored)
{
    int const start = IntOf(old, member::kStartTime);
    if (!FlagOf(old, member::kIsRepeat)) {
        ExcludeOneShots(stored.oneShot, [start](Json::Value const& record) {
            return IntOf(record, member::kStartTime) == start;
        });
        return;
    }
    int const lastGeneratedStart = ExcludeRepeats(stored.repeat, start);
    std::string const channelId = TextOf(old, member::kChannelId);
    auto const isGenerated = [&](Json::Value const& record) {
        return IsGeneratedBy(record, channelId, lastGeneratedStart);
    };
    stored.mustRewrite = std::any_of(stored.oneShot.begin(), stored.oneShot.end(), isGenerated);
    if (stored.mustRewrite) {
        stored.remaining = stored.oneShot; // a copy: the overlap test may change its documents
        DropRecords(stored.remaining, isGenerated);
        if (stored.remaining.empty()) {
            stored.remaining = Json::Value();
        }
        ExcludeOneShots(stored.oneShot, isGenerated);
    }
}

/// Returns the local weekday of now, Sunday 0.
int Today()
{
    std::time_t const now = ::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return local.tm_wday;
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
    int const today = Today();       // the days count from today, not from the new start
    std::int64_t start = edit.start; // beyond 32 bits no stored schedule begins
    for (int k = 0; k < limit && std::in_range<int>(start); ++k, start += kDaySeconds) {
        if (selected[(today + k) % kDaysOfWeek] == 1 &&
            TaskIsOverLap(static_cast<int>(start), edit.duration, stored.oneShot, stored.repeat)) {
            return true;
        }
    }
    return false;
}

/// Saves the one-shot file without the generated schedule. On false the failure is logged.
bool SaveRemainingOneShots(int tuner, StoredSchedules& stored)
{
    if (!stored.mustRewrite) {
        return true;
    }
    std::string const path = OneShotFile(tuner);
    bool const isSaved = WebUtils::SaveJsonFile(stored.remaining, path.c_str());
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
    ExcludeOldSchedule(m_userDefineRecord, stored);
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
    if (!SaveRemainingOneShots(*tuner, stored)) {
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
