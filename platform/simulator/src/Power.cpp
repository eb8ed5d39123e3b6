// SPDX-License-Identifier: Apache-2.0
#include "Power.h"

#include "Simulator.h"

namespace lyn::simulator {

Power::Power(Simulator& simulator) : m_simulator(simulator) {}

void Power::Reset()
{
    powerOff = {};
    ambientPowerOff = {};
}

void Power::Register(Registration& registration, device_power_off_cb callback, void* userData)
{
    registration = {callback, userData, m_simulator.NewId()};
}

void Power::Post(const Registration& registration, std::uint32_t flags)
{
    m_simulator.loop.Post(Loop::Kind::awaited, 0, [this, &registration, id = registration.id, flags] {
        std::unique_lock lock(m_simulator.mutex);
        const Registration current = registration;
        lock.unlock();
        if (current.Holds(id)) {
            const device_power_off_info_s info{flags};
            current.callback(&info, current.userData);
        }
    });
}

}  // namespace lyn::simulator
