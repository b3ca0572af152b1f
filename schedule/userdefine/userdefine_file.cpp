/// @file The file of user-defined records: saving one, removing some.
#include "schedule/userdefine/userdefine_file.h"

#include "frame/schedule_recording_api.h"
#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "schedule/data/schedule_file.h"

#include <strings.h>

#include <utility>

namespace {

using namespace appliance;

constexpr int kNotSaved = -1;
constexpr bool kRequired = true;

/// A parameter and the member that keeps its text unchanged.
struct TextField {
    char const* parameter;
    Json::StaticString member;
    bool isRequired = false;
    char const* ofOneShot = nullptr; ///< instead of a text about the recurrence
};

TextField const kTextFields[] = {
    {"start_date", member::kInputStartDate, kRequired},
    {"start_time", member::kInputStartTime, kRequired},
    {"duration", member::kInputDuration},
    {"title", member::kEventName},
    {"description", member::kTextName},
    {"channel_name", member::kChannelName, kRequired},
    {"id", member::kChannelId, kRequired},
    {"weekdaystatus", member::kWeekdayStatus, kRequired, "0,0,0,0,0,0,0"},
    {"end_date", member::kEndDate, kRequired, "1"},
};

/// Fills a record, except its tuner, from the parameters; `get` returns a parameter's text by its
/// key. Returns false if a parameter is missing or unusable.
template <class Get>
bool FillRecordFromParameters(Json::Value& record, Get const& get)
{
    bool isRepeat = false;
    bool isWeekly = false;
    if (!KALD::WebAPIUtil::ParseBool(get("is_repeat").c_str(), &isRepeat)) {
        return false;
    }
    KALD::WebAPIUtil::ParseBool(get("isweekly").c_str(), &isWeekly);
    for (TextField const& field : kTextFields) {
        bool const isGiven = isRepeat || field.ofOneShot == nullptr;
        std::string const text = isGiven ? get(field.parameter) : field.ofOneShot;
        if (text.empty() && field.isRequired) {
            return false;
        }
        record[field.member] = text;
    }
    record[member::kIsRepeat] = isRepeat;
    record[member::kIsWeekly] = isWeekly || !isRepeat;
    record[member::kStartTime] = ScheduleRecordingAPI::DateTimeToEpoch(
        record[member::kInputStartDate].asCString(), record[member::kInputStartTime].asCString());
    record[member::kDuration] =
        ScheduleRecordingAPI::TimeTextToSeconds(record[member::kInputDuration].asCString());
    return true;
}

/// Drops the tuner's records that start at one of `starts`. Records of a negative tuner stay. A
/// list that becomes empty becomes null, which is what the file then holds.
void DropNamed(Json::Value& records, std::set<int> const& starts, int tuner)
{
    DropRecords(records, [&starts, tuner](Json::Value const& record) {
        return tuner >= 0 && IntOf(record, member::kTuner) == tuner &&
               starts.contains(IntOf(record, member::kStartTime));
    });
    if (records.empty()) {
        records = Json::Value();
    }
}

} // namespace

Json::StaticString const* TextMemberOf(char const* parameter)
{
    for (TextField const& field : kTextFields) {
        if (::strcasecmp(field.parameter, parameter) == 0) {
            return &field.member;
        }
    }
    return nullptr;
}

int ScheduleRecordingAPI::SaveUserDefineRecord()
{
    Json::Value record;
    auto const get = [this](char const* key) { return GetParam(key, ""); };
    std::optional<int> const tuner = RequestTuner();
    if (!tuner || !FillRecordFromParameters(record, get)) {
        SetError(kErrorBadParameter);
        return kNotSaved;
    }
    if (m_restoreOld) { // under today's daylight saving the same texts can mean another hour
        record[member::kStartTime] = IntOf(m_userDefineRecord, member::kStartTime);
    }
    int const start = record[member::kStartTime].asInt();
    if (start < 1) {
        return kNotSaved;
    }
    record[member::kTuner] = *tuner;
    Json::Value records;
    if (LoadRecordFile(records, kUserDefineFile) == RecordFile::kUnreadable) {
        return kNotSaved; // its owner may want the contents back
    }
    DropNamed(records, {start}, *tuner);
    records.append(std::move(record));
    return WebUtils::SaveJsonFile(records, kUserDefineFile) ? start : kNotSaved;
}

void ScheduleRecordingAPI::RemoveUserDefineRecord(int start, int tuner)
{
    RemoveUserDefineRecords({start}, tuner);
}

void RemoveUserDefineRecords(std::set<int> const& starts, int tuner)
{
    Json::Value records;
    if (tuner < 0 || LoadRecordFile(records, kUserDefineFile) != RecordFile::kLoaded) {
        return;
    }
    DropNamed(records, starts, tuner);
    WebUtils::SaveJsonFile(records, kUserDefineFile);
}
