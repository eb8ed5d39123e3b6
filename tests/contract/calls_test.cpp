// SPDX-License-Identifier: Apache-2.0
//
// Calls that need no phone: results, ownership, threads.
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "ContractTest.h"
#include "lyn_platform/files.h"
#include "lyn_platform/log.h"
#include "lyn_platform/power.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/system_info.h"
#include "lyn_platform/wifi.h"

namespace lyn::contract {
namespace {

constexpr const char* kKey = "memory/lyn/contract_test";

TEST(Calls, BluetoothInitialisationIsCountedAndASurplusEndIsHarmless)
{
    EXPECT_EQ(Call([] { return bt_product_init(); }), 0);
    EXPECT_EQ(Call([] { return bt_product_init(); }), 0);
    EXPECT_EQ(Call([] { return bt_product_deinit(); }), 0);
    EXPECT_EQ(Call([] { return bt_product_deinit(); }), 0);
    bt_product_deinit();
}

TEST(Calls, TheAdapterStateIsOnOrOff)
{
    ASSERT_EQ(bt_product_init(), 0);
    bt_adapter_state_e state = BT_ADAPTER_DISABLED;
    ASSERT_EQ(bt_adapter_get_state(&state), 0);
    EXPECT_TRUE(state == BT_ADAPTER_DISABLED || state == BT_ADAPTER_ENABLED);
    bt_product_deinit();
}

TEST_F(BluetoothTest, TheAdapterHasAnAddressThatTheCallerFrees)
{
    char* address = nullptr;
    ASSERT_EQ(bt_adapter_get_address(&address), 0);
    ASSERT_NE(address, nullptr);
    ASSERT_EQ(std::strlen(address), 17U);
    for (std::size_t i = 0; i < 17; ++i) {
        const bool good =
            i % 3 == 2 ? address[i] == ':' : g_ascii_isxdigit(address[i]) && !g_ascii_islower(address[i]);
        EXPECT_TRUE(good) << address;
    }
    std::free(address);
}

TEST_F(BluetoothTest, RegistrationsAreOneSlotThatMayBeSetAndUnsetAtAnyTime)
{
    const auto onState = [](int, bt_adapter_state_e, void*) {};
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(bt_adapter_set_state_changed_cb(onState, nullptr), 0);
        EXPECT_EQ(bt_adapter_set_state_changed_cb(onState, nullptr), 0);
        EXPECT_EQ(bt_adapter_unset_state_changed_cb(), 0);
    }
    const auto onPower = [](const device_power_off_info_s*, void*) { return 0; };
    EXPECT_EQ(device_power_subscribe_poweroff_event(onPower, nullptr), 0);
    EXPECT_EQ(device_power_subscribe_ambient_poweroff(onPower, nullptr), 0);
    EXPECT_EQ(device_power_unsubscribe_ambient_poweroff(), 0);
    EXPECT_EQ(device_power_unsubscribe_poweroff_event(), 0);
    RunQuietly();
}

TEST(Calls, SettingsKeepIntegers)
{
    ASSERT_EQ(vconf_set_int(kKey, -42), 0);
    int value = 0;
    EXPECT_EQ(vconf_get_int(kKey, &value), 0);
    EXPECT_EQ(value, -42);
    EXPECT_EQ(vconf_get_str(kKey), nullptr) << "the key holds another type";
}

TEST(Calls, WhatIsAbsentFailsAndLeavesTheOutValueAsItWas)
{
    int value = 7;
    EXPECT_NE(vconf_get_int("memory/lyn/contract_test_absent", &value), 0);
    EXPECT_NE(system_info_get_custom_int("lyn/contract_test_absent", &value), 0);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(vconf_get_str("memory/lyn/contract_test_absent"), nullptr);
}

TEST(Calls, WifiSaysWhenItIsOpenAlready)
{
    const int first = wifi_initialize();
    ASSERT_TRUE(first == 0 || first == -38) << first;
    EXPECT_EQ(wifi_initialize(), -38);
    wifi_ap_h ap = nullptr;
    if (wifi_get_connected_ap(&ap) == 0) {
        char* bssid = nullptr;
        int frequency = 0;
        EXPECT_EQ(wifi_ap_get_bssid(ap, &bssid), 0);
        std::free(bssid);
        EXPECT_EQ(wifi_ap_get_frequency(ap, &frequency), 0);
        EXPECT_GT(frequency, 0);
    } else {
        EXPECT_EQ(ap, nullptr);
    }
    EXPECT_EQ(wifi_deinitialize(), 0);
    EXPECT_EQ(wifi_initialize(), 0);
    EXPECT_EQ(wifi_deinitialize(), 0);
}

TEST(Calls, WifiDirectGivesAnAddressThatTheCallerFrees)
{
    char unchanged = 'x';
    char* mac = &unchanged;
    if (wifi_direct_initialize() != 0) {
        GTEST_SKIP() << "no Wi-Fi Direct";
    }
    if (wifi_direct_get_mac_address(&mac) == 0) {
        std::free(mac);
    } else {
        EXPECT_EQ(mac, &unchanged);
    }
    EXPECT_EQ(wifi_direct_deinitialize(), 0);
}

TEST(Calls, FilesHaveAPlaceThatFitsOrNone)
{
    std::array<char, 4096> place{};
    ASSERT_EQ(platform_file_path("/opt/etc/.lyn_contract_test", place.data(), place.size()), 0);
    const std::string path = place.data();
    EXPECT_TRUE(path.starts_with("/"));
    EXPECT_TRUE(path.ends_with("/opt/etc/.lyn_contract_test"));
    std::string exact(path.size(), '?');
    EXPECT_NE(platform_file_path("/opt/etc/.lyn_contract_test", exact.data(), exact.size()), 0) << "no NUL fits";
    EXPECT_EQ(exact, std::string(path.size(), '?'));
}

TEST(Calls, LoggingNeverFails)
{
    for (int priority = 3; priority <= 6; ++priority) {
        platform_log_print(0, priority, "LYN_CONTRACT", "%s", "contract test");
    }
    const std::string line(5000, 'x');
    platform_log_print(0, 3, "LYN_CONTRACT", "%s", line.c_str());
    const int log = platform_kmsg_open();
    EXPECT_GE(log, -1);
    if (log >= 0) {
        EXPECT_EQ(::close(log), 0);
    }
}

TEST(Calls, AreAcceptedFromAnyThread)
{
    ASSERT_EQ(bt_product_init(), 0);
    int results = 0;
    std::thread([&] {
        bt_adapter_state_e state{};
        int value = 0;
        results += bt_product_init();
        results += bt_adapter_get_state(&state);
        results += vconf_set_int(kKey, 1);
        results += vconf_get_int(kKey, &value);
        device_power_get_state();
        platform_log_print(0, 3, "LYN_CONTRACT", "from another thread");
        results += bt_product_deinit();
    }).join();
    EXPECT_EQ(results, 0);
    bt_product_deinit();
}

}  // namespace
}  // namespace lyn::contract
