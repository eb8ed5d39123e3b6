// SPDX-License-Identifier: Apache-2.0
//
// What the simulator's tests share: a fresh simulation for each, and users of the platform that keep what is
// reported to them.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "lyn_platform/bluetooth.h"
#include "lyn_platform/gatt.h"
#include "lyn_simulator/simulator.h"

namespace lyn::simulator::test {

inline constexpr const char* kPhone = "AA:BB:CC:DD:EE:01";
inline constexpr const char* kOther = "AA:BB:CC:DD:EE:02";
inline constexpr const char* kUniqueId = "0123456789abcdefghijkl";
inline constexpr const char* kService = "f7608236-13bd-4a99-bbcd-9426bccb6c24";
inline constexpr const char* kCharacteristic = "9be85432-b1db-416c-9e1c-d6d381305337";

inline constexpr int kLinkLost = static_cast<int>(0xFE400104);
inline constexpr int kScanNotRunning = static_cast<int>(0xFE400105);
inline constexpr int kConnectTimedOut = static_cast<int>(0xC0000001);

class SimulatorTest : public ::testing::Test {
protected:
    SimulatorTest();
    ~SimulatorTest() override;
};

/// A mirroring phone that answers so.
Phone AnsweringPhone(const std::vector<Answer>& answers, const std::string& address = kPhone);
Answer Text(const std::string& text);

/// One who scans.
class Listener {
public:
    struct Result {
        std::string address;
        int rssi = 0;
        std::optional<Bytes> advertising;
        std::optional<Bytes> scanResponse;
    };

    int Start();
    int Stop();
    std::vector<std::string> Addresses() const;

    std::vector<Result> results;
    std::function<void(bt_adapter_le_device_scan_result_info_s*)> onResult;

private:
    static void OnResult(int result, bt_adapter_le_device_scan_result_info_s* info, void* userData);
};

/// One who is registered for link reports.
class LinkUser {
public:
    struct Report {
        int result = 0;
        bool connected = false;
        std::string address;

        bool operator==(const Report&) const = default;
    };

    /// Registers at once.
    LinkUser();
    void Register();

    std::vector<Report> reports;
    std::function<void(const Report&)> onReport;

private:
    static void OnReport(int result, bool connected, const char* address, void* userData);
};

std::ostream& operator<<(std::ostream& out, const LinkUser::Report& report);

/// A GATT client of a phone whose link is up, with the mirroring characteristic looked up.
class Peer {
public:
    /// Connects, and fails the test when that fails.
    explicit Peer(const std::string& address = kPhone);
    ~Peer();
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    int Listen();
    int Write(const std::string& message);
    int RequestMtu(unsigned mtu);
    void Destroy();

    LinkUser link;
    bt_gatt_client_h client = nullptr;
    bt_gatt_h service = nullptr;
    bt_gatt_h characteristic = nullptr;
    std::vector<std::string> values;
    std::vector<int> completions;
    std::vector<unsigned> mtus;
    std::vector<unsigned> mtuStatuses;
    /// "value Success", "written 0", "mtu 256" in the order of their coming.
    std::vector<std::string> events;
    std::function<void()> onValue;
    std::function<void()> onWritten;

private:
    static void OnValue(bt_gatt_h, char* value, int length, void* userData);
    static void OnWritten(int result, bt_gatt_h, void* userData);
    static void OnMtu(bt_gatt_client_h, const bt_gatt_client_att_mtu_info_s* info, void* userData);
};

/// Takes over a malloc'ed text.
std::optional<std::string> TakeText(char* text);

}  // namespace lyn::simulator::test
