// SPDX-License-Identifier: Apache-2.0
//
// What a process that plays schedules tells the one that started it, in memory that both see: a process that dies,
// or that stands still, has told all that it knew.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "schedules/Move.h"

namespace lyn::schedules {

/// Why a thread may wait for another.
enum class Reason {
    work,          ///< a scan, stop or request for another one of the same service
    state,         ///< what moves the state for a state callback
    scan,          ///< a scan, stop or request for the platform's start or stop of its one scan
    registration,  ///< a request for the platform's one registration of link reports
    momentary      ///< anything, for a thread that goes on to its next stop without waiting
};
inline constexpr std::size_t kReasons = 5;

struct Counts {
    std::uint64_t schedules = 0;
    std::uint64_t moves = 0;
    std::uint64_t fingerprint = 0;                              ///< of all moves: the same seeds give the same
    std::array<std::array<std::uint64_t, 10>, kCalls> codes{};  ///< by call and return value; 9: an exception
    std::array<std::uint64_t, 12> results{};
    std::array<std::uint64_t, kReasons> waits{};
    std::uint64_t overtaken = 0;  ///< requests that had no result, of a destroyed or out-of-service service
};

struct Outcome {
    std::atomic<std::uint64_t> heartbeat{0};
    std::atomic<bool> hasFailed{false};
    std::uint64_t seed = 0;
    std::array<char, 32> kind{};
    std::array<char, 8192> text{};
    std::array<char, 1 << 18> script{};  ///< of the schedule that is being played, so far
    std::size_t scriptSize = 0;
    std::size_t lastLine = 0;
    Move lastMove;
    int lastTimes = 0;
    Counts counts;

    void BeginScript(const std::string& header);
    void Record(const Move& move);
};

/// The process's own; made before any process is forked off.
Outcome& TheOutcome();

/// A promise is broken: tells it and ends the process.
[[noreturn]] void Fail(const char* kind, const std::string& text);
inline void Require(bool holds, const char* kind, const std::string& promise)
{
    if (!holds) {
        Fail(kind, promise);
    }
}

}  // namespace lyn::schedules
