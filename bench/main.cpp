// SPDX-License-Identifier: Apache-2.0
//
// lyn_bench: what the library costs, over the simulated TV. docs/performance.md says how to read it.
//
// The options of Google Benchmark, and:
//   --exactly=N   every case runs its operation N times, for counting instructions; times mean nothing then
#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>
#include <exception>
#include <functional>
#include <string_view>
#include <utility>
#include <vector>

#include "Cases.h"
#include "Yardstick.h"

namespace {

constexpr std::string_view kExactly = "--exactly=";

benchmark::IterationCount g_exactly = 0;
bool g_hasFailed = false;

void Run(benchmark::State& state, const std::function<void(benchmark::State&)>& body)
{
    try {
        body(state);
    } catch (const std::exception& e) {
        state.SkipWithError(e.what());
        g_hasFailed = true;
        return;
    }
    if (g_exactly == 0) {
        using benchmark::Counter;
        // Seconds of one operation, divided by those of the yardstick.
        state.counters["ratio"] = Counter(lyn::bench::YardstickSeconds(),
                                          Counter::kIsRate | Counter::kIsIterationInvariant | Counter::kInvert);
    }
}

// Takes our own option out of the arguments. False when it cannot be understood.
bool TakeExactly(int& argc, char** argv)
{
    int kept = 0;
    for (int i = 0; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument.substr(0, kExactly.size()) != kExactly) {
            argv[kept++] = argv[i];
            continue;
        }
        const char* const end = argument.data() + argument.size();
        const auto [rest, error] = std::from_chars(argument.data() + kExactly.size(), end, g_exactly);
        if (error != std::errc() || rest != end || g_exactly < 1) {
            return false;
        }
    }
    argc = kept;
    return true;
}

// The library shows the quotient of two times as seconds; it is a plain number.
class Reporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override
    {
        std::vector<Run> plain = runs;
        for (Run& run : plain) {
            for (auto& [name, counter] : run.counters) {
                counter.flags = benchmark::Counter::kDefaults;
            }
        }
        ConsoleReporter::ReportRuns(plain);
    }
};

}  // namespace

void lyn::bench::AddCase(const std::string& name, std::function<void(benchmark::State&)> body)
{
    auto* const added = benchmark::RegisterBenchmark(
        name.c_str(), [body = std::move(body)](benchmark::State& state) { Run(state, body); });
    if (g_exactly > 0) {
        added->Iterations(g_exactly);
    }
}

int main(int argc, char** argv)
{
    if (!TakeExactly(argc, argv)) {
        std::fprintf(stderr, "lyn_bench: --exactly needs a number of 1 or more\n");
        return 2;
    }
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    lyn::bench::AddYardstick();
    lyn::bench::AddForeignAdverts();
    lyn::bench::AddAcceptedAdverts();
    lyn::bench::AddRequests();
    lyn::bench::AddCalls();
    Reporter reporter;
    const std::size_t count = benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return count > 0 && !g_hasFailed ? 0 : 1;
}
