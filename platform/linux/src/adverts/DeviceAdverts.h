// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "adverts/MergedData.h"
#include "bus/Bus.h"

namespace lyn::linux_platform {

/// Adverts of one adapter from BlueZ's device objects, as long as this object lives: for a process that may not
/// open a raw HCI socket. Everything on the main context. Whoever handles an advert may destroy this object.
class DeviceAdverts : public std::enable_shared_from_this<DeviceAdverts> {
public:
    /// Begins with the devices that BlueZ hears now.
    static std::shared_ptr<DeviceAdverts> Begin(std::shared_ptr<Bus> bus, const std::string& adapterPath,
                                                AdvertHandler handler);

    DeviceAdverts(std::shared_ptr<Bus> bus, const std::string& adapterPath, AdvertHandler handler);

private:
    void Watch();
    void OnInterfacesAdded(GVariant* values);
    void OnPropertiesChanged(const char* path, GVariant* values);
    void TakeProperties(const std::string& path, GVariant* properties);

    std::shared_ptr<Bus> m_bus;
    std::string m_prefix;  ///< what the paths of the adapter's devices begin with
    AdvertHandler m_handler;
    MergedData m_merged;
    std::vector<Subscription> m_subscriptions;
};

}  // namespace lyn::linux_platform
