// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>

#include "Slot.h"

namespace lyn::simulator {

class Simulator;

/// The Bluetooth adapter: on or off, its address, and who wants to know. The caller holds the
/// simulator's lock.
class Adapter {
public:
    explicit Adapter(Simulator& simulator);

    /// Forgets all but the address and the state.
    void Reset();

    /// Turns the adapter on or off; off ends the scan and every link.
    void SetState(bt_adapter_state_e next, bool report);
    bool IsOn() const;
    void Register(bt_adapter_state_changed_cb callback, void* userData);

    bt_adapter_state_e state = BT_ADAPTER_ENABLED;
    std::optional<std::string> address;
    Slot<bt_adapter_state_changed_cb> registration;
    int productInits = 0;
    bool boosted = false;

private:
    void PostReport();

    Simulator& m_simulator;
};

}  // namespace lyn::simulator
