// SPDX-License-Identifier: Apache-2.0
#include "ScanTest.h"

namespace lyn::linux_tests {

ScanTest::ScanTest()
{
    PrivateBus::Instance();
}

ScanTest::~ScanTest()
{
    bt_adapter_le_stop_scan();
    RunQuietly(20);
}

void ScanTest::OnResult(int result, bt_adapter_le_device_scan_result_info_s* info, void* self)
{
    ASSERT_EQ(result, 0);
    Result kept{info->remote_address, info->rssi, {}, std::nullopt};
    kept.advertising.assign(info->adv_data, static_cast<std::size_t>(info->adv_data_len));
    if (info->scan_data != nullptr) {
        kept.response.emplace(info->scan_data, static_cast<std::size_t>(info->scan_data_len));
    }
    auto* const test = static_cast<ScanTest*>(self);
    test->results.push_back(kept);
    if (const auto react = test->onResult) {
        react();
    }
}

}  // namespace lyn::linux_tests
