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

/// The members of a schedule that the sort moves. Any other stays at its position in the list.
Json::StaticString const kSorted[] = {
    member::kStartTime, member::kChannelName, member::kDescription, member::kDuration,
    member::kId,        member::kStatus,      member::kTitle,       kPrimeId};

struct ScheduleNode {
    int start_time; ///< epoch seconds
    Json::Value schedule;
};

int MakeInt(Json::Value& value)
{
    value = AsInt(value);
    return value.asInt();
}

Json::Value const& MakeText(Json::Value& value)
{
    return value.isString() ? value : value = AsText(value);
}

/// Gives a record all members that the sort moves, in the types of the list.
void Complete(Json::Value& record)
{
    std::string primeId = std::to_string(MakeInt(record[member::kStartTime])) + '.' +
                          MakeText(record[member::kId]).asCString() + '.' +
                          std::to_string(MakeInt(record[member::kStatus]));
    primeId.resize(std::min(primeId.size(), kPrimeIdLength));
    record[kPrimeId] = primeId;
    MakeInt(record[member::kDuration]);
    MakeText(record[member::kChannelName]);
    MakeText(record[member::kDescription]);
    MakeText(record[member::kTitle]);
}

/// Moves the members that the sort moves to another object.
void MoveSorted(Json::Value& from, Json::Value& to)
{
    if (from.size() == std::size(kSorted) && to.empty()) {
        to.swap(from); // faster than one by one
        return;
    }
    for (Json::StaticString const& name : kSorted) {
        to[name].swap(from[name]);
    }
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
    for (Json::Value const& record : std::as_const(repeat)) {
        if (record.isObject()) {
            Json::Value& schedule = schedules.append(Json::Value(Json::objectValue));
            for (Json::StaticString const& name : kSorted) {
                schedule[name] = record[name];
            }
            schedule[member::kId] = RenderChannelId(record);
        }
    }
    std::vector<ScheduleNode> nodes(schedules.size());
    std::vector<ScheduleNode*> order;
    order.reserve(nodes.size());
    for (Json::Value& record : schedules) {
        if (!record.isObject()) { // a recording service should list objects only
            record = Json::Value(Json::objectValue);
        }
        Complete(record);
        ScheduleNode& node = nodes[order.size()];
        node.start_time = record[member::kStartTime].asInt();
        MoveSorted(record, node.schedule);
        order.push_back(&node);
    }
    // Of schedules with the same start time, the later one comes first.
    std::ranges::sort(order, [](ScheduleNode const* left, ScheduleNode const* right) {
        return std::pair(left->start_time, right) < std::pair(right->start_time, left);
    });
    auto node = order.cbegin();
    for (Json::Value& element : schedules) {
        MoveSorted((*node++)->schedule, element);
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
