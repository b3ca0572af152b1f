/// @file The method `edit_userdefine`: validate, exclude the old schedule, test for
/// overlap, commit.
///
/// There is no change in place. The new times are tested against the stored schedules in which the
/// old one no longer counts; then the old schedule is deleted and the new one created, through the
/// methods for that; if the create fails, the old one is created again from its record.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "schedule/data/log_source.h"
#include "schedule/data/schedule_file.h"
#include "schedule/userdefine/scoped_flag.h"
#include "tremolane/recording_service.h"

#include <syslog.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <utility>

struct ScheduleRecordingAPI::UserDefineEdit {
    bool isRepeat = false;
    int start = 0;    ///< epoch seconds, above 0
    int duration = 0; ///< seconds, above 0
    int oldStart = 0; ///< epoch seconds, above 0
    bool isWeekly = false;
    std::string weekdays; ///< seven flags, Sunday first
    std::string endDate;
    int tuner = 0;
};

struct ScheduleRecordingAPI::StoredSchedules {
    Json::Value oneShot; ///< array, or null if it was not loaded; likewise the other
    Json::Value repeat;
    bool areReadable = false; ///< each of the two files is missing or was loaded
    bool mustRewrite = false; ///< the one-shot file is to be replaced by `remaining`
    Json::Value remaining;    ///< array, or null if no record remains
};

namespace {

using namespace appliance;

constexpr std::size_t kWeekdaysLength = 15;
constexpr int kSaveLine = 1325;
constexpr int kStatusWaiting = 4;
constexpr int kExcludedStart = 0; ///< a record that starts here takes no part in the overlap test
constexpr int kDaySeconds = 86400;
constexpr int kDaysOfWeek = 7;

void ExcludeOneShots(Json::Value& oneShot, int start)
{
    for (Json::Value& record : oneShot) {
        if (record.isObject() && IntOf(record, member::kStartTime) == start) {
            record[member::kStartTime] = kExcludedStart;
        }
    }
}

/// Excludes the repeat schedules that begin at `start`. Returns the start of the one-shot schedule
/// that was generated last from them, or 0.
int ExcludeRepeat(Json::Value& repeat, int start)
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

/// Whether a one-shot record is the one that a repeat schedule of this channel generated last, and
/// its recording has not begun.
bool IsGeneratedBy(Json::Value const& record, std::string const& channelId, int lastGeneratedStart)
{
    return record.isObject() && IntOf(record, member::kStartTime) == lastGeneratedStart &&
           IntOf(record, member::kStatus) == kStatusWaiting &&
           TextOf(record, member::kServiceId) + '@' + TextOf(record, member::kFrequency) ==
               channelId;
}

/// The local weekday of now, Sunday 0.
int Today()
{
    std::time_t const now = ::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    return local.tm_wday;
}

} // namespace

void ScheduleRecordingAPI::EditUserDefine()
{
    UserDefineEdit edit;
    if (!ValidateEdit(edit)) {
        SetError(kErrorBadParameter);
        return;
    }
    StoredSchedules stored;
    RecordFile const oneShot = LoadRecordFile(stored.oneShot, OneShotFile(edit.tuner));
    RecordFile const repeat = LoadRecordFile(stored.repeat, RepeatFile(edit.tuner));
    stored.areReadable = oneShot != RecordFile::kUnreadable && repeat != RecordFile::kUnreadable;
    ExcludeOldSchedule(stored);
    if (!HasNoOverlap(edit, stored)) {
        SetError(kErrorOverlap);
        return;
    }
    if (CanStore(edit, stored) && SaveRemainingOneShots(edit.tuner, stored)) {
        DeleteOldThenCreateNew();
    }
}

