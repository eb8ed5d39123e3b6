// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>

#include "adverts/DeviceAdverts.h"
#include "adverts/Discovery.h"
#include "adverts/HciAdverts.h"
#include "loop/Slot.h"
#include "lyn_platform/bluetooth.h"

namespace lyn::linux_platform {

/// The LE scan of the seam: bluetoothd discovers, and adverts are read from a raw HCI socket, or from bluetoothd's
/// device objects if this process may not open one. Any thread.
class Scan {
public:
    static Scan& Instance();

    int Start(bt_adapter_le_scan_result_cb callback, void* userData);
    int Stop();

    bool IsOn() const;

private:
    Scan();

    void Listen(const std::string& adapterPath);
    void Use(std::shared_ptr<HciAdverts> adverts, const std::string& adapterPath);
    void UseDevices(const std::string& adapterPath);
    void Close();
    void OnAdapter(const AdapterStatus& status);
    void Deliver(const Advert& advert);

    Slot<bt_adapter_le_scan_result_cb> m_slot;
    Discovery m_discovery;

    // On the main context only.
    std::string m_path;  ///< of the adapter that is listened to
    std::shared_ptr<HciAdverts> m_hciAdverts;
    std::shared_ptr<DeviceAdverts> m_deviceAdverts;
};

}  // namespace lyn::linux_platform
