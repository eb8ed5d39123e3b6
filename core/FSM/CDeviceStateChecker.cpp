// SPDX-License-Identifier: Apache-2.0
#include "FSM/CDeviceStateChecker.h"

#include <cstdint>
#include <utility>

#include "Common/PlatformCodes.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr int ADAPTER_ENABLED = 1;
constexpr std::uint32_t FLAG_SUSPEND = 0x40000000;

// The checker whose registrations are in force, by its token; guarded by the lock on live objects. The
// platform has one slot for each registration, so a checker that is destroyed late, from inside its own
// report, must not take the slots of the one that came after it.
void* s_Registered = nullptr;

bool IsValidPowerState(int state)
{
    return state == 0 || state == 1 || state == 2 || state == 4;
}

}  // namespace

void CDeviceStateChecekr::Init(DeviceStateChangedCallbck callback)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    // Held to the end: a report that comes meanwhile waits, and finds everything in place.
    const auto lock = LockLiveObjects();
    m_DeviceStateChangedCallback = std::move(callback);
    UpdateCurrentPowerState();
    UpdateCurrentBluetoothAdapterState();
    s_Registered = m_Live.UserData();
    device_power_subscribe_poweroff_event(PowerOffCb, m_Live.UserData());
    device_power_subscribe_ambient_poweroff(AmbientPowerOffCb, m_Live.UserData());
    bt_adapter_set_state_changed_cb(BluetoothAdapterStateChangedCb, m_Live.UserData());
    InitEnableState();
}

void CDeviceStateChecekr::Deinit()
{
    const auto lock = LockLiveObjects();
    const bool isMine = s_Registered == m_Live.UserData();
    if (!isMine && LiveObject<CDeviceStateChecekr>::Find(s_Registered) != nullptr) {
        return;
    }
    s_Registered = nullptr;
    bt_adapter_unset_state_changed_cb();
    device_power_unsubscribe_ambient_poweroff();
    device_power_unsubscribe_poweroff_event();
}

void CDeviceStateChecekr::UpdateCurrentPowerState()
{
    m_PowerState = device_power_get_state();
    LYN_LOGI("Power State: %d", m_PowerState);
}

void CDeviceStateChecekr::UpdateCurrentBluetoothAdapterState()
{
    bt_adapter_state_e state = BT_ADAPTER_DISABLED;
    if (bt_adapter_get_state(&state) != PLATFORM_OK) {
        LYN_LOGE("%s", "fail to get bt_adapter_get_state");
    } else {
        m_BluetoothAdapterState = state;
    }
    LYN_LOGI("BT Adapter Staet: %d", m_BluetoothAdapterState);
}

void CDeviceStateChecekr::InitEnableState()
{
    const bool bluetoothEnabled = m_BluetoothAdapterState == ADAPTER_ENABLED;
    const bool validPowerState = IsValidPowerState(m_PowerState);
    m_Enabled = bluetoothEnabled && validPowerState;
    LYN_LOGI("bluetoothEnabled : %d, vaildPowerState %d", static_cast<int>(bluetoothEnabled),
             static_cast<int>(validPowerState));
}

void CDeviceStateChecekr::UpdateEnabledState(bool enabled)
{
    if (enabled == m_Enabled) {
        LYN_LOGE("%s", "same enabled state");
        return;
    }
    if (!m_DeviceStateChangedCallback) {
        LYN_LOGE("%s", "callback is null");
        return;
    }
    m_Enabled = enabled;
    LYN_LOGI("enabled : %d", static_cast<int>(enabled));
    m_DeviceStateChangedCallback(enabled);
}

void CDeviceStateChecekr::OnBluetoothAdapterStateChanged(int state)
{
    m_BluetoothAdapterState = state;
    LYN_LOGI("m_BluetoothAdapterState: %d", state);
    // The power state is not consulted: Bluetooth that comes on enables, whatever was read at the start.
    UpdateEnabledState(state == ADAPTER_ENABLED);
}

void CDeviceStateChecekr::OnPowerOffEvent(const device_power_off_info_s* info)
{
    if (info == nullptr) {
        LYN_LOGE("%s", "info is nullptr");
        return;
    }
    if ((info->flags & FLAG_SUSPEND) == 0) {
        return;
    }
    LYN_LOGI("%s", "Goto Suspend");
    UpdateEnabledState(false);
}

void CDeviceStateChecekr::OnAmbientPowerOffEvent()
{
    LYN_LOGI("%s", "Go to Ambient off");
    UpdateEnabledState(false);
}

void CDeviceStateChecekr::BluetoothAdapterStateChangedCb(int /*result*/, bt_adapter_state_e state, void* userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "userData is nullptr");
        return;
    }
    CallShared<CDeviceStateChecekr>(
        userData, [&](CDeviceStateChecekr& checker) { checker.OnBluetoothAdapterStateChanged(state); });
}

int CDeviceStateChecekr::PowerOffCb(const device_power_off_info_s* info, void* userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "userData is nullptr");
        return 0;
    }
    CallShared<CDeviceStateChecekr>(userData,
                                    [&](CDeviceStateChecekr& checker) { checker.OnPowerOffEvent(info); });
    return 0;
}

int CDeviceStateChecekr::AmbientPowerOffCb(const device_power_off_info_s* /*info*/, void* userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "userData is nullptr");
        return 0;
    }
    CallShared<CDeviceStateChecekr>(userData,
                                    [](CDeviceStateChecekr& checker) { checker.OnAmbientPowerOffEvent(); });
    return 0;
}

}  // namespace lyn
