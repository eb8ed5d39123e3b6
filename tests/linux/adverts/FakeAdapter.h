// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "FakeService.h"

namespace lyn::linux_tests {

/// bluetoothd with one adapter, as far as scanning goes. It answers as bluetoothd does to one client.
class FakeAdapter {
public:
    /// An index that no real adapter has.
    static constexpr const char* kPath = "/org/bluez/hci64000";

    enum class Power { off, on };
    explicit FakeAdapter(Power power = Power::on);

    /// Says so on the bus too, and ends discoveries.
    void SetPower(Power power);
    /// Devices of GetManagedObjects, in GVariant text form: '@o "/org/...": {"org.bluez.Device1": {...}}, ...'.
    void SetDevices(const std::string& devices);
    /// So often a start is refused after a stop, as long as that is in progress.
    void SetRefusalsAfterStop(int count);
    /// A start is not answered.
    void SetMute(bool mute);

    /// A device with changed properties, as the text of an a{sv}.
    void ChangeDevice(const std::string& device, const std::string& properties);
    void AddDevice(const std::string& device, const std::string& properties);

    /// What was asked for since the last time, without GetManagedObjects. A filter is written with its values.
    std::vector<std::string> TakeCalls();
    bool IsDiscovering() const;

    FakeService& Service() { return m_service; }

private:
    GDBusMessage* GetObjects(GDBusMessage* call) const;
    GDBusMessage* SetFilter(GDBusMessage* call);
    GDBusMessage* Start(GDBusMessage* call);
    GDBusMessage* Stop(GDBusMessage* call);

    mutable std::mutex m_mutex;
    bool m_powered;
    bool m_discovering = false;
    bool m_mute = false;
    int m_refusalsAfterStop = 0;
    int m_refusalsLeft = 0;
    std::string m_devices;
    std::vector<std::string> m_calls;
    FakeService m_service;  ///< last: it calls from its own thread
};

}  // namespace lyn::linux_tests
