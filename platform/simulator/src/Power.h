// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Slot.h"

namespace lyn::simulator {

class Simulator;

/// Power state and power-off events. The caller holds the simulator's lock.
class Power {
public:
    using Registration = Slot<device_power_off_cb>;

    explicit Power(Simulator& simulator);

    /// Forgets the registrations.
    void Reset();
    void Register(Registration& registration, device_power_off_cb callback, void* userData);

    /// Delivers an event from the main loop to the one who is registered now.
    void Post(const Registration& registration, std::uint32_t flags);

    int state = 0;
    Registration powerOff;
    Registration ambientPowerOff;

private:
    Simulator& m_simulator;
};

}  // namespace lyn::simulator
