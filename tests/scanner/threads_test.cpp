// SPDX-License-Identifier: Apache-2.0
//
// Advertisements on the main loop while another thread works with the service.
#include <gmock/gmock.h>

#include <atomic>
#include <string>
#include <thread>

#include "lyn_service.h"
#include "scanner/Advertisements.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

void Count(const lyn_device_info_t* info, void* userData)
{
    // The whole record is looked at: it must be whole.
    if (info->address != nullptr && std::string(info->address) == ADDRESS && info->rssi == -50) {
        ++*static_cast<std::atomic<int>*>(userData);
    }
}

class ScanOnTwoThreads : public SimulatedTv, public testing::WithParamInterface<std::string> {
protected:
    static void Deliver()
    {
        if (GetParam() == "nodlink") {
            simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(NodLinkData()), std::nullopt);
            return;
        }
        const std::uint8_t marker = GetParam() == "kov" ? KOV_MARKER : MIRRORING_MARKER;
        simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(Marked(marker, UNIQUE_ID)),
                                        NameResponse("Kitchen"));
    }

    // Advertisements until the other thread has done its work.
    template <typename Work>
    static void DeliverDuring(const Work& work)
    {
        std::atomic<bool> done{false};
        std::thread other([&] {
            work();
            done = true;
        });
        while (!done) {
            Deliver();
        }
        other.join();
    }
};

INSTANTIATE_TEST_SUITE_P(Of, ScanOnTwoThreads, testing::Values("mirroring", "nodlink", "kov"),
                         [](const auto& param) { return param.param; });

TEST_P(ScanOnTwoThreads, MayBeStartedStoppedAndAdvertisedWhilePhonesAreFound)
{
    std::atomic<int> phones{0};
    lyn_service_h service = nullptr;
    ASSERT_EQ(lyn_create_service(&service, GetParam().c_str(), nullptr, nullptr), LYN_ERROR_NONE);
    DeliverDuring([&] {
        for (int round = 0; round < 50; ++round) {
            EXPECT_EQ(lyn_start_scan(service, Count, &phones), LYN_ERROR_NONE);
            EXPECT_EQ(lyn_start_advertise(service, LYN_ADV_INTERVAL_50), LYN_ERROR_NONE);
            EXPECT_EQ(lyn_stop_advertise(service), LYN_ERROR_NONE);
            EXPECT_EQ(lyn_stop_scan(service), LYN_ERROR_NONE);
        }
    });
    EXPECT_EQ(lyn_start_scan(service, Count, &phones), LYN_ERROR_NONE);
    const int before = phones;
    Deliver();
    EXPECT_EQ(phones, before + 1);
    EXPECT_EQ(lyn_destroy_service(service), LYN_ERROR_NONE);
}

TEST_P(ScanOnTwoThreads, MayEndWithItsServiceWhilePhonesAreFound)
{
    std::atomic<int> phones{0};
    DeliverDuring([&] {
        for (int round = 0; round < 50; ++round) {
            lyn_service_h service = nullptr;
            ASSERT_EQ(lyn_create_service(&service, GetParam().c_str(), nullptr, nullptr), LYN_ERROR_NONE);
            EXPECT_EQ(lyn_start_scan(service, Count, &phones), LYN_ERROR_NONE);
            EXPECT_EQ(lyn_destroy_service(service), LYN_ERROR_NONE);
        }
    });
    simulator::ClearLog();
    const int before = phones;
    Deliver();
    EXPECT_EQ(phones, before);
}

}  // namespace
}  // namespace lyn::test
