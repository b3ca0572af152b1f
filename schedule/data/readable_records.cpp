/// @file The members that are read, by the kind of the record.
#include "schedule/data/readable_records.h"

#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "schedule/data/schedule_file.h"
#include "tremolane/recording_service.h"

namespace {

using namespace appliance;

/// A member, and the conversion through which it is read, which throws if its type does not allow
/// it.
struct ReadMember {
    Json::StaticString name;
    void (*read)(Json::Value const& value);
};

void AsInt(Json::Value const& value)
{
    value.asInt();
}

void AsText(Json::Value const& value)
{
    value.asString();
}

void AsFlag(Json::Value const& value)
{
    value.asBool();
}

ReadMember const kUserDefineMembers[] = {
    {member::kStartTime, AsInt},       {member::kDuration, AsInt},
    {member::kChannelId, AsText},      {member::kChannelName, AsText},
    {member::kEventName, AsText},      {member::kTextName, AsText},
    {member::kInputStartTime, AsText}, {member::kInputStartDate, AsText},
    {member::kInputDuration, AsText},  {member::kIsRepeat, AsFlag},
    {member::kIsWeekly, AsFlag},       {member::kWeekdayStatus, AsText},
    {member::kEndDate, AsText},
};

ReadMember const kOneShotMembers[] = {{member::kStartTime, AsInt}, {member::kServiceId, AsText}};

ReadMember const kRepeatMembers[] = {{member::kStartTime, AsInt}, {member::kId, AsInt}};

template <std::size_t size>
void RequireReadable(Json::Value const& record, ReadMember const (&members)[size])
{
    for (ReadMember const& member : members) {
        member.read(record[member.name]);
    }
}

} // namespace

void RequireReadableUserDefine(Json::Value const& record)
{
    RequireReadable(record, kUserDefineMembers);
}

bool RequireReadableUserDefine(int start, int tuner)
{
    Json::Value record;
    bool const isStored = KALDTremolane::ReadUserDefineFromFile(record, start, tuner) >= 0;
    if (isStored) {
        RequireReadableUserDefine(record);
    }
    return isStored;
}

void RequireReadableOneShots(Json::Value const& records)
{
    for (Json::Value const& record : records) {
        RequireReadable(record, kOneShotMembers);
    }
}

void RequireReadableRepeats(Json::Value const& records)
{
    for (Json::Value const& record : records) {
        RequireReadable(record, kRepeatMembers);
    }
}

void RequireReadableSchedules(int tuner)
{
    Json::Value records;
    LoadRecordFile(records, OneShotFile(tuner));
    RequireReadableOneShots(records);
    LoadRecordFile(records, RepeatFile(tuner));
    RequireReadableRepeats(records);
}
