// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "PlatformApi.h"

namespace lyn::simulator {

class Simulator;

/// The one who listens to what passes over the air.
class Air {
public:
    explicit Air(Simulator& simulator);

    void Reset();                                                     ///< with the lock
    void SetListener(lyn_simulator_air_cb callback, void* userData);  ///< with the lock

    /// Tells the listener. Without the lock, on the main loop.
    void Tell(lyn_simulator_air_event_e event, const std::string& address, const std::string& data = {});

private:
    Simulator& m_simulator;
    lyn_simulator_air_cb m_callback = nullptr;
    void* m_userData = nullptr;
};

}  // namespace lyn::simulator
