// SPDX-License-Identifier: Apache-2.0
#include "Air.h"

#include "Simulator.h"

namespace lyn::simulator {

Air::Air(Simulator& simulator) : m_simulator(simulator) {}

void Air::Reset()
{
    SetListener(nullptr, nullptr);
}

void Air::SetListener(lyn_simulator_air_cb callback, void* userData)
{
    m_callback = callback;
    m_userData = userData;
}

void Air::Tell(lyn_simulator_air_event_e event, const std::string& address, const std::string& data)
{
    std::unique_lock lock(m_simulator.mutex);
    const auto callback = m_callback;
    void* const userData = m_userData;
    lock.unlock();
    if (callback != nullptr) {
        callback(event, address.c_str(), data.c_str(), static_cast<int>(data.size()), userData);
    }
}

}  // namespace lyn::simulator

void lyn_simulator_set_air_listener(lyn_simulator_air_cb callback, void* user_data)
{
    auto& simulator = lyn::simulator::Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    simulator.air.SetListener(callback, user_data);
}
