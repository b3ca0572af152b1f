/// @file Comparing whole requests with their baselines.
///
/// Runs the processes of both alternately and prints the ratio of their median costs. Fails if a
/// ratio exceeds its goal by more than a tenth.
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

/// Runs a command with its output discarded and returns its cost. Throws if it fails.
Cost RunOnce(std::vector<std::string> command)
{
    std::vector<char*> arguments;
    for (std::string& word : command) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
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

bool allGoalsMet = true;

/// Prints a row of the table. Multiplies both costs by `scale`, which converts them to `unit`.
void Report(char const* work, double program, double baseline, double scale, char const* unit,
            double goal)
{
    double const ratio = program / baseline;
    bool const isMet = ratio <= goal;
    allGoalsMet = allGoalsMet && ratio <= goal * 1.1;
    std::printf("| %-46s | %9.2f %-3s | %9.2f %-3s | %5.2f | %4.1f | %-6s |\n", work,
                program * scale, unit, baseline * scale, unit, ratio, goal,
                isMet ? "met" : "MISSED");
    std::fflush(stdout);
}

void ReportWork(char const* work, Comparison const& costs, double Cost::*which, double scale,
                char const* unit, double goal)
{
    Report(work, Median(costs.program, which), Median(costs.baseline, which), scale, unit, goal);
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

/// Returns the median user CPU time of `list` in seconds.
double ListUserTime(TreeSize const& size, int runs)
{
    LayTree(size);
    std::vector<Cost> costs;
    for (int run = 0; run < runs; ++run) {
        costs.push_back(RunOnce({Built("../schedule_recording")}));
    }
    return Median(costs, &Cost::user);
}

void BenchList()
{
    SetRequest("method=list");
    std::string const program = Built("../schedule_recording");
    LayTree({0, 0, 0});
    ReportWork("list, empty appliance, wall",
               Compare(1000, {program}, Nothing, {Built("baseline_start")}, Nothing), &Cost::wall,
               1e3, "ms", 1.6);
    LayTree({10'000, 1'000, 1'000});
    Comparison const large = Compare(21, {program}, Nothing, {Built("baseline_list")}, Nothing);
    ReportWork("list, 10,000 + 1,000 + 1,000 records, user CPU", large, &Cost::user, 1e3, "ms",
               1.3);
    ReportWork("list, 10,000 + 1,000 + 1,000 records, memory", large, &Cost::memory, 1.0 / 1024,
               "MiB", 1.5);
}

void BenchDeleteRepeat()
{
    LayTree({0, 10'000, 0});
    Json::Value const records = MakeRepeatRecords(10'000);
    Json::Value const& victim = records[5'000];
    std::string const start = victim[member::kStartTime].asString();
    SetRequest("method=delete_repeat&tuner=0&id=" + start +
               "&channel_id=" + victim[member::kId].asString());
    auto const restore = [] { LayTree({0, 10'000, 0}); };
    Comparison const costs = Compare(11, {Built("../schedule_recording")}, restore,
                                     {Built("baseline_delete"), start}, restore);
    ReportWork("delete_repeat, one of 10,000, user CPU", costs, &Cost::user, 1e3, "ms", 1.2);
}

/// Prints how the cost of `list` grows over two orders of magnitude.
void PrintGrowth()
{
    SetRequest("method=list");
    std::printf("| records | list, user CPU | per record |\n|---|---|---|\n");
    for (int const count : {1'000, 3'000, 10'000, 30'000, 100'000}) {
        double const user = ListUserTime({count * 9 / 10, count / 10, count / 10}, 7);
        std::printf("| %7d | %9.1f ms | %7.2f us |\n", count, user * 1e3, user * 1e6 / count);
        std::fflush(stdout);
    }
}

} // namespace

/// Without arguments, compares requests with their baselines. With "tree" and the numbers of
/// one-shot, repeat and user-defined records, generates an appliance tree. With "growth", prints
/// how the cost of `list` grows.
int main(int count, char** arguments)
{
    std::string const what = count > 1 ? arguments[1] : "";
    programFolder = std::string(arguments[0]).substr(0, std::string(arguments[0]).rfind('/'));
    if (what == "tree" && count == 5) {
        LayTree({std::atoi(arguments[2]), std::atoi(arguments[3]), std::atoi(arguments[4])});
        return 0;
    }
    if (what == "growth") {
        PrintGrowth();
        return 0;
    }
    std::printf("| %-46s | %13s | %13s | %5s | %4s | %-6s |\n|---|---|---|---|---|---|\n", "work",
                "program", "baseline", "ratio", "goal", "");
    BenchList();
    BenchDeleteRepeat();
    return allGoalsMet ? 0 : 1;
}
