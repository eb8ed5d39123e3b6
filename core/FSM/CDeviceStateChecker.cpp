// SPDX-License-Identifier: Apache-2.0
#include "FSM/CDeviceStateChecker.h"

#include <cstdint>
#include <utility>

#include "Common/PlatformCodes.h"
#include "Common/PlatformSwitch.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr int ADAPTER_ENABLED = 1;
constexpr std::uint32_t FLAG_SUSPEND = 0x40000000;

// The checker whose registrations are in force, by its number. The platform has one slot for each of them, so a
// checker that is destroyed late must not take the slots of the one that came after it.
PlatformSwitch<std::uintptr_t> s_Registered;

bool IsValidPowerState(int state)
{
    return state == 0 || state == 1 || state == 2 || state == 4;
}

}  // namespace

bool CDeviceStateChecekr::Register(std::uintptr_t number)
{
    if (number == 0) {
        bt_adapter_unset_state_changed_cb();
        device_power_unsubscribe_ambient_poweroff();
        device_power_unsubscribe_poweroff_event();
        return true;
    }
    void* const userData = LiveObject<CDeviceStateChecekr>::UserData(number);
    device_power_subscribe_poweroff_event(PowerOffCb, userData);
    device_power_subscribe_ambient_poweroff(AmbientPowerOffCb, userData);
    bt_adapter_set_state_changed_cb(BluetoothAdapterStateChangedCb, userData);
    return true;
}

void CDeviceStateChecekr::Init(DeviceStateChangedCallbck callback)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    m_DeviceStateChangedCallback = std::move(callback);
    UpdateCurrentPowerState();
    UpdateCurrentBluetoothAdapterState();
    s_Registered.Wish(m_Live.Number(), Register);
    InitEnableState();
}

void CDeviceStateChecekr::Start()
{
    {
        const std::lock_guard lock(m_Mutex);
        m_Started = !m_EnabledMeanwhile;
        if (m_Started) {
            return;
        }
    }
    g_idle_add(StartLate, m_Live.UserData());
}

gboolean CDeviceStateChecekr::StartLate(gpointer userData)
{
    CallLive<CDeviceStateChecekr>(userData, [](CDeviceStateChecekr& checker) {
        bool enabled = false;
        {
            const std::lock_guard lock(checker.m_Mutex);
            checker.m_Started = true;
            enabled = *checker.m_EnabledMeanwhile;
        }
        checker.UpdateEnabledState(enabled);
    });
    return G_SOURCE_REMOVE;
}

void CDeviceStateChecekr::Deinit()
{
    s_Registered.Replace(m_Live.Number(), 0, Register);
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
    LYN_LOGI("BT Adapter Staet: %d", m_BluetoothAdapterState.load());
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
    if (IsTooEarly(enabled)) {
        return;
    }
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

bool CDeviceStateChecekr::IsTooEarly(bool enabled)
{
    const std::lock_guard lock(m_Mutex);
    if (!m_Started) {
        m_EnabledMeanwhile = enabled;
    }
    return !m_Started;
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
    CallLive<CDeviceStateChecekr>(
        userData, [&](CDeviceStateChecekr& checker) { checker.OnBluetoothAdapterStateChanged(state); });
}

int CDeviceStateChecekr::PowerOffCb(const device_power_off_info_s* info, void* userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "userData is nullptr");
        return 0;
    }
    CallLive<CDeviceStateChecekr>(userData, [&](CDeviceStateChecekr& checker) { checker.OnPowerOffEvent(info); });
    return 0;
}

int CDeviceStateChecekr::AmbientPowerOffCb(const device_power_off_info_s* /*info*/, void* userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "userData is nullptr");
        return 0;
    }
    CallLive<CDeviceStateChecekr>(userData,
                                  [](CDeviceStateChecekr& checker) { checker.OnAmbientPowerOffEvent(); });
    return 0;
}

}  // namespace lyn
