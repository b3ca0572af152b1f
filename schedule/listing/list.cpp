/// @file The method `list`: one-shot and repeat schedules in one sorted page, ready for display.
#include "frame/schedule_recording_api.h"

#include "frame/web_api_error.h"
#include "kald/web_api_util.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/records.h"
#include "platform/schedule_status.h"
#include "schedule/data/channel_id.h"
#include "schedule/data/schedule_file.h"
#include "tremolane/recording_service.h"

#include <algorithm>
#include <ctime>
#include <iterator>
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

constexpr int kWholeList = -1;              ///< as `limit`
constexpr std::size_t kPrimeIdLength = 127; ///< a longer one is cut

/// View status by raw status. Any other raw status has view status 0.
constexpr int kViewStatus[] = {
    0,  0,  2, 3,  1,  0,  0, 0,  //  0 to  7
    4,  11, 5, 6,  7,  8,  9, 10, //  8 to 15
    11, 0,  0, 12, 13, 14, 0, 15, // 16 to 23
};

int ViewStatus(int rawStatus)
{
    bool const isInTable = rawStatus >= 0 && rawStatus < static_cast<int>(std::size(kViewStatus));
    return isInTable ? kViewStatus[rawStatus] : 0;
}

/// What the list shows of one schedule. Texts are JSON strings, so that they move between documents
/// without being copied.
struct ScheduleNode {
    int start_time; ///< epoch seconds
    Json::Value channel_name;
    Json::Value description;
    int duration; ///< seconds
    Json::Value id;
    int status; ///< raw
    Json::Value title;
};

/// Returns a value as text: copied from a document that is only read, moved out of any other.
Json::Value TakeText(Json::Value const& value)
{
    return AsText(value);
}

Json::Value TakeText(Json::Value& value)
{
    return value.isString() ? std::move(value) : Json::Value(AsText(value));
}

/// The members of a record that a node is made from. Another node is later written to the same
/// places without looking the members up again.
template <class Value>
struct NodeMembers {
    Value &start_time, &channel_name, &description, &duration, &id, &status, &title;
};

template <class Value>
NodeMembers<Value> NodeMembersOf(Value& record)
{
    return {record[member::kStartTime], record[member::kChannelName], record[member::kDescription],
            record[member::kDuration],  record[member::kId],          record[member::kStatus],
            record[member::kTitle]};
}

template <class Value>
ScheduleNode MakeNode(NodeMembers<Value> const& from, Json::Value id)
{
    return {AsInt(from.start_time),
            TakeText(from.channel_name),
            TakeText(from.description),
            AsInt(from.duration),
            std::move(id),
            AsInt(from.status),
            TakeText(from.title)};
}

/// Sorts by start time. Ties are broken by position: the later node comes first.
struct StartTimeOrder {
    bool operator()(ScheduleNode const* left, ScheduleNode const* right) const
    {
        return left->start_time != right->start_time ? left->start_time < right->start_time
                                                     : left > right;
    }
};

void WriteNode(ScheduleNode& node, NodeMembers<Json::Value> const& to, Json::Value& element)
{
    std::string primeId = std::to_string(node.start_time) + '.' + node.id.asCString() + '.' +
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

/// Returns whether a user-defined record of the schedule's start and tuner makes the schedule a
/// user-defined one. A repeating record stands for the repeat schedule, not for the one-shot
/// schedules generated from it.
bool IsUserDefine(int rawStatus, int start, int tuner)
{
    Json::Value record;
    if (KALDTremolane::ReadUserDefineFromFile(record, start, tuner) < 0) {
        return false;
    }
    return rawStatus == kStatusRepeat || rawStatus == kStatusRepeatOther ||
           !FlagOf(record, member::kIsRepeat);
}

/// Fills the response with a page of the tuner's schedules; `listed` is what GetSchedule() gave.
/// Leaves the response without schedules if there are none. Returns false if `start` is not a
/// position of the list.
bool FillPage(Json::Value& response, Json::Value& listed, int tuner, int start, int limit)
{
    Json::Value repeat;
    LoadRecordFile(repeat, RepeatFile(tuner)); // a file that is not loaded has no schedules
    Json::Value view;
    if (MemberOf(listed, member::kList).isArray()) {
        view[kSchedules].swap(listed[member::kList]);
    } else if (repeat.empty()) {
        return true;
    }
    ScheduleRecordingAPI::MergeSchedules(view, repeat);
    Json::ArrayIndex const total = view[kSchedules].size();
    if (start < 0 || total < static_cast<Json::ArrayIndex>(start)) {
        return false;
    }
    if (limit == kWholeList) {
        response[kSchedules].swap(view[kSchedules]);
    } else {
        ScheduleRecordingAPI::SlicePage(view, response, start, limit);
    }
    ScheduleRecordingAPI::FillStatus(response, tuner);
    response[kStart] = start;
    response[kTotal] = total;
    ScheduleRecordingAPI::FillStartText(response);
    return true;
}

} // namespace

void ScheduleRecordingAPI::ListSchedule()
{
    int start = 0;
    int limit = kWholeList;
    bool const isStartParsed = KALD::WebAPIUtil::ParseInt(m_request.In("start", "0"), &start);
    bool const isParsed =
        KALD::WebAPIUtil::ParseInt(m_request.In("limit", "-1"), &limit) && isStartParsed;
    int const tuner = RequestTuner().value_or(0);
    Json::Value listed;
    Json::Value response;
    if (isParsed && !KALDTremolane::GetSchedule(listed, tuner)) {
        ReportLibraryError(listed);
    } else if (!isParsed || !FillPage(response, listed, tuner, start, limit)) {
        SetError(kErrorBadParameter);
    }
    if (response[kSchedules].isNull()) {
        response[kStart] = 0;
        response[kTotal] = 0U;
        response[kSchedules] = Json::Value(Json::arrayValue);
    }
    SetResponse(response);
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
        if (!record.isObject()) { // a recording service should list objects only
            record = Json::Value(Json::objectValue);
        }
        places.push_back(NodeMembersOf(record));
        nodes.push_back(MakeNode(places.back(), TakeText(places.back().id)));
    }
    for (Json::Value const& record : std::as_const(repeat)) {
        if (record.isObject()) {
            nodes.push_back(MakeNode(NodeMembersOf(record), RenderChannelId(record)));
            places.push_back(NodeMembersOf(schedules.append(Json::Value(Json::objectValue))));
        }
    }
    std::vector<ScheduleNode*> order;
    order.reserve(nodes.size());
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
        if (++count >= limit) { // tested after the append, so that a page is never empty
            return;
        }
    }
}

void ScheduleRecordingAPI::FillStatus(Json::Value& page, int tuner)
{
    for (Json::Value& schedule : page[kSchedules]) {
        Json::Value& status = schedule[member::kStatus];
        int const rawStatus = status.asInt();
        int const start = schedule[member::kStartTime].asInt();
        schedule[kIsUserDefine] = IsUserDefine(rawStatus, start, tuner);
        status = ViewStatus(rawStatus);
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
