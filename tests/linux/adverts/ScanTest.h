// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "FakeAdapter.h"
#include "PrivateBus.h"
#include "lyn_platform/bluetooth.h"

namespace lyn::linux_tests {

inline constexpr int kScanNotRunning = static_cast<int>(0xFE400105);

/// A scan over the seam, on the private bus; without a raw HCI socket, as there is no such adapter.
class ScanTest : public ::testing::Test {
protected:
    ScanTest();
    ~ScanTest() override;

    struct Result {
        std::string address;
        int rssi;
        std::string advertising;
        std::optional<std::string> response;
    };

    int Start() { return bt_adapter_le_start_scan(&ScanTest::OnResult, this); }
    static void OnResult(int result, bt_adapter_le_device_scan_result_info_s* info, void* self);

    std::vector<Result> results;
    std::function<void()> onResult;
};

}  // namespace lyn::linux_tests
