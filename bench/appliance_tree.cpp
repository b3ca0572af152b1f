/// @file Generating appliance trees from fixed random seeds.
#include "bench/appliance_tree.h"

#include "platform/appliance_paths.h"
#include "platform/record_members.h"
#include "platform/standin/userdefine_index.h"

#include <json/writer.h>

#include <ctime>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <utility>

namespace {

using namespace appliance;

constexpr int kFirstStart = 1'750'000'000;
constexpr int kQuarterHour = 900;
constexpr int kYearOfQuarterHours = 35'040;
constexpr int kHour = 3600;
constexpr int kDay = 24 * kHour;
constexpr int kDaysOfYear = 365;

/// Returns the start of the n-th one-shot record in epoch seconds. User-defined records use it to
/// refer to that record.
int StartOf(int n)
{
    std::minstd_rand random(static_cast<unsigned>(n) + 1);
    random.discard(3);
    return kFirstStart + static_cast<int>(random() % kYearOfQuarterHours) * kQuarterHour + n % 60;
}

std::string Title(int n)
{
    return "Abendprogramm \xc3\xbc" + std::to_string(n);
}

std::string Description(int n)
{
    return "Folge " + std::to_string(n) + ": " +
           std::string(static_cast<std::size_t>(60 + n % 60), 'x');
}

Json::Value Record(int n, int start)
{
    Json::Value record(Json::objectValue);
    record[member::kStartTime] = start;
    record[member::kFrequency] = 474'000 + n % 40 * 8'000;
    record[member::kChannelName] = "Kanal " + std::to_string(n % 40);
    record[member::kTitle] = Title(n);
    record[member::kDescription] = Description(n);
    record[member::kDuration] = 1800 + n % 4 * kQuarterHour;
    record[member::kUid] = "1024";
    return record;
}

Json::Value OneShotRecord(int n, int start)
{
    Json::Value record = Record(n, start);
    record[member::kServiceId] = 100 + n % 40;
    record[member::kStatus] = 4;
    return record;
}

Json::Value RepeatRecord(int n, int start)
{
    Json::Value record = Record(n, start);
    record[member::kId] = 100 + n % 40;
    record[member::kStatus] = 19;
    record[member::kLastCreateTime] = 0;
    record[member::kStartDate] = "2025-06-15";
    record[member::kIsWeekly] = true;
    record[member::kWeekdayStatus] = "0,1,0,0,1,0,0";
    record[member::kEndDate] = "2026-06-15";
    return record;
}

Json::Value UserDefineRecord(int n, int start)
{
    Json::Value record(Json::objectValue);
    record[member::kStartTime] = start;
    record[member::kEventName] = Title(n);
    record[member::kTextName] = Description(n);
    record[member::kDuration] = 1800;
    record[member::kInputDuration] = "00:30";
    record[member::kInputStartTime] = "20:15";
    record[member::kInputStartDate] = "2025-06-15";
    record[member::kTuner] = 0;
    record[member::kChannelName] = "Kanal";
    record[member::kChannelId] = "100@474000";
    record[member::kIsRepeat] = false;
    record[member::kIsWeekly] = true;
    record[member::kWeekdayStatus] = "0,0,0,0,0,0,0";
    record[member::kEndDate] = "1";
    return record;
}

/// Makes the repeat schedule of a repeat or user-defined record occur every day without an end.
void RepeatDaily(Json::Value& record)
{
    record[member::kWeekdayStatus] = "1,1,1,1,1,1,1";
    record[member::kEndDate] = "1";
}

template <class Make>
Json::Value MakeRecords(int count, Make const& make)
{
    Json::Value records(Json::arrayValue);
    for (int n = 0; n < count; ++n) {
        records.append(make(n));
    }
    return records;
}

void Write(std::string const& path, std::string const& text)
{
    std::filesystem::create_directories(std::filesystem::path(path).parent_path());
    std::ofstream(path) << text;
}

void WriteJson(std::string const& path, Json::Value const& document)
{
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    Write(path, Json::writeString(builder, document) + '\n');
}

} // namespace

Json::Value MakeOneShotRecords(int count)
{
    return MakeRecords(count, [](int n) { return OneShotRecord(n, StartOf(n)); });
}

Json::Value MakeRepeatRecords(int count)
{
    return MakeRecords(count, [](int n) { return RepeatRecord(n, StartOf(n) + 7); });
}

Json::Value MakeUserDefineRecords(int count)
{
    return MakeRecords(count, [](int n) { return UserDefineRecord(n, StartOf(n) + n % 2); });
}

void LayTree(TreeSize const& size)
{
    std::filesystem::remove_all(kRoot);
    standin::ForgetUserDefineIndex(); // what this process has read is no longer true
    std::filesystem::create_directories(std::string(kRoot) + "/var/run/dtvd");
    Write(kPasswordFile, "admin:x:1024:100::/:\nviewer:x:1026:100::/:\n");
    Write(kGroupFile, "users:x:100:\nadministrators:x:101:admin\n");
    Write(kFolderList, R"([{"section": "tv_record", "share": "video", "subpath": "tv"}])");
    std::filesystem::create_directories(std::string(kVolumeFolder) + "/video/tv");
    if (size.oneShot > 0) {
        WriteJson(OneShotFile(0), MakeOneShotRecords(size.oneShot));
    }
    if (size.repeat > 0) {
        WriteJson(RepeatFile(0), MakeRepeatRecords(size.repeat));
    }
    if (size.userDefine > 0) {
        WriteJson(kUserDefineFile, MakeUserDefineRecords(size.userDefine));
    }
}

EditStarts LayTreeToEdit(int oneShots, int repeats)
{
    LayTree({0, 0, 0});
    // The other records begin between 2 and 18 hours UTC. Where the clocks are changed, repeat
    // schedules move by an hour within the year.
    int const tomorrow = static_cast<int>(std::time(nullptr)) / kDay * kDay + kDay;
    EditStarts const starts{tomorrow + 22 * kHour, tomorrow + 20 * kHour};
    auto const slot = [](int n) { return 2 * kHour + n % 28 * 2060; };
    Json::Value oneShot = MakeRecords(oneShots, [&](int n) {
        Json::Value record = OneShotRecord(n, tomorrow + n / 28 % kDaysOfYear * kDay + slot(n));
        record[member::kDuration] = 1800;
        return record;
    });
    Json::Value repeat = MakeRecords(repeats, [&](int n) {
        Json::Value record = RepeatRecord(n, tomorrow + n % 7 * kDay + slot(n));
        RepeatDaily(record);
        record[member::kDuration] = 1800;
        return record;
    });
    // Record 0 has the channel of the user-defined record.
    Json::Value old = RepeatRecord(0, starts.old);
    RepeatDaily(old);
    old[member::kLastCreateTime] = starts.old;
    repeat.append(std::move(old));
    oneShot.append(OneShotRecord(0, starts.old));
    Json::Value userDefines(Json::arrayValue);
    RepeatDaily(userDefines.append(UserDefineRecord(0, starts.old)));
    userDefines[0][member::kIsRepeat] = true;
    WriteJson(OneShotFile(0), oneShot);
    WriteJson(RepeatFile(0), repeat);
    WriteJson(kUserDefineFile, userDefines);
    return starts;
}