bool ScheduleRecordingAPI::ValidateEdit(UserDefineEdit& edit)
{
    using KALD::WebAPIUtil::ParseBool;
    auto const text = [this](char const* key) { return m_request.In(key, ""); };
    bool const hasKind = ParseBool(text("is_repeat"), &edit.isRepeat);
    edit.start = DateTimeToEpoch(text("start_date"), text("start_time"));
    edit.duration = TimeTextToSeconds(text("duration"));
    edit.oldStart = DateTimeToEpoch(text("orig_start_date"), text("orig_start_time"));
    if (!hasKind || edit.start <= 0 || edit.duration <= 0 || edit.oldStart <= 0) {
        return false;
    }
    bool const hasWeekly = ParseBool(text("isweekly"), &edit.isWeekly);
    edit.endDate = text("end_date");
    edit.weekdays = std::string(text("weekdaystatus")).substr(0, kWeekdaysLength);
    if (edit.isRepeat && (!hasWeekly || edit.endDate.empty() || edit.weekdays.empty())) {
        return false;
    }
    std::optional<int> const tuner = RequestTuner();
    if (!tuner) {
        return false;
    }
    edit.tuner = *tuner;
    m_deleteOld = m_innerCreate = m_restoreOld = false;
    return KALDTremolane::ReadUserDefineFromFile(m_userDefineRecord, edit.oldStart, edit.tuner) >=
           0;
}

void ScheduleRecordingAPI::ExcludeOldSchedule(StoredSchedules& stored)
{
    int const start = IntOf(m_userDefineRecord, member::kStartTime);
    if (!FlagOf(m_userDefineRecord, member::kIsRepeat)) {
        ExcludeOneShots(stored.oneShot, start);
        return;
    }
    int const lastGeneratedStart = ExcludeRepeat(stored.repeat, start);
    std::string const channelId = TextOf(m_userDefineRecord, member::kChannelId);
    auto const isGenerated = [&](Json::Value const& record) {
        return IsGeneratedBy(record, channelId, lastGeneratedStart);
    };
    stored.mustRewrite = std::any_of(stored.oneShot.begin(), stored.oneShot.end(), isGenerated);
    if (!stored.mustRewrite) {
        return;
    }
    stored.remaining = stored.oneShot; // a copy, because the overlap test may change its documents
    DropRecords(stored.remaining, isGenerated);
    if (stored.remaining.empty()) {
        stored.remaining = Json::Value();
    }
    for (Json::Value& record : stored.oneShot) {
        if (isGenerated(record)) {
            record[member::kStartTime] = kExcludedStart;
        }
    }
}

bool ScheduleRecordingAPI::HasNoOverlap(UserDefineEdit const& edit, StoredSchedules& stored)
{
    if (!edit.isRepeat) {
        return !KALDTremolane::TaskIsOverLap(edit.start, edit.duration, stored.oneShot,
                                             stored.repeat);
    }
    int selected[kDaysOfWeek] = {};
    int const limit = KALDTremolane::GetRepeatLimitTime(
        edit.isWeekly ? 1 : 0, edit.weekdays.c_str(), edit.endDate.c_str(), selected);
    int const today = Today(); // the flags count from today, whatever day the new start is
    for (int k = 0; k < limit; ++k) {
        std::int64_t const start = edit.start + std::int64_t{k} * kDaySeconds;
        if (!std::in_range<int>(start)) {
            break; // no stored schedule begins that late
        }
        if (selected[(today + k) % kDaysOfWeek] == 1 &&
            KALDTremolane::TaskIsOverLap(static_cast<int>(start), edit.duration, stored.oneShot,
                                         stored.repeat)) {
            return false;
        }
    }
    return true;
}

bool ScheduleRecordingAPI::CanStore(UserDefineEdit const& edit, StoredSchedules const& stored)
{
    if (!(edit.isRepeat ? RepeatOwner() : OneShotOwner())) {
        return false;
    }
    if (!stored.areReadable) {
        SetError(kErrorFailed);
        return false;
    }
    // A create fails if the daemon cannot be told; a create_repeat does not.
    return edit.isRepeat || ReloadDaemon();
}

bool ScheduleRecordingAPI::SaveRemainingOneShots(int tuner, StoredSchedules& stored)
{
    if (!stored.mustRewrite) {
        return true;
    }
    std::string const path = OneShotFile(tuner);
    if (!WebUtils::SaveJsonFile(stored.remaining, path.c_str())) {
        ::syslog(LOG_ERR, "%s:%d Fail to save schedule json. Path is %s", kLogSource, kSaveLine,
                 path.c_str());
        SetError(kErrorFailed);
        return false;
    }
    return true;
}

void ScheduleRecordingAPI::DeleteOldThenCreateNew()
{
    {
        ScopedFlag const deleting(m_deleteOld);
        DeleteUserDefine();
    }
    if (!CreateUserDefine()) {
        m_restoreOld = true; // to the end of the request
        CreateUserDefine();
    }
}
