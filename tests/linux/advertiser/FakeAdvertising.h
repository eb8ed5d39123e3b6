// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "FakeBluez.h"

namespace lyn::linux_tests {

/// bluetoothd's advertising: it reads what a program shows when the program registers it, and lets it go when the
/// program says so or leaves the bus.
class FakeAdvertising {
public:
    explicit FakeAdvertising(FakeBluez& bluez);
    ~FakeAdvertising();
    FakeAdvertising(const FakeAdvertising&) = delete;
    FakeAdvertising& operator=(const FakeAdvertising&) = delete;

    /// Of what is advertised now, in the order of their registration: "hci0 mirroring".
    std::vector<std::string> OnAir() const;
    /// A property of what is advertised of a feature, in GVariant text form; empty when it has none.
    std::string Property(const std::string& feature, const std::string& name) const;
    /// Says to the program that it has let the advertisement go. False when that is not understood.
    bool Release(const std::string& feature);
    /// As after a restart.
    void Forget();

private:
    struct Entry {
        std::string sender;
        std::string path;
        std::string adapter;
        std::shared_ptr<GVariant> properties;
    };

    void Register(const FakeDaemon::Call& call);
    void Unregister(const FakeDaemon::Call& call);
    std::shared_ptr<GVariant> Ask(const std::string& owner, const std::string& path, const char* interface,
                                  const char* method, GVariant* arguments) const;
    bool IsOnBus(const std::string& name) const;
    std::vector<Entry> Live() const;

    FakeBluez& m_bluez;
    GDBusConnection* m_connection;
    mutable std::mutex m_mutex;
    std::vector<Entry> m_entries;
};

}  // namespace lyn::linux_tests
