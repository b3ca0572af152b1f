/// @file The method `edit_userdefine`: validate, neutralise, overlap, commit.
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
#include "schedule/data/log_source.h"
#include "schedule/data/readable_records.h"
#include "schedule/data/schedule_file.h"
#include "schedule/userdefine/scoped_flag.h"
#include "tremolane/recording_service.h"

#include <syslog.h>

#include <cstdint>
#include <ctime>
#include <utility>
#include <vector>

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
    Json::Value oneShot; ///< array or null, as the other
    Json::Value repeat;
    std::vector<bool> leftOut; ///< by position, what a rewrite of the one-shot file leaves out
    bool mustRewrite = false;
};

namespace {

using namespace appliance;

constexpr std::size_t kWeekdaysLength = 15;
constexpr int kSaveLine = 1325;
constexpr int kStatusWaiting = 4;
constexpr int kNeverCounts = 0; ///< a start that takes no part in the overlap test
constexpr int kDaySeconds = 86400;
constexpr int kDaysOfWeek = 7;

void NeutraliseOneShot(Json::Value& oneShot, int start)
{
    for (Json::Value& record : oneShot) {
        if (record[member::kStartTime].asInt() == start) {
            record[member::kStartTime] = kNeverCounts;
        }
    }
}

/// Neutralises the rules of a start; the start of the one-shot schedule made last from them, or 0.
int NeutraliseRepeat(Json::Value& repeat, int start)
{
    int lastCreate = 0;
    for (Json::Value& record : repeat) {
        if (record[member::kStartTime].asInt() == start) {
            lastCreate = record[member::kLastCreateTime].asInt();
            record[member::kStartTime] = kNeverCounts;
            record[member::kLastCreateTime] = 0;
        }
    }
    return lastCreate;
}

/// Whether a one-shot record is the one that a rule made last and that has not begun.
bool IsMadeFrom(Json::Value const& record, std::string const& channelId, int lastCreate)
{
    std::string const channel =
        record[member::kServiceId].asString() + '@' + record[member::kFrequency].asString();
    return channel == channelId && record[member::kStartTime].asInt() == lastCreate &&
           record[member::kStatus].asInt() == kStatusWaiting;
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
    LoadRecordFile(stored.oneShot, OneShotFile(edit.tuner)); // what does not load is an empty list
    LoadRecordFile(stored.repeat, RepeatFile(edit.tuner));
    RequireReadableOneShots(stored.oneShot);
    RequireReadableRepeats(stored.repeat);
    NeutraliseOld(stored);
    if (!IsFree(edit, stored)) {
        SetError(kErrorOverlap);
        return;
    }
    // What would fail the new and the old create alike must not cost the old schedule.
    if (!(edit.isRepeat ? RepeatOwner() : OneShotOwner())) {
        return;
    }
    if (CommitOneShots(edit.tuner, stored)) {
        ReplaceOld();
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
    if (KALDTremolane::ReadUserDefineFromFile(m_userDefineRecord, edit.oldStart, edit.tuner) < 0) {
        return false;
    }
    RequireReadableUserDefine(m_userDefineRecord);
    return true;
}

void ScheduleRecordingAPI::NeutraliseOld(StoredSchedules& stored)
{
    Json::Value const& old = m_userDefineRecord;
    int const start = old[member::kStartTime].asInt();
    if (!old[member::kIsRepeat].asBool()) {
        NeutraliseOneShot(stored.oneShot, start);
        return;
    }
    int const lastCreate = NeutraliseRepeat(stored.repeat, start);
    std::string const channelId = old[member::kChannelId].asString();
    for (Json::Value& record : stored.oneShot) {
        bool const isMade = IsMadeFrom(record, channelId, lastCreate);
        stored.leftOut.push_back(isMade);
        if (isMade) {
            record[member::kStartTime] = kNeverCounts;
            stored.mustRewrite = true;
        }
    }
}

bool ScheduleRecordingAPI::IsFree(UserDefineEdit const& edit, StoredSchedules& stored)
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

bool ScheduleRecordingAPI::CommitOneShots(int tuner, StoredSchedules& stored)
{
    if (!stored.mustRewrite) {
        return true;
    }
    Json::Value kept; // stays null if everything is left out
    auto position = stored.leftOut.cbegin();
    KeepRecords(stored.oneShot, kept, [&position](Json::Value const&) { return *position++; });
    std::string const path = OneShotFile(tuner);
    if (!WebUtils::SaveJsonFile(kept, path.c_str())) {
        ::syslog(LOG_ERR, "%s:%d Fail to save schedule json. Path is %s", kLogSource, kSaveLine,
                 path.c_str());
        SetError(kErrorFailed);
        return false;
    }
    return true;
}

void ScheduleRecordingAPI::ReplaceOld()
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
