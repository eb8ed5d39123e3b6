// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <utility>

#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

/// Tells the call listener, for one platform call, that its work begins and that it has been done: at the two
/// ends of its own life, which encloses every lock of the simulator.
class CallWatch {
public:
    /// Whether anybody listens.
    static bool IsOn() { return s_isOn.load(std::memory_order_acquire); }
    static void Listen(std::function<void(const CallMoment&)> listener);

    explicit CallWatch(const char* function) : m_function(function), m_isHeard(IsOn())
    {
        if (m_isHeard) {
            Tell(CallMoment::Phase::before);
        }
    }

    CallWatch(const char* function, std::string text)
        : m_function(function),
          m_text(std::move(text)),
          m_isHeard(IsOn())
    {
        if (m_isHeard) {
            Tell(CallMoment::Phase::before);
        }
    }

    ~CallWatch()
    {
        if (m_isHeard) {
            Tell(CallMoment::Phase::after);
        }
    }

    CallWatch(const CallWatch&) = delete;
    CallWatch& operator=(const CallWatch&) = delete;

private:
    void Tell(CallMoment::Phase phase) const;

    static std::atomic<bool> s_isOn;

    const char* m_function;
    std::string m_text;
    const bool m_isHeard;
};

}  // namespace lyn::simulator
