/// @file The member names of stored and listed schedules. They are part of the file formats.
///
/// The constants are deliberately not `inline`, so that each source file has its own copies. Static
/// tables that copy them need them initialised first. Within one source file that order is
/// guaranteed; for `inline` variables not every compiler provides it.
#pragma once

#include <json/value.h>

namespace appliance::member {

Json::StaticString const kChannelId{"channel_id"};
Json::StaticString const kChannelName{"channel_name"};
Json::StaticString const kDescription{"description"};
Json::StaticString const kDuration{"duration"};
Json::StaticString const kEndDate{"end_date"};
Json::StaticString const kErrno{"errno"};
Json::StaticString const kEventName{"event_name"};
Json::StaticString const kFrequency{"frequency"};
Json::StaticString const kId{"id"};
Json::StaticString const kInputDuration{"input_duration"};
Json::StaticString const kInputStartDate{"input_start_date"};
Json::StaticString const kInputStartTime{"input_start_time"};
Json::StaticString const kIsRepeat{"is_repeat"};
Json::StaticString const kIsWeekly{"isweekly"};
Json::StaticString const kLastCreateTime{"lastcreatetime"};
Json::StaticString const kList{"list"};
Json::StaticString const kServiceId{"service_id"};
Json::StaticString const kStartDate{"start_date"};
Json::StaticString const kStartTime{"start_time"};
Json::StaticString const kStatus{"status"};
Json::StaticString const kTextName{"text_name"};
Json::StaticString const kTitle{"title"};
Json::StaticString const kTuner{"tuner"};
Json::StaticString const kUid{"uid"};
Json::StaticString const kWeekdayStatus{"weekdaystatus"};

} // namespace appliance::member
