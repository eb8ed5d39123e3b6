// SPDX-License-Identifier: Apache-2.0
#include "PlatformApi.h"
#include "PlatformCall.h"

using namespace lyn::simulator;

namespace {

int Subscribe(PlatformCall& call, Power::Registration& registration, device_power_off_cb callback, void* userData)
{
    if (callback == nullptr) {
        return kInvalidArgument;
    }
    call.simulator.power.Register(registration, callback, userData);
    return 0;
}

}  // namespace

int device_power_get_state(void)
{
    return Perform("device_power_get_state", In(), [](PlatformCall& call) { return call.simulator.power.state; });
}

int device_power_subscribe_poweroff_event(device_power_off_cb callback, void* user_data)
{
    return Perform("device_power_subscribe_poweroff_event", In(), [&](PlatformCall& call) {
        return Subscribe(call, call.simulator.power.powerOff, callback, user_data);
    });
}

int device_power_unsubscribe_poweroff_event(void)
{
    return Perform("device_power_unsubscribe_poweroff_event", In(), [](PlatformCall& call) {
        call.simulator.power.powerOff = {};
        return 0;
    });
}

int device_power_subscribe_ambient_poweroff(device_power_off_cb callback, void* user_data)
{
    return Perform("device_power_subscribe_ambient_poweroff", In(), [&](PlatformCall& call) {
        return Subscribe(call, call.simulator.power.ambientPowerOff, callback, user_data);
    });
}

int device_power_unsubscribe_ambient_poweroff(void)
{
    return Perform("device_power_unsubscribe_ambient_poweroff", In(), [](PlatformCall& call) {
        call.simulator.power.ambientPowerOff = {};
        return 0;
    });
}
