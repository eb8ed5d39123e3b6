// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

/// The calls of platform functions, oldest first. It is off until a program begins to steer the
/// simulation, so that a process that never asks pays nothing, and it forgets the oldest calls when it
/// gets too long. The caller holds the simulator's lock.
class CallJournal {
public:
    struct Entry {
        const char* function;
        std::string arguments;
        int result;
        std::uint64_t thread;
    };

    void SetEnabled(bool enabled);
    void Clear();

    /// Begins an entry; null while the journal is off. The entry stays where it is during its call.
    Entry* Begin(const char* function);

    std::vector<Call> Calls() const;

private:
    bool m_enabled = false;
    std::deque<Entry> m_entries;
};

}  // namespace lyn::simulator
