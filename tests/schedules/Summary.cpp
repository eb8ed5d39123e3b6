// SPDX-License-Identifier: Apache-2.0
#include "schedules/Summary.h"

#include <cstdio>

namespace lyn::schedules {
namespace {

constexpr std::array<const char*, kReasons> kReasonTexts = {
    "scan, stop or request: for another one of the same service", "what moves the state: for a state callback",
    "scan, stop or request: for the platform's one scan", "request: for the registration of link reports",
    "anything: for a moment"};

unsigned long long Wide(std::uint64_t number)
{
    return number;
}

void PrintCalls(const Counts& counts)
{
    constexpr std::array<int, 9> shown = {0, 2, 3, 4, 5, 6, 7, 8, 9};
    std::printf("\n%-40s", "call");
    for (const int code : shown) {
        code == shown.back() ? std::printf("%9s", "thrown") : std::printf("%9d", code);
    }
    std::printf("\n");
    for (std::size_t call = 0; call < counts.codes.size(); ++call) {
        const auto what = static_cast<What>(static_cast<std::size_t>(What::create) + call);
        std::printf("%-40s", FunctionOf(what));
        for (const int code : shown) {
            std::printf("%9llu", Wide(counts.codes[call][static_cast<std::size_t>(code)]));
        }
        std::printf("\n");
    }
}

void PrintResults(const Counts& counts)
{
    std::printf("\n%-40s", "result");
    for (std::size_t result = 0; result < counts.results.size(); ++result) {
        std::printf("%8zu", result);
    }
    std::printf("%8s\n%-40s", "none", "");
    for (const std::uint64_t count : counts.results) {
        std::printf("%8llu", Wide(count));
    }
    std::printf("%8llu\n", Wide(counts.overtaken));
}

}  // namespace

void PrintSummary(const Counts& counts, double seconds)
{
    PrintCalls(counts);
    PrintResults(counts);
    std::printf("\n%-64s%12s\n", "waited", "times");
    for (std::size_t reason = 0; reason < kReasons; ++reason) {
        std::printf("%-64s%12llu\n", kReasonTexts[reason], Wide(counts.waits[reason]));
    }
    std::printf("\n%llu schedules, %llu moves, %.1f s; fingerprint %016llx\n", Wide(counts.schedules),
                Wide(counts.moves), seconds, Wide(counts.fingerprint));
}

}  // namespace lyn::schedules
