/// @file The file of user-defined records: writing one, taking some out.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "kald/web_utils.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "schedule/data/schedule_file.h"

#include <utility>

namespace {

using namespace appliance;

constexpr int kNotSaved = -1;

enum class Need { kNone, kAlways, kIfRepeat };

/// A text of the request and the member that keeps it unchanged.
struct TextField {
    char const* key;
    Json::StaticString name;
    Need need;
};

TextField const kTextFields[] = {
    {"start_date", member::kInputStartDate, Need::kAlways},
    {"start_time", member::kInputStartTime, Need::kAlways},
    {"duration", member::kInputDuration, Need::kNone},
    {"title", member::kEventName, Need::kNone},
    {"description", member::kTextName, Need::kNone},
    {"channel_name", member::kChannelName, Need::kAlways},
    {"id", member::kChannelId, Need::kAlways},
    {"weekdaystatus", member::kWeekdayStatus, Need::kIfRepeat},
    {"end_date", member::kEndDate, Need::kIfRepeat},
};

bool IsNeeded(Need need, bool isRepeat)
{
    return need == Need::kAlways || (need == Need::kIfRepeat && isRepeat);
}

/// Drops the tuner's records that start at one of `starts`. Records of a negative tuner all stay.
/// A list that becomes empty becomes null, which is what the file then holds.
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

bool ScheduleRecordingAPI::DescribeUserDefine(Json::Value& record)
{
    bool isRepeat = false;
    bool isWeekly = false;
    if (!KALD::WebAPIUtil::ParseBool(GetParam("is_repeat", "").c_str(), &isRepeat)) {
        return false;
    }
    KALD::WebAPIUtil::ParseBool(GetParam("isweekly", "").c_str(), &isWeekly);
    for (TextField const& field : kTextFields) {
        std::string text = GetParam(field.key, "");
        if (text.empty() && IsNeeded(field.need, isRepeat)) {
            return false;
        }
        record[field.name] = text;
    }
    record[member::kIsRepeat] = isRepeat;
    record[member::kIsWeekly] = isWeekly;
    if (!isRepeat) { // what stands in the place of a rule, whatever the request says
        record[member::kIsWeekly] = true;
        record[member::kWeekdayStatus] = "0,0,0,0,0,0,0";
        record[member::kEndDate] = "1";
    }
    record[member::kStartTime] = DateTimeToEpoch(record[member::kInputStartDate].asCString(),
                                                 record[member::kInputStartTime].asCString());
    if (m_restoreOld) { // the same texts can mean another hour by today's daylight saving
        record[member::kStartTime] = m_userDefineRecord[member::kStartTime];
    }
    record[member::kDuration] = TimeTextToSeconds(record[member::kInputDuration].asCString());
    return true;
}

int ScheduleRecordingAPI::SaveUserDefineRecord()
{
    Json::Value record;
    if (!DescribeUserDefine(record)) {
        SetError(kErrorBadParameter);
        return kNotSaved;
    }
    int const start = record[member::kStartTime].asInt();
    std::optional<int> const tuner = RequestTuner();
    if (!tuner) {
        SetError(kErrorBadParameter);
        return start;
    }
    if (start < 1) { // the caller fails on it and could not take the record out again
        return start;
    }
    record[member::kTuner] = *tuner;
    Json::Value records;
    if (LoadRecordFile(records, kUserDefineFile) == RecordFile::kUnreadable) {
        return kNotSaved; // it may hold what its owner wants back
    }
    DropNamed(records, {start}, *tuner);
    records.append(std::move(record));
    return WebUtils::SaveJsonFile(records, kUserDefineFile) ? start : kNotSaved;
}

void ScheduleRecordingAPI::RemoveUserDefineRecord(int start, int tuner)
{
    RemoveUserDefineRecords({start}, tuner);
}

void ScheduleRecordingAPI::RemoveUserDefineRecords(std::set<int> const& starts, int tuner)
{
    Json::Value records;
    if (tuner < 0 || LoadRecordFile(records, kUserDefineFile) != RecordFile::kLoaded) {
        return;
    }
    DropNamed(records, starts, tuner);
    WebUtils::SaveJsonFile(records, kUserDefineFile);
}
