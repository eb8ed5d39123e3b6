// SPDX-License-Identifier: Apache-2.0
//
// Checks what every platform promises, through lyn_platform/*.h alone, against whatever liblyn_platform.so.0
// the loader finds. What needs a phone is skipped unless the environment names one:
//
//   LYN_CONTRACT_PHONE           address of a phone within reach that advertises often, answers scan requests,
//                                accepts a connection, and offers the service and characteristic below
//   LYN_CONTRACT_SERVICE         UUID of its service
//   LYN_CONTRACT_CHARACTERISTIC  UUID of a characteristic of it that can be written with any text, and that
//                                notifies a text of at least one byte after each write
//   LYN_CONTRACT_ABSENT_PHONE    address that no device within reach has
//   LYN_CONTRACT_LIMIT_SECONDS   how long to wait for what has to come, 60 by default
//   LYN_CONTRACT_QUIET_MS        how long to look for what must not come, 1000 by default
//
// The test must be the only user of the platform's Bluetooth while it runs.
#pragma once

#include <glib.h>
#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "lyn_platform/bluetooth.h"
#include "lyn_platform/gatt.h"

namespace lyn::contract {

inline constexpr int kScanNotRunning = static_cast<int>(0xFE400105);

/// The variable's value; none when it is not set or empty.
std::optional<std::string> Environment(const char* name);

/// Runs the default main context until `done` is true. False when the limit of the environment passes first.
bool RunUntil(const std::function<bool()>& done);
/// Runs the default main context for as long as the environment says: time in which something must not happen.
void RunQuietly();

/// Makes one platform call, from inside of which no callback may run.
int Call(const std::function<int()>& call);

/// To be held by every callback of a test: checks that it runs on the main context, alone, and not from inside
/// a call.
class InCallback {
public:
    InCallback();
    ~InCallback();
    InCallback(const InCallback&) = delete;
    InCallback& operator=(const InCallback&) = delete;
};

/// A test that needs the adapter to be on.
class BluetoothTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;
};

/// A test that needs the phone.
class PhoneTest : public BluetoothTest {
protected:
    void SetUp() override;
    void TearDown() override;

    struct Report {
        int result;
        bool connected;
        std::string address;
    };

    /// Registers for link reports, which are kept from then on.
    void Register();
    /// Connects, and runs until the report is there.
    void Connect();
    /// Takes the link down, if it is up, and runs until that is reported.
    void Disconnect();
    static void OnReport(int result, bool connected, const char* address, void* userData);

    std::string m_phone;
    std::vector<Report> m_reports;
    std::function<void()> m_onReport;
};

}  // namespace lyn::contract
