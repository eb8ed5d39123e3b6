// SPDX-License-Identifier: Apache-2.0
#include "SimulatorTest.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/system_info.h"
#include "lyn_platform/wifi.h"

namespace lyn::simulator::test {
namespace {

constexpr const char* kTvName = "db/menu/network/devicename/tv_name";
constexpr const char* kListenChannel = "memory/menu/network/screenmirroring/p2p_listen_channel";

class Tv : public SimulatorTest {};

TEST_F(Tv, HasSettingsToBeginWith)
{
    EXPECT_EQ(TextSetting(kTvName), "Living Room TV");
    EXPECT_EQ(IntSetting(kListenChannel), 0);
    EXPECT_EQ(IntSetting("memory/wifi/frequency"), 2437);
    EXPECT_EQ(IntSetting("memory/acm/networkspeaker_status"), 0);
    EXPECT_EQ(device_power_get_state(), 1);
}

TEST_F(Tv, ReadsSettingsOfTheRightTypeOnly)
{
    int value = 7;
    EXPECT_EQ(vconf_get_int(kListenChannel, &value), 0);
    EXPECT_EQ(value, 0);
    value = 7;
    EXPECT_NE(vconf_get_int(kTvName, &value), 0);
    EXPECT_NE(vconf_get_int("memory/nothing", &value), 0);
    EXPECT_NE(vconf_get_int(nullptr, &value), 0);
    EXPECT_NE(vconf_get_int(kListenChannel, nullptr), 0);
    EXPECT_EQ(value, 7);
    EXPECT_EQ(TakeText(vconf_get_str(kTvName)), "Living Room TV");
    EXPECT_EQ(vconf_get_str(kListenChannel), nullptr);
    EXPECT_EQ(vconf_get_str("memory/nothing"), nullptr);
    EXPECT_EQ(vconf_get_str(nullptr), nullptr);
}

TEST_F(Tv, KeepsSettings)
{
    EXPECT_EQ(vconf_set_int("memory/key", -5), 0);
    EXPECT_EQ(IntSetting("memory/key"), -5);
    EXPECT_FALSE(TextSetting("memory/key"));
    SetSetting("memory/key", "text");
    EXPECT_EQ(TextSetting("memory/key"), "text");
    RemoveSetting("memory/key");
    EXPECT_FALSE(TextSetting("memory/key"));
    EXPECT_NE(vconf_set_int(nullptr, 1), 0);
    SetSetting(kTvName, "");
    EXPECT_EQ(TakeText(vconf_get_str(kTvName)), "") << "empty is not absent";
}

TEST_F(Tv, HasFeatureValues)
{
    constexpr const char* kIcon = "com.calyxon/featureconf/devicename.icon_index";
    int value = -1;
    EXPECT_EQ(system_info_get_custom_int(kIcon, &value), 0);
    EXPECT_EQ(value, 1);
    SetSystemInfo(kIcon, 5);
    EXPECT_EQ(system_info_get_custom_int(kIcon, &value), 0);
    EXPECT_EQ(value, 5);
    SetSystemInfo(kIcon, std::nullopt);
    EXPECT_NE(system_info_get_custom_int(kIcon, &value), 0);
    EXPECT_NE(system_info_get_custom_int(nullptr, &value), 0);
    EXPECT_NE(system_info_get_custom_int(kIcon, nullptr), 0);
    EXPECT_EQ(value, 5);
}

TEST_F(Tv, OpensWifiOnce)
{
    EXPECT_EQ(wifi_initialize(), 0);
    EXPECT_EQ(wifi_initialize(), -38);
    EXPECT_EQ(Alive().wifiInits, 1);
    EXPECT_EQ(wifi_deinitialize(), 0);
    EXPECT_NE(wifi_deinitialize(), 0);
}

TEST_F(Tv, TellsTheAccessPointWhileWifiIsOpen)
{
    wifi_ap_h ap = nullptr;
    EXPECT_NE(wifi_get_connected_ap(&ap), 0) << "not open";
    wifi_initialize();
    ASSERT_EQ(wifi_get_connected_ap(&ap), 0);
    char* bssid = nullptr;
    int frequency = 0;
    ASSERT_EQ(wifi_ap_get_bssid(ap, &bssid), 0);
    EXPECT_EQ(TakeText(bssid), "02:00:00:00:00:FE");
    ASSERT_EQ(wifi_ap_get_frequency(ap, &frequency), 0);
    EXPECT_EQ(frequency, 2437);
    wifi_deinitialize();
    EXPECT_NE(wifi_ap_get_frequency(ap, &frequency), 0) << "the handle ends with Wi-Fi";
}

TEST_F(Tv, MayHaveNoAccessPointOrOneWithoutBssid)
{
    wifi_initialize();
    wifi_ap_h ap = nullptr;
    SetAccessPoint(std::nullopt);
    EXPECT_NE(wifi_get_connected_ap(&ap), 0);
    SetAccessPoint(AccessPoint{std::nullopt, 5180});
    ASSERT_EQ(wifi_get_connected_ap(&ap), 0);
    char unchanged = 'x';
    char* bssid = &unchanged;
    EXPECT_EQ(wifi_ap_get_bssid(ap, &bssid), 0);
    EXPECT_EQ(bssid, nullptr);
    wifi_ap_h old = ap;
    SetAccessPoint(AccessPoint{});
    EXPECT_NE(wifi_ap_get_bssid(old, &bssid), 0) << "another access point";
    wifi_deinitialize();
}

TEST_F(Tv, TellsItsWifiDirectAddress)
{
    char* mac = nullptr;
    EXPECT_NE(wifi_direct_get_mac_address(&mac), 0) << "not open";
    EXPECT_EQ(wifi_direct_initialize(), 0);
    ASSERT_EQ(wifi_direct_get_mac_address(&mac), 0);
    EXPECT_EQ(TakeText(mac), "02:00:00:00:00:02");
    SetWifiDirectAddress(std::nullopt);
    EXPECT_EQ(wifi_direct_get_mac_address(&mac), 0);
    EXPECT_EQ(mac, nullptr);
    EXPECT_EQ(Alive().wifiDirectInits, 1);
    EXPECT_EQ(wifi_direct_deinitialize(), 0);
    EXPECT_NE(wifi_direct_deinitialize(), 0);
}

TEST_F(Tv, RefusesMissingWifiArguments)
{
    wifi_initialize();
    wifi_direct_initialize();
    wifi_ap_h ap = nullptr;
    ASSERT_EQ(wifi_get_connected_ap(&ap), 0);
    int frequency = 0;
    EXPECT_NE(wifi_get_connected_ap(nullptr), 0);
    EXPECT_NE(wifi_ap_get_bssid(ap, nullptr), 0);
    EXPECT_NE(wifi_ap_get_frequency(ap, nullptr), 0);
    EXPECT_NE(wifi_ap_get_frequency(&frequency, &frequency), 0);
    EXPECT_NE(wifi_direct_get_mac_address(nullptr), 0);
}

TEST_F(Tv, ReportsPowerEventsFromTheMainLoop)
{
    std::vector<std::uint32_t> flags;
    const auto keep = [](const device_power_off_info_s* info, void* out) {
        static_cast<std::vector<std::uint32_t>*>(out)->push_back(info->flags);
        return 0;
    };
    EXPECT_EQ(device_power_subscribe_poweroff_event(keep, &flags), 0);
    EXPECT_NE(device_power_subscribe_poweroff_event(nullptr, nullptr), 0);
    EXPECT_NE(device_power_subscribe_ambient_poweroff(nullptr, nullptr), 0);
    PowerOff(0x40000000);
    AmbientPowerOff();
    EXPECT_TRUE(flags.empty());
    Settle();
    EXPECT_EQ(flags, std::vector<std::uint32_t>{0x40000000});
    EXPECT_EQ(device_power_subscribe_ambient_poweroff(keep, &flags), 0);
    EXPECT_EQ(PowerOffRegistration().userData, &flags);
    EXPECT_EQ(AmbientPowerOffRegistration().userData, &flags);
    AmbientPowerOff();
    Settle();
    EXPECT_EQ(flags.size(), 2U);
    SetPowerState(3);
    EXPECT_EQ(device_power_get_state(), 3);
}

TEST_F(Tv, IsAsNewAfterAReset)
{
    SetSetting(kTvName, "Other");
    SetPowerState(3);
    SetAdapterState(BT_ADAPTER_DISABLED);
    SetWifiDirectAddress(std::nullopt);
    AddPhone(AnsweringPhone({}));
    bt_product_init();
    wifi_initialize();
    bt_adapter_le_enable_le_scan_performance_boost(true);
    LinkUser user;
    Reset();
    EXPECT_EQ(TextSetting(kTvName), "Living Room TV");
    EXPECT_EQ(device_power_get_state(), 1);
    EXPECT_TRUE(Phones().empty());
    const Counts counts = Alive();
    EXPECT_EQ(counts.productInits + counts.wifiInits + counts.registrations, 0);
    EXPECT_FALSE(counts.boosted);
    Listener listener;
    EXPECT_EQ(listener.Start(), 0);
}

}  // namespace
}  // namespace lyn::simulator::test
