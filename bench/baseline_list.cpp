/// @file The baseline for `list`, a CGI program too. With jsoncpp alone it reads the same three
/// files and writes an answer with the same members and of the same size. It does not sort, look up
/// or check anything, and computes no dates.
#include "bench/load_document.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"

#include <json/writer.h>

#include <cstdio>
#include <string>

namespace {

using namespace appliance;

void Append(Json::Value& schedules, Json::Value& record)
{
    Json::Value schedule(Json::objectValue);
    for (Json::StaticString const& name :
         {member::kStartTime, member::kChannelName, member::kDescription, member::kDuration,
          member::kTitle}) {
        schedule[name].swap(record[name]);
    }
    schedule[member::kId] = "100@474000";
    schedule[Json::StaticString("primeid")] = "1750000000.100@474000.4";
    schedule[member::kStatus] = 1;
    schedule[Json::StaticString("is_userdefine")] = false;
    schedule[Json::StaticString("start")] = "2025/06/15 20:15";
    schedule[Json::StaticString("weekday")] = 1;
    schedules.append(std::move(schedule));
}

} // namespace

int main()
{
    Json::Value const userDefines = LoadDocument(kUserDefineFile);
    Json::Value oneShots = LoadDocument(OneShotFile(0));
    Json::Value repeats = LoadDocument(RepeatFile(0));
    Json::Value answer(Json::objectValue);
    Json::Value& schedules = answer["data"]["schedules"];
    for (Json::Value& record : oneShots) {
        Append(schedules, record);
    }
    for (Json::Value& record : repeats) {
        Append(schedules, record);
    }
    answer["data"]["start"] = 0;
    answer["data"]["total"] = schedules.size();
    answer["success"] = true;
    std::string const text =
        "Content-Type: application/json; charset=utf-8\r\n\r\n" + Json::FastWriter().write(answer);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}
