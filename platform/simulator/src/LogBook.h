// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdarg>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

/// Log lines: kept for the tests, and shown on standard error as LYN_LOG_LEVEL says. It has a lock of its
/// own, so that anyone may log while holding whatever he likes.
class LogBook {
public:
    static LogBook& Instance();

    void Print(int priority, const char* tag, const char* format, std::va_list arguments);

    void Reset();
    void Clear();
    void Keep(int lowestPriority);
    void Tell(std::function<void(const LogLine&)> listener);
    /// Lines so far. The first call begins to keep them.
    std::vector<LogLine> Lines();

private:
    LogBook();

    std::mutex m_mutex;
    std::deque<LogLine> m_lines;
    std::atomic<int> m_kept;   ///< lowest priority kept
    std::atomic<int> m_shown;  ///< lowest priority shown
    std::function<void(const LogLine&)> m_listener;
    std::atomic<bool> m_heard{false};  ///< there is a listener
    const bool m_coloured;
};

}  // namespace lyn::simulator
