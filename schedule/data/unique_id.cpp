/// @file The channel unique id of a repeat record.
#include "schedule/data/unique_id.h"

#include "platform/record_members.h"

#include <cstdio>

std::string RenderUniqueId(Json::Value const& record)
{
    using namespace appliance;
    char text[256];
    Json::Value const& frequency = record[member::kFrequency];
    int const service = record[member::kId].asInt();
    if (frequency.isInt()) {
        std::snprintf(text, sizeof text, "%d@%d", service, frequency.asInt());
    } else {
        std::snprintf(text, sizeof text, "%d", service);
    }
    return text;
}
