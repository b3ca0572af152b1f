/// @file The method `list`: both kinds of schedules in one sorted page, ready for display.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "schedule/data/schedule_file.h"
#include "schedule/data/unique_id.h"
#include "tremolane/recording_service.h"

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace appliance;

Json::StaticString const kSchedules{"schedules"};
Json::StaticString const kStart{"start"};
Json::StaticString const kTotal{"total"};
Json::StaticString const kPrimeId{"primeid"};
Json::StaticString const kIsUserDefine{"is_userdefine"};
Json::StaticString const kWeekday{"weekday"};

constexpr int kWholeList = -1;
constexpr std::size_t kPrimeIdLength = 127; ///< a longer one is cut

constexpr int kRawRepeat = 19;
constexpr int kRawRepeatOther = 20;

/// View status by raw status; a number beyond the table shows as 0, too.
constexpr int kViewStatus[] = {
    0,  0,  2, 3,  1,  0,  0, 0,  //  0 to  7
    4,  11, 5, 6,  7,  8,  9, 10, //  8 to 15
    11, 0,  0, 12, 13, 14, 0, 15, // 16 to 23
};

int ViewStatus(int raw)
{
    return raw >= 0 && raw < static_cast<int>(std::size(kViewStatus)) ? kViewStatus[raw] : 0;
}

/// What one schedule shows, whichever store it comes from. Texts are JSON strings, so that they
/// move between documents without a copy.
struct ScheduleNode {
    int start_time; ///< epoch seconds
    Json::Value channel_name;
    Json::Value description;
    int duration; ///< seconds
    Json::Value id;
    int status; ///< raw
    Json::Value title;
};

/// A value as text: copied out of a document that is only read, moved out of one that is not.
Json::Value TakeText(Json::Value const& value)
{
    return AsText(value);
}

Json::Value TakeText(Json::Value& value)
{
    return value.isString() ? std::move(value) : Json::Value(AsText(value));
}

/// The members of a record that make a node. A node is taken from them and another one is written
/// to them without a second look-up.
template <class Record>
struct NodeMembers {
    Record &start_time, &channel_name, &description, &duration, &id, &status, &title;
};

template <class Record>
NodeMembers<Record> NodeMembersOf(Record& record)
{
    return {record[member::kStartTime], record[member::kChannelName], record[member::kDescription],
            record[member::kDuration],  record[member::kId],          record[member::kStatus],
            record[member::kTitle]};
}

template <class Record>
ScheduleNode MakeNode(NodeMembers<Record> const& from, Json::Value id)
{
    return {AsInt(from.start_time),
            TakeText(from.channel_name),
            TakeText(from.description),
            AsInt(from.duration),
            std::move(id),
            AsInt(from.status),
            TakeText(from.title)};
}

/// The order of a list: by start time; of equal ones that first which stands later in its array.
struct StartTimeOrder {
    bool operator()(ScheduleNode const* left, ScheduleNode const* right) const
    {
        return left->start_time != right->start_time ? left->start_time < right->start_time
                                                     : left > right;
    }
};

void WriteNode(ScheduleNode& node, NodeMembers<Json::Value> const& to, Json::Value& element)
{
    std::string primeId = std::to_string(node.start_time) + '.' + node.id.asString() + '.' +
                          std::to_string(node.status);
    primeId.resize(std::min(primeId.size(), kPrimeIdLength));
    to.start_time = node.start_time;
    to.channel_name.swap(node.channel_name);
    to.description.swap(node.description);
    to.duration = node.duration;
    to.id.swap(node.id);
    to.status = node.status;
    to.title.swap(node.title);
    element[kPrimeId] = primeId;
}

/// Whether a user-defined record of the schedule's start and tuner makes it a user-defined one: a
/// repeating record stands for the rule, not for the one-shot schedules made from it.
bool IsUserDefine(int raw, int startTime, int tuner)
{
    Json::Value record;
    if (KALDTremolane::ReadUserDefineFromFile(record, startTime, tuner) < 0) {
        return false;
    }
    return raw == kRawRepeat || raw == kRawRepeatOther || !FlagOf(record, member::kIsRepeat);
}

} // namespace

void ScheduleRecordingAPI::ListSchedule()
{
    Json::Value response;
    FillPage(response);
    if (response[kSchedules].isNull()) {
        response[kStart] = 0;
        response[kTotal] = 0U;
        response[kSchedules] = Json::Value(Json::arrayValue);
    }
    SetResponse(response);
}

