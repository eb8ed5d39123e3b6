// SPDX-License-Identifier: Apache-2.0
//
// fault_sweep [--kind platform|once|lasting] [--service NAME] [--scenario NAME] [--nth N] [--list]
//
// Makes every platform call and every allocation of the library fail, one after the other, in every scenario,
// and checks what comes of it. Prints one line for each scenario, and exits with 0 when all ended well.
#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "faults/Sweep.h"
#include "lyn_simulator/simulator.h"
#include "support/LastWords.h"

// Where there is a sanitizer.
extern "C" int __lsan_do_recoverable_leak_check() __attribute__((weak));

namespace {

using lyn::test::Count;
using lyn::test::Kind;
using lyn::test::Scenario;

struct Options {
    std::vector<Kind> kinds = {Kind::platform, Kind::once, Kind::lasting};
    std::string service;
    std::string scenario;
    int nth = 0;
    bool isList = false;
};

[[noreturn]] void Usage()
{
    std::fprintf(stderr, "usage: fault_sweep [--kind platform|once|lasting] [--service NAME] [--scenario NAME] "
                         "[--nth N] [--list]\n");
    std::exit(2);
}

Kind KindOf(const std::string& name)
{
    for (const Kind kind : {Kind::platform, Kind::once, Kind::lasting}) {
        if (name == lyn::test::NameOf(kind)) {
            return kind;
        }
    }
    Usage();
}

Options Read(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--list") {
            options.isList = true;
            continue;
        }
        if (i + 1 == argc) {
            Usage();
        }
        const std::string value = argv[++i];
        if (name == "--kind") {
            options.kinds = {KindOf(value)};
        } else if (name == "--service") {
            options.service = value;
        } else if (name == "--scenario") {
            options.scenario = value;
        } else if (name == "--nth") {
            options.nth = std::atoi(value.c_str());
        } else {
            Usage();
        }
    }
    return options;
}

double Seconds()
{
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

void PrintCount(const char* service, const char* name, Kind kind, const Count& count, double seconds)
{
    std::printf("%-10s %-46s %-9s %6d %6d %8d %8d %6.1f", service, name, lyn::test::NameOf(kind), count.points,
                count.runs, count.leftOut, count.failures, seconds);
}

void ShowProgress(const Scenario& scenario, Kind kind, const Count& count)
{
    if (isatty(STDOUT_FILENO) != 0) {
        PrintCount(scenario.service.c_str(), scenario.name.c_str(), kind, count, 0);
        std::printf("\r");
        std::fflush(stdout);
    }
}

void Add(Count& total, const Count& count)
{
    total.points += count.points;
    total.runs += count.runs;
    total.leftOut += count.leftOut;
    total.failures += count.failures;
}

Count RunScenario(const Scenario& scenario, Kind kind, lyn::test::Sweep& sweep)
{
    const double begin = Seconds();
    Count count = sweep.Run(scenario);
    if (__lsan_do_recoverable_leak_check != nullptr && __lsan_do_recoverable_leak_check() != 0) {
        std::printf("\nFAILED  %s, %s: memory has leaked\n", scenario.service.c_str(), scenario.name.c_str());
        ++count.failures;
    }
    PrintCount(scenario.service.c_str(), scenario.name.c_str(), kind, count, Seconds() - begin);
    std::printf("\n");
    std::fflush(stdout);
    return count;
}

}  // namespace

int main(int argc, char** argv)
{
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
    const Options options = Read(argc, argv);
    lyn::test::PrepareLastWords();
    const double begin = Seconds();
    Count total;
    std::printf("%-10s %-46s %-9s %6s %6s %8s %8s %6s\n", "service", "scenario", "fault", "points", "runs",
                "left out", "failed", "CPU s");
    for (const Kind kind : options.kinds) {
        const Scenario* current = nullptr;
        lyn::test::Sweep sweep(kind, options.nth,
                               [&](const Count& count) { ShowProgress(*current, kind, count); });
        for (const Scenario& scenario : lyn::test::AllScenarios()) {
            if ((!options.service.empty() && scenario.service != options.service) ||
                (!options.scenario.empty() && scenario.name != options.scenario)) {
                continue;
            }
            if (options.isList) {
                std::printf("%-10s %s\n", scenario.service.c_str(), scenario.name.c_str());
                continue;
            }
            current = &scenario;
            Add(total, RunScenario(scenario, kind, sweep));
        }
    }
    if (options.isList) {
        return 0;
    }
    std::printf("%-10s %-46s %-9s %6d %6d %8d %8d %6.1f\n", "total", "", "", total.points, total.runs,
                total.leftOut, total.failures, Seconds() - begin);
    return total.failures == 0 && total.runs > 0 ? 0 : 1;
}
