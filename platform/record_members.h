/// @file The names of the members of stored and listed schedules, each in one place. They are part
/// of the file formats.
#pragma once

#include <json/value.h>

namespace appliance::member {

inline Json::StaticString const kChannelId{"channel_id"};
inline Json::StaticString const kChannelName{"channel_name"};
inline Json::StaticString const kDescription{"description"};
inline Json::StaticString const kDuration{"duration"};
inline Json::StaticString const kEndDate{"end_date"};
inline Json::StaticString const kErrno{"errno"};
inline Json::StaticString const kEventName{"event_name"};
inline Json::StaticString const kFrequency{"frequency"};
inline Json::StaticString const kId{"id"};
inline Json::StaticString const kInputDuration{"input_duration"};
inline Json::StaticString const kInputStartDate{"input_start_date"};
inline Json::StaticString const kInputStartTime{"input_start_time"};
inline Json::StaticString const kIsRepeat{"is_repeat"};
inline Json::StaticString const kIsWeekly{"isweekly"};
inline Json::StaticString const kLastCreateTime{"lastcreatetime"};
inline Json::StaticString const kList{"list"};
inline Json::StaticString const kServiceId{"service_id"};
inline Json::StaticString const kStartDate{"start_date"};
inline Json::StaticString const kStartTime{"start_time"};
inline Json::StaticString const kStatus{"status"};
inline Json::StaticString const kTextName{"text_name"};
inline Json::StaticString const kTitle{"title"};
inline Json::StaticString const kTuner{"tuner"};
inline Json::StaticString const kUid{"uid"};
inline Json::StaticString const kWeekdayStatus{"weekdaystatus"};

} // namespace appliance::member
