// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "Codes.h"
#include "PlatformApi.h"
#include "bluez/Adapter.h"
#include "bluez/AdapterReports.h"

using namespace lyn::linux_platform;

int bt_adapter_get_state(bt_adapter_state_e* state)
{
    if (state == nullptr) {
        return kInvalidArgument;
    }
    *state = StateOf(Adapter::Instance().Read());
    return 0;
}

int bt_adapter_set_state_changed_cb(bt_adapter_state_changed_cb callback, void* user_data)
{
    if (callback == nullptr) {
        return kInvalidArgument;
    }
    AdapterReports::Instance().slot.Set(callback, user_data);
    return Adapter::Instance().Watch();
}

int bt_adapter_unset_state_changed_cb(void)
{
    AdapterReports::Instance().slot.Unset();
    return 0;
}

int bt_adapter_get_address(char** address)
{
    if (address == nullptr) {
        return kInvalidArgument;
    }
    const AdapterStatus status = Adapter::Instance().Read();
    if (status.address.empty()) {
        return kAdapterOff;
    }
    char* const copy = ::strdup(status.address.c_str());
    if (copy == nullptr) {
        return kOutOfMemory;
    }
    *address = copy;
    return 0;
}
