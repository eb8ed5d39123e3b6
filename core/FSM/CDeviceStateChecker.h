// SPDX-License-Identifier: Apache-2.0
//
// Watches the Bluetooth adapter and the TV's power, folds both into one "enabled" flag and tells its
// owner when the flag changes, on the thread on which the platform reports. Only Bluetooth being turned
// on enables again; the power state is read once.
//
// Held by a shared pointer, so that a report in progress keeps it while another thread destroys it.
#pragma once

#include <glib.h>

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

#include "Common/LiveObject.h"
#include "lyn_platform/bluetooth.h"
#include "lyn_platform/power.h"

namespace lyn {

class CDeviceStateChecekr : public std::enable_shared_from_this<CDeviceStateChecekr> {
public:
    using DeviceStateChangedCallbck = std::function<void(bool enabled)>;

    CDeviceStateChecekr() = default;
    CDeviceStateChecekr(const CDeviceStateChecekr&) = delete;
    CDeviceStateChecekr& operator=(const CDeviceStateChecekr&) = delete;

    /// Reads both states and registers for their changes; reports nothing.
    void Init(DeviceStateChangedCallbck callback);
    /// The owner is ready: changes are reported from now on. One that has come since Init() began is reported by
    /// the main loop.
    void Start();
    /// Ends the registrations, unless another checker has taken them over since.
    void Deinit();
    bool IsEnableState() const { return m_Enabled; }
    std::shared_ptr<void> Keep() { return weak_from_this().lock(); }

    static void BluetoothAdapterStateChangedCb(int result, bt_adapter_state_e state, void* userData);
    static int PowerOffCb(const device_power_off_info_s* info, void* userData);
    static int AmbientPowerOffCb(const device_power_off_info_s* info, void* userData);

    void OnBluetoothAdapterStateChanged(int state);
    void OnPowerOffEvent(const device_power_off_info_s* info);
    void OnAmbientPowerOffEvent();

private:
    static bool Register(std::uintptr_t number);
    static gboolean StartLate(gpointer userData);
    void UpdateCurrentPowerState();
    void UpdateCurrentBluetoothAdapterState();
    void InitEnableState();
    void UpdateEnabledState(bool enabled);
    /// Keeps it for Start().
    bool IsTooEarly(bool enabled);

    bool m_Enabled = false;  ///< The creator's until Start(), the platform's callbacks' afterwards.
    int m_PowerState = 0;
    std::atomic<int> m_BluetoothAdapterState{0};
    DeviceStateChangedCallbck m_DeviceStateChangedCallback;
    std::mutex m_Mutex;  ///< Guards these two.
    bool m_Started = false;
    std::optional<bool> m_EnabledMeanwhile;  ///< What was reported before Start().
    LiveObject<CDeviceStateChecekr> m_Live{*this};
};

}  // namespace lyn
