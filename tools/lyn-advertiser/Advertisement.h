// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <functional>
#include <memory>
#include <string>

#include "Config.h"
#include "bus/Bus.h"

namespace lyn::advertiser {

/// One advertisement of the TV, on the air through bluetoothd for as long as this object lives. On the main
/// context.
class Advertisement {
public:
    /// Tells that the advertisement is on the air (an empty text), or why it is not, or not any more.
    using Tell = std::function<void(const std::string& error)>;

    /// @param adapter object of BlueZ's adapter
    /// @param intervalMs how often; bluetoothd follows it where the controller can
    Advertisement(std::shared_ptr<linux_platform::Bus> bus, const std::string& adapter, const std::string& feature,
                  const Payload& payload, unsigned intervalMs, Tell tell);
    ~Advertisement();
    Advertisement(const Advertisement&) = delete;
    Advertisement& operator=(const Advertisement&) = delete;

private:
    static GVariant* GetProperty(GDBusConnection*, const char*, const char*, const char*, const char* name,
                                 GError**, gpointer self);
    GVariant* Property(const std::string& name) const;
    static void OnRelease(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
                          GDBusMethodInvocation* invocation, gpointer self);
    void Register();

    std::shared_ptr<linux_platform::Bus> m_bus;
    std::string m_adapter;
    std::string m_path;
    Payload m_payload;
    unsigned m_intervalMs;
    Tell m_tell;
    guint m_object = 0;
};

}  // namespace lyn::advertiser
