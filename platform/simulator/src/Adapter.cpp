// SPDX-License-Identifier: Apache-2.0
#include "Adapter.h"

#include "Simulator.h"

namespace lyn::simulator {

Adapter::Adapter(Simulator& simulator) : m_simulator(simulator) {}

void Adapter::Reset()
{
    registration = {};
    productInits = 0;
    boosted = false;
}

bool Adapter::IsOn() const
{
    return state == BT_ADAPTER_ENABLED;
}

void Adapter::SetState(bt_adapter_state_e next, bool report)
{
    state = next;
    if (!IsOn()) {
        m_simulator.radio.StopScan();
        m_simulator.links.LoseAll(kLinkLost);
    }
    if (report) {
        PostReport();
    }
}

void Adapter::Register(bt_adapter_state_changed_cb callback, void* userData)
{
    registration = {callback, userData, m_simulator.NewId()};
}

void Adapter::PostReport()
{
    m_simulator.loop.Post(Loop::Kind::awaited, 0, [this, id = registration.id, reported = state] {
        std::unique_lock lock(m_simulator.mutex);
        const auto current = registration;
        lock.unlock();
        if (current.Holds(id)) {
            current.callback(0, reported, current.userData);
        }
    });
}

}  // namespace lyn::simulator
