// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

/// One registered callback. Each registration has an id of its own: something that was to be delivered
/// to an earlier registration knows by it that its time is over. Id 0 means that nothing is registered.
template <typename Callback>
struct Slot {
    Callback callback = nullptr;
    void* userData = nullptr;
    std::uint64_t id = 0;

    bool Holds(std::uint64_t registration) const { return callback != nullptr && id == registration; }

    Registration<Callback> Shown() const { return {callback, userData}; }
};

}  // namespace lyn::simulator