void ScheduleRecordingAPI::FillPage(Json::Value& response)
{
    int start = 0;
    int limit = kWholeList;
    bool const startParsed = KALD::WebAPIUtil::ParseInt(m_request.In("start", "0"), &start);
    bool const limitParsed = KALD::WebAPIUtil::ParseInt(m_request.In("limit", "-1"), &limit);
    if (!startParsed || !limitParsed) {
        SetError(kErrorBadParameter);
        return;
    }
    int const tuner = RequestTuner().value_or(0);
    Json::Value out;
    if (!KALDTremolane::GetSchedule(out, tuner)) {
        ReportLibraryError(out);
        return;
    }
    Json::Value repeat;
    LoadRecordFile(repeat, RepeatFile(tuner)); // a file that is not loaded is an empty list
    Json::Value view;
    if (MemberOf(out, member::kList).isArray()) {
        view[kSchedules].swap(out[member::kList]);
    } else if (repeat.empty()) {
        return;
    }
    MergeSchedules(view, repeat);
    Json::ArrayIndex const total = view[kSchedules].size();
    if (start < 0 || total < static_cast<Json::ArrayIndex>(start)) {
        SetError(kErrorBadParameter);
        return;
    }
    if (limit == kWholeList) {
        response[kSchedules].swap(view[kSchedules]);
    } else {
        SlicePage(view, response, start, limit);
    }
    FillStatus(response, tuner);
    response[kStart] = start;
    response[kTotal] = total;
    FillStartText(response);
}

void ScheduleRecordingAPI::MergeSchedules(Json::Value& view, Json::Value& repeat)
{
    Json::Value& schedules = view[kSchedules];
    std::size_t const total = schedules.size() + repeat.size();
    std::vector<ScheduleNode> nodes;
    std::vector<NodeMembers<Json::Value>> places;
    nodes.reserve(total);
    places.reserve(total);
    for (Json::Value& record : schedules) {
        if (!record.isObject()) { // no recording service should list one
            record = Json::Value(Json::objectValue);
        }
        places.push_back(NodeMembersOf(record));
        nodes.push_back(MakeNode(places.back(), TakeText(places.back().id)));
    }
    for (Json::Value const& record : std::as_const(repeat)) {
        if (!record.isObject()) {
            continue;
        }
        nodes.push_back(MakeNode(NodeMembersOf(record), RenderUniqueId(record)));
        places.push_back(NodeMembersOf(schedules.append(Json::Value(Json::objectValue))));
    }
    std::vector<ScheduleNode*> order;
    order.reserve(total);
    for (ScheduleNode& node : nodes) {
        order.push_back(&node);
    }
    std::sort(order.begin(), order.end(), StartTimeOrder());
    auto node = order.cbegin();
    auto place = places.cbegin();
    for (Json::Value& element : schedules) {
        WriteNode(**node++, *place++, element);
    }
}

void ScheduleRecordingAPI::SlicePage(Json::Value& view, Json::Value& page, int start, int limit)
{
    Json::Value& schedules = view[kSchedules];
    int const size = static_cast<int>(schedules.size());
    int count = 0;
    for (int index = std::max(start, 0); index < size; ++index) {
        page[kSchedules].append(std::move(schedules[index]));
        if (++count >= limit) { // after the append: a page has one schedule at least
            return;
        }
    }
}

void ScheduleRecordingAPI::FillStatus(Json::Value& page, int tuner)
{
    for (Json::Value& schedule : page[kSchedules]) {
        Json::Value& status = schedule[member::kStatus];
        int const raw = status.asInt();
        schedule[kIsUserDefine] = IsUserDefine(raw, schedule[member::kStartTime].asInt(), tuner);
        status = ViewStatus(raw);
    }
}

void ScheduleRecordingAPI::FillStartText(Json::Value& page)
{
    for (Json::Value& schedule : page[kSchedules]) {
        std::time_t const time = schedule[member::kStartTime].asInt();
        std::tm local{};
        if (::localtime_r(&time, &local) == nullptr) {
            schedule[kStart] = "";
            schedule[kWeekday] = "";
            continue;
        }
        char text[64];
        std::strftime(text, sizeof text, "%Y/%m/%d %H:%M", &local); // a 32-bit year has four digits
        schedule[kStart] = text;
        schedule[kWeekday] = local.tm_wday;
    }
}
