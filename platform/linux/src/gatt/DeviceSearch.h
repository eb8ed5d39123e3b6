// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "bus/Bus.h"
#include "loop/MainContext.h"

namespace lyn::linux_platform {

/// Lets BlueZ discover until it knows a device again. It forgets devices half a minute after a discovery. Ends
/// when it is destroyed, and leaves no discovery behind; a scan of this process serves as well, and goes on. On
/// the main context.
class DeviceSearch {
public:
    /// 0 when the device is there and the discovery has ended, else why there can be no discovery.
    using Done = std::function<void(int code)>;

    DeviceSearch(std::shared_ptr<Bus> bus, std::string adapterPath, std::string devicePath, Done done);
    ~DeviceSearch();
    DeviceSearch(const DeviceSearch&) = delete;
    DeviceSearch& operator=(const DeviceSearch&) = delete;

private:
    enum class Discovery { unknown, ours, ofOthers, stopped };

    void Start();
    void Ask();
    void OnStarted(const Reply& reply);
    void LookOnce();
    void OnFound();
    void Finish();

    std::shared_ptr<Bus> m_bus;
    std::string m_adapterPath;
    std::string m_devicePath;
    Done m_done;
    Discovery m_discovery = Discovery::unknown;
    bool m_asking = false;
    bool m_found = false;
    Timer m_askAgain;
    Subscription m_added;
    /// Lets answers find out that the search is over.
    std::shared_ptr<DeviceSearch*> m_self = std::make_shared<DeviceSearch*>(this);
};

}  // namespace lyn::linux_platform
