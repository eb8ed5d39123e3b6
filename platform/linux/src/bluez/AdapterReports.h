// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "bluez/Adapter.h"
#include "loop/Slot.h"
#include "lyn_platform/bluetooth.h"

namespace lyn::linux_platform {

inline bt_adapter_state_e StateOf(const AdapterStatus& status)
{
    return status.powered ? BT_ADAPTER_ENABLED : BT_ADAPTER_DISABLED;
}

/// Reports of the adapter's power to the core: changes, and once more whenever the adapter tells again.
class AdapterReports {
public:
    static AdapterReports& Instance();

    Slot<bt_adapter_state_changed_cb> slot;

private:
    AdapterReports();
};

}  // namespace lyn::linux_platform
