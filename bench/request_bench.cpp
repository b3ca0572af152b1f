/// @file Comparing whole requests with their baselines.
///
/// Runs the processes of both alternately and prints the medians of their costs. script/bench
/// compares them with the goals.
#include "bench/appliance_tree.h"
#include "platform/appliance_paths.h"
#include "platform/record_members.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <exception>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using namespace appliance;

/// The cost of one process.
struct Cost {
    double wall, user; ///< seconds
    double memory;     ///< peak, KiB
};

/// The folder of this program and of the baselines.
std::string programFolder;

constexpr char kListQuery[] = "method=list";
constexpr char kNowhere[] = "/dev/null";

/// Runs a command, writes its output to a file and returns its cost. Throws if it fails.
Cost RunOnce(std::vector<std::string> command, std::string const& output = kNowhere)
{
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (std::string& word : command) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(),
                                       O_WRONLY | O_CREAT | O_TRUNC, 0644);
    auto const begin = std::chrono::steady_clock::now();
    pid_t pid = -1;
    int const error =
        ::posix_spawn(&pid, arguments[0], &actions, nullptr, arguments.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    rusage usage{};
    int status = -1;
    if (error != 0 || ::wait4(pid, &status, 0, &usage) != pid || status != 0) {
        throw std::runtime_error(command[0] + " failed");
    }
    std::chrono::duration<double> const wall = std::chrono::steady_clock::now() - begin;
    return {wall.count(),
            static_cast<double>(usage.ru_utime.tv_sec) +
                static_cast<double>(usage.ru_utime.tv_usec) / 1e6,
            static_cast<double>(usage.ru_maxrss)};
}

double Median(std::vector<Cost> const& costs, double Cost::*which)
{
    std::vector<double> values;
    values.reserve(costs.size());
    for (Cost const& cost : costs) {
        values.push_back(cost.*which);
    }
    std::nth_element(values.begin(), values.begin() + static_cast<long>(values.size() / 2),
                     values.end());
    return values[values.size() / 2];
}

/// The costs of alternating runs of two commands.
struct Comparison {
    std::vector<Cost> program, baseline;
};

using Prepare = std::function<void()>;

/// Runs two commands alternately, `runs` times each. Calls each command's preparation before each
/// of its runs, outside the measurement.
Comparison Compare(int runs, std::vector<std::string> const& program, Prepare const& beforeProgram,
                   std::vector<std::string> const& baseline, Prepare const& beforeBaseline)
{
    Comparison result;
    for (int run = -runs / 10 - 1; run < runs; ++run) { // negative runs warm the caches
        beforeProgram();
        Cost const programCost = RunOnce(program);
        beforeBaseline();
        Cost const baselineCost = RunOnce(baseline);
        if (run >= 0) {
            result.program.push_back(programCost);
            result.baseline.push_back(baselineCost);
        }
    }
    return result;
}

/// Prints a row for script/bench. Multiplies the costs by `scale`, which converts them to `unit`.
/// The ratio of the costs should be at most `goal`.
void Report(char const* work, Comparison const& costs, double Cost::*which, double scale,
            char const* unit, double goal)
{
    std::printf("%s\t%s\t%.9g\t%.9g\t%g\n", work, unit, Median(costs.program, which) * scale,
                Median(costs.baseline, which) * scale, goal);
    std::fflush(stdout);
}

void Nothing() {}

void SetRequest(std::string const& query)
{
    ::setenv("REMOTE_USER", "admin", 1);
    ::setenv("REQUEST_METHOD", "GET", 1);
    ::setenv("QUERY_STRING", query.c_str(), 1);
}

/// Returns the path of a program of the build, relative to the folder of this one.
std::string Built(char const* name)
{
    return programFolder + "/" + name;
}

/// Runs the program once. Throws unless it answers with success.
void RequireSuccess(std::string const& program)
{
    std::string const path = Built("probe");
    RunOnce({program}, path);
    std::string answer;
    std::ifstream file(path);
    std::getline(file, answer, '\0'); // the whole file
    if (answer.find("\"success\":true") == std::string::npos) {
        throw std::runtime_error("the program answered: " + answer);
    }
}

/// Returns the median user CPU time of `list` in seconds.
double ListUserTime(std::string const& program, TreeSize const& size, int runs)
{
    LayTree(size);
    std::vector<Cost> costs;
    costs.reserve(static_cast<std::size_t>(runs));
    for (int run = 0; run < runs; ++run) {
        costs.push_back(RunOnce({program}));
    }
    return Median(costs, &Cost::user);
}

