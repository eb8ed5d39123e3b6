// SPDX-License-Identifier: Apache-2.0
#include "Yardstick.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "Cases.h"

namespace lyn::bench {
namespace {

constexpr std::size_t kSize = 64;
constexpr int kMeasurements = 5;
constexpr int kTimes = 20000;

}  // namespace

void WorkOnce()
{
    static const std::array<char, kSize> source{};
    void* const memory = std::malloc(kSize);
    benchmark::DoNotOptimize(memory);
    std::memcpy(memory, source.data(), kSize);
    benchmark::ClobberMemory();
    std::free(memory);
}

double YardstickSeconds()
{
    using Clock = std::chrono::steady_clock;
    double best = std::numeric_limits<double>::max();
    for (int measurement = 0; measurement < kMeasurements; ++measurement) {
        const auto begin = Clock::now();
        for (int i = 0; i < kTimes; ++i) {
            WorkOnce();
        }
        best = std::min(best, std::chrono::duration<double>(Clock::now() - begin).count());
    }
    return best / kTimes;
}

void AddYardstick()
{
    AddCase("yardstick", [](benchmark::State& state) {
        while (state.KeepRunning()) {
            WorkOnce();
        }
    });
}

}  // namespace lyn::bench
