/// @file Micro-benchmarks of single stages of a request.
#include "bench/appliance_tree.h"
#include "frame/schedule_recording_api.h"
#include "platform/record_members.h"
#include "tremolane/recording_service.h"

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace {

int Range(benchmark::State const& state)
{
    return static_cast<int>(state.range(0));
}

/// Returns a view of one-shot schedules as the recording service lists them.
Json::Value Listed(int count)
{
    Json::Value view;
    view["schedules"] = MakeOneShotRecords(count);
    for (Json::Value& record : view["schedules"]) {
        record[appliance::member::kId] = "100@474000";
    }
    return view;
}

void MergeSchedules(benchmark::State& state)
{
    Json::Value const listed = Listed(Range(state));
    Json::Value repeat = MakeRepeatRecords(Range(state) / 10);
    for ([[maybe_unused]] auto _ : state) {
        state.PauseTiming();
        Json::Value view = listed;
        state.ResumeTiming();
        ScheduleRecordingAPI::MergeSchedules(view, repeat);
    }
    state.SetComplexityN(state.range(0));
}

void FillStatus(benchmark::State& state)
{
    LayTree({0, 0, Range(state) / 10});
    Json::Value page = Listed(Range(state));
    for ([[maybe_unused]] auto _ : state) {
        ScheduleRecordingAPI::FillStatus(page, 0);
    }
    state.SetComplexityN(state.range(0));
}

void FillStartText(benchmark::State& state)
{
    Json::Value page = Listed(Range(state));
    for ([[maybe_unused]] auto _ : state) {
        ScheduleRecordingAPI::FillStartText(page);
    }
    state.SetComplexityN(state.range(0));
}

void TaskIsOverLap(benchmark::State& state)
{
    Json::Value oneShot = MakeOneShotRecords(Range(state));
    Json::Value repeat = MakeRepeatRecords(Range(state) / 10);
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(KALDTremolane::TaskIsOverLap(1, 1, oneShot, repeat));
    }
    state.SetComplexityN(state.range(0));
}

/// Reads its request, looks up one parameter and records no response.
class ParameterReader : public KALD::WebAPI {
public:
    ParameterReader() : WebAPI("", "") {}
    int CheckAuthorized() override { return 1; }
    void Process() override { benchmark::DoNotOptimize(m_request.In("title", "")); }
};

void ReadParameters(benchmark::State& state)
{
    std::string query = "method=create_userdefine&title=Der+Abend%20%C3%BCber";
    for (int i = 0; i < Range(state); ++i) {
        query += "&parameter" + std::to_string(i) + "=value%20" + std::to_string(i);
    }
    ::setenv("QUERY_STRING", query.c_str(), 1);
    int const output = ::dup(STDOUT_FILENO); // keeps the answers out of the printed results
    int const nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nowhere, STDOUT_FILENO);
    for ([[maybe_unused]] auto _ : state) {
        ParameterReader().Run();
    }
    ::dup2(output, STDOUT_FILENO);
    ::close(output);
    ::close(nowhere);
    state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(MergeSchedules)->Range(100, 10'000)->Complexity(benchmark::oN);
BENCHMARK(FillStatus)->Range(100, 10'000)->Complexity(benchmark::oN);
BENCHMARK(FillStartText)->Range(100, 10'000)->Complexity(benchmark::oN);
BENCHMARK(TaskIsOverLap)->Range(100, 10'000)->Complexity(benchmark::oN);
BENCHMARK(ReadParameters)->Range(1, 1'000)->Complexity(benchmark::oN);

BENCHMARK_MAIN();
