// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <unistd.h>

#include "SimulatorTest.h"
#include "lyn_platform/log.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/wifi.h"

namespace lyn::simulator::test {
namespace {

class FaultsOfCalls : public SimulatorTest {
protected:
    static std::vector<int> Results(int calls)
    {
        std::vector<int> results;
        for (int i = 0; i < calls; ++i) {
            results.push_back(vconf_set_int("memory/key", i));
        }
        return results;
    }
};

TEST_F(FaultsOfCalls, HitTheNextCallOnce)
{
    FailCall("vconf_set_int", -5);
    EXPECT_EQ(Results(3), (std::vector{-5, 0, 0}));
}

TEST_F(FaultsOfCalls, HitTheNthCall)
{
    FailCall("vconf_set_int", -5, 3);
    EXPECT_EQ(Results(4), (std::vector{0, 0, -5, 0}));
}

TEST_F(FaultsOfCalls, HitEveryCallUntilCleared)
{
    FailCall("vconf_set_int", -5, 0);
    EXPECT_EQ(Results(2), (std::vector{-5, -5}));
    ClearFaults();
    EXPECT_EQ(Results(1), std::vector{0});
}

TEST_F(FaultsOfCalls, AddUp)
{
    FailCall("vconf_set_int", -1, 1);
    FailCall("vconf_set_int", -3, 3);
    FailCall("vconf_get_int", -9, 1);
    EXPECT_EQ(Results(4), (std::vector{-1, 0, -3, 0}));
}

TEST_F(FaultsOfCalls, TheFirstOfTwoForOneCallCounts)
{
    FailCall("vconf_set_int", -1, 1);
    FailCall("vconf_set_int", -2, 0);
    EXPECT_EQ(Results(2), (std::vector{-1, -2}));
}

TEST_F(FaultsOfCalls, LeaveEverythingAsItWas)
{
    FailCall("vconf_set_int", -5);
    vconf_set_int("memory/key", 1);
    EXPECT_FALSE(IntSetting("memory/key"));
    FailCall("bt_adapter_le_start_scan", -5);
    Listener listener;
    EXPECT_EQ(listener.Start(), -5);
    EXPECT_FALSE(Alive().scanning);
    EXPECT_EQ(Journal().back().result, -5);
}

TEST_F(FaultsOfCalls, MayHitWhateverFunction)
{
    FailAnyCall(-7, 2);
    bt_adapter_state_e state{};
    EXPECT_EQ(bt_product_init(), 0);
    EXPECT_EQ(bt_adapter_get_state(&state), -7);
    EXPECT_EQ(bt_adapter_get_state(&state), 0);
    EXPECT_EQ(bt_product_deinit(), 0);
}

TEST_F(FaultsOfCalls, OfAnyFunctionCountWhatTheJournalShows)
{
    const auto run = [] {
        char* text = nullptr;
        platform_log_print(0, 6, "TAG", "text");
        ::close(platform_kmsg_open());
        const bool good = bt_product_init() == 0 && bt_adapter_get_address(&text) == 0;
        TakeText(text);
        std::free(vconf_get_str("memory/key"));
        return good;
    };
    ASSERT_TRUE(run());
    const auto calls = Journal().size();
    EXPECT_EQ(calls, 3U);
    for (std::size_t nth = 1; nth <= calls; ++nth) {
        ClearJournal();
        FailAnyCall(-7, static_cast<int>(nth));
        run();
        EXPECT_EQ(Journal()[nth - 1].result, -7);
        ClearFaults();
    }
}

TEST_F(FaultsOfCalls, GiveNullPointers)
{
    SetSetting("memory/key", "text");
    FailCall("vconf_get_str", -1);
    EXPECT_EQ(vconf_get_str("memory/key"), nullptr);
    EXPECT_EQ(TakeText(vconf_get_str("memory/key")), "text");
}

TEST_F(FaultsOfCalls, GiveAStateAsTheCode)
{
    FailCall("device_power_get_state", 77);
    EXPECT_EQ(device_power_get_state(), 77);
}

TEST_F(FaultsOfCalls, RefuseTheKernelLog)
{
    FailCall("platform_kmsg_open", 1);
    EXPECT_EQ(platform_kmsg_open(), -1);
}

TEST_F(FaultsOfCalls, MayBeNullTextsInsteadOfFailures)
{
    NullText("bt_adapter_get_address", 2);
    char* address = nullptr;
    EXPECT_EQ(bt_adapter_get_address(&address), 0);
    EXPECT_NE(TakeText(address), std::nullopt);
    EXPECT_EQ(bt_adapter_get_address(&address), 0);
    EXPECT_EQ(address, nullptr);
    EXPECT_EQ(JournalText().back(), "bt_adapter_get_address(-> null)");

    NullText("wifi_direct_get_mac_address");
    wifi_direct_initialize();
    EXPECT_EQ(wifi_direct_get_mac_address(&address), 0);
    EXPECT_EQ(address, nullptr);
}

TEST_F(FaultsOfCalls, MayBeNullManufacturerData)
{
    NullText("bt_adapter_le_get_scan_result_manufacturer_data");
    Bytes packet = ManufacturerData(117, {1, 2, 3});
    bt_adapter_le_device_scan_result_info_s info{};
    info.adv_data = reinterpret_cast<char*>(packet.data());
    info.adv_data_len = static_cast<int>(packet.size());
    int company = 0;
    int length = 0;
    char unchanged = 'x';
    char* data = &unchanged;
    EXPECT_EQ(bt_adapter_le_get_scan_result_manufacturer_data(&info, BT_ADAPTER_LE_PACKET_ADVERTISING, &company,
                                                              &data, &length),
              0);
    EXPECT_EQ(data, nullptr);
    EXPECT_EQ(company, 117);
}

TEST_F(FaultsOfCalls, OfAFunctionThatDoesNotExistAreRefused)
{
    EXPECT_THROW(FailCall("bt_gatt_conect", -1), std::invalid_argument);
    EXPECT_THROW(FailCall("platform_log_print", -1), std::invalid_argument);
    EXPECT_THROW(NullText("bt_gatt_connect"), std::invalid_argument);
    EXPECT_THROW(FailCall("bt_gatt_connect", -1, -1), std::invalid_argument);
    EXPECT_THROW(FailAnyCall(-1, -1), std::invalid_argument);
}

}  // namespace
}  // namespace lyn::simulator::test
