// SPDX-License-Identifier: Apache-2.0
#include "Codes.h"
#include "PlatformApi.h"
#include "power/Logind.h"

using namespace lyn::linux_platform;

namespace {

constexpr int kServesUsers = 1;
constexpr int kGoesToSleep = 3;

int Subscribe(Slot<device_power_off_cb>& slot, device_power_off_cb callback, void* userData)
{
    if (callback == nullptr) {
        return kInvalidArgument;
    }
    slot.Set(callback, userData);
    return Logind::Instance().Watch();
}

}  // namespace

int device_power_get_state(void)
{
    return Logind::Instance().Awake() ? kServesUsers : kGoesToSleep;
}

int device_power_subscribe_poweroff_event(device_power_off_cb callback, void* user_data)
{
    return Subscribe(Logind::Instance().powerOff, callback, user_data);
}

int device_power_unsubscribe_poweroff_event(void)
{
    Logind::Instance().powerOff.Unset();
    return 0;
}

int device_power_subscribe_ambient_poweroff(device_power_off_cb callback, void* user_data)
{
    return Subscribe(Logind::Instance().ambient, callback, user_data);
}

int device_power_unsubscribe_ambient_poweroff(void)
{
    Logind::Instance().ambient.Unset();
    return 0;
}
