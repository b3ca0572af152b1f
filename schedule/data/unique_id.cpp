/// @file The channel unique id of a repeat record.
#include "schedule/data/unique_id.h"

#include "platform/record_members.h"
#include "platform/records.h"

#include <cstdio>

std::string RenderUniqueId(Json::Value const& record)
{
    using namespace appliance;
    char text[256];
    Json::Value const& frequency = MemberOf(record, member::kFrequency);
    int const service = IntOf(record, member::kId);
    if (frequency.isInt()) {
        std::snprintf(text, sizeof text, "%d@%d", service, frequency.asInt());
    } else {
        std::snprintf(text, sizeof text, "%d", service);
    }
    return text;
}
