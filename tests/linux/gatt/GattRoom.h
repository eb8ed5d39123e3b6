// SPDX-License-Identifier: Apache-2.0
//
// Fixture: a fake bluetoothd with one phone, the platform's links and clients on it, and short time limits.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "FakeBluez.h"
#include "PrivateBus.h"
#include "gatt/Limits.h"
#include "lyn_platform/bluetooth.h"
#include "lyn_platform/gatt.h"

namespace lyn::linux_tests {

inline constexpr const char* kPhone = "A0:00:00:00:00:01";
inline constexpr const char* kServiceUuid = "f7608236-13bd-4a99-bbcd-9426bccb6c24";
inline constexpr const char* kCharacteristicUuid = "9be85432-b1db-416c-9e1c-d6d381305337";

struct Report {
    int result = 0;
    bool connected = false;
    std::string address;

    bool operator==(const Report&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Report& report);

class GattRoom : public ::testing::Test {
protected:
    GattRoom();
    ~GattRoom() override;

    /// For everything that must succeed, however busy the machine is. In force at the beginning.
    static void UseLongLimits();
    /// For what must end because its time is over.
    static void UseShortLimits();

    /// Waits until the platform has seen which adapter there is.
    static void WaitForAdapter(bool powered);
    /// Registers for link reports, which are kept from then on.
    void Register();
    /// Connects, and runs until the report is there.
    void Connect();
    bool WaitForReports(std::size_t count);

    /// A client of the connected phone with its characteristic looked up.
    void MakeClient();
    void Listen();
    int Write(const std::string& value);
    void RequestMtu();

    static void OnReport(int result, bool connected, const char* address, void* userData);
    static void OnValue(bt_gatt_h characteristic, char* value, int length, void* userData);
    static void OnWritten(int result, bt_gatt_h characteristic, void* userData);
    static void OnMtu(bt_gatt_client_h client, const bt_gatt_client_att_mtu_info_s* info, void* userData);

    std::unique_ptr<FakeBluez> bluez;
    FakePhone phone;
    std::vector<Report> reports;
    std::function<void()> onReport;
    std::function<void()> onValue;
    bt_gatt_client_h client = nullptr;
    bt_gatt_h service = nullptr;
    bt_gatt_h characteristic = nullptr;
    std::vector<std::string> values;
    std::vector<int> written;
    std::vector<unsigned> mtus;
    std::vector<unsigned> mtuStatus;
};

}  // namespace lyn::linux_tests