void BenchList(std::string const& program)
{
    SetRequest(kListQuery);
    LayTree({0, 0, 0});
    RequireSuccess(program);
    Report("`list`, empty appliance, wall",
           Compare(1000, {program}, Nothing, {Built("baseline_start")}, Nothing), &Cost::wall, 1e3,
           "ms", 1.6);
    LayTree({10'000, 1'000, 1'000});
    RequireSuccess(program);
    Comparison const large = Compare(21, {program}, Nothing, {Built("baseline_list")}, Nothing);
    Report("`list`, 10,000 + 1,000 + 1,000 records, user CPU", large, &Cost::user, 1e3, "ms", 1.3);
    Report("`list`, 10,000 + 1,000 + 1,000 records, memory", large, &Cost::memory, 1.0 / 1024,
           "MiB", 1.5);
}

void BenchDeleteRepeat(std::string const& program)
{
    Json::Value const records = MakeRepeatRecords(10'000);
    Json::Value const& victim = records[5'000];
    std::string const start = victim[member::kStartTime].asString();
    SetRequest("method=delete_repeat&tuner=0&id=" + start +
               "&channel_id=" + victim[member::kId].asString());
    auto const restore = [] { LayTree({0, 10'000, 0}); };
    restore();
    RequireSuccess(program);
    Comparison const costs =
        Compare(11, {program}, restore, {Built("baseline_delete"), start}, restore);
    Report("`delete_repeat`, one of 10,000, user CPU", costs, &Cost::user, 1e3, "ms", 1.2);
}

/// Returns a start as a date or a time as the program reads them: by the offset from UTC that is in
/// force now.
std::string LocalText(std::time_t start, char const* format)
{
    std::time_t const now = std::time(nullptr);
    std::tm parts{};
    ::localtime_r(&now, &parts);
    std::time_t const shifted = start + parts.tm_gmtoff;
    ::gmtime_r(&shifted, &parts);
    char text[16];
    std::strftime(text, sizeof text, format, &parts);
    return text;
}

/// The baseline is the program's own `list`.
void BenchEditUserDefine(std::string const& program)
{
    // The tests around a change of the clocks are the most expensive ones.
    ::setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    ::tzset();
    auto const edit = [] {
        EditStarts const starts = LayTreeToEdit(10'000, 1'000);
        SetRequest("method=edit_userdefine&tuner=0&id=100@474000&channel_name=Kanal&title=Neu"
                   "&duration=00:30&is_repeat=true&isweekly=true&end_date=1"
                   "&weekdaystatus=1,1,1,1,1,1,1"
                   "&orig_start_date=" +
                   LocalText(starts.old, "%Y-%m-%d") +
                   "&orig_start_time=" + LocalText(starts.old, "%H:%M") +
                   "&start_date=" + LocalText(starts.changed, "%Y-%m-%d") +
                   "&start_time=" + LocalText(starts.changed, "%H:%M"));
    };
    auto const list = [] {
        LayTreeToEdit(10'000, 1'000);
        SetRequest(kListQuery);
    };
    edit();
    RequireSuccess(program);
    Comparison const costs = Compare(11, {program}, edit, {program}, list);
    Report("`edit_userdefine`, 10,000 + 1,000 records, user CPU", costs, &Cost::user, 1e3, "ms",
           4.0);
    ::unsetenv("TZ");
}

/// Prints how the user CPU time of `list` in seconds grows over two orders of magnitude.
void PrintGrowth(std::string const& program)
{
    SetRequest(kListQuery);
    for (int const count : {1'000, 3'000, 10'000, 30'000, 100'000}) {
        double const user = ListUserTime(program, {count * 9 / 10, count / 10, count / 10}, 7);
        std::printf("%d\t%.9g\n", count, user);
        std::fflush(stdout);
    }
}

} // namespace

/// Without arguments, compares requests with their baselines. With "tree" and the numbers of
/// one-shot, repeat and user-defined records, generates an appliance tree. With "growth", prints
/// how the cost of `list` grows.
int main(int count, char** arguments)
try {
    std::string const what = count > 1 ? arguments[1] : "";
    programFolder = std::string(arguments[0]).substr(0, std::string(arguments[0]).rfind('/'));
    std::string const program = Built("../schedule_recording");
    if (what == "tree" && count == 5) {
        LayTree({std::atoi(arguments[2]), std::atoi(arguments[3]), std::atoi(arguments[4])});
    } else if (what == "growth") {
        PrintGrowth(program);
    } else {
        BenchList(program);
        BenchDeleteRepeat(program);
        BenchEditUserDefine(program);
    }
    return 0;
} catch (std::exception const& error) {
    std::fprintf(stderr, "request_bench: %s\n", error.what());
    return 1;
}
