/// @file Rendering channel unique ids.
#include "schedule/data/channel_id.h"

#include "platform/record_members.h"
#include "platform/records.h"

std::string RenderChannelId(Json::Value const& record)
{
    using namespace appliance;
    std::string id = std::to_string(IntOf(record, member::kId));
    Json::Value const& frequency = MemberOf(record, member::kFrequency);
    if (frequency.isInt()) {
        id += '@' + std::to_string(frequency.asInt());
    }
    return id;
}
