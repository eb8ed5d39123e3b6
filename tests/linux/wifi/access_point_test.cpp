// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>

#include "FakeService.h"
#include "PrivateBus.h"
#include "lyn_platform/wifi.h"

namespace lyn::linux_tests {
namespace {

constexpr const char* kSupplicant = "fi.w1.wpa_supplicant1";
constexpr const char* kRoot = "/fi/w1/wpa_supplicant1";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
constexpr const char* kWlan = "/fi/w1/wpa_supplicant1/Interfaces/0";
constexpr const char* kP2p = "/fi/w1/wpa_supplicant1/Interfaces/1";
constexpr const char* kBss = "/fi/w1/wpa_supplicant1/Interfaces/0/BSSs/3";

class AccessPointTest : public ::testing::Test {
protected:
    AccessPointTest() { PrivateBus::Instance(); }
    ~AccessPointTest() override { wifi_deinitialize(); }

    void SetUp() override { ASSERT_EQ(wifi_initialize(), 0); }

    /// Two interfaces, of which the second is connected.
    static void PlayConnected(FakeService& supplicant)
    {
        supplicant.OnText(kRoot, kProperties, "GetAll",
                          std::string("({'Interfaces': <[objectpath '") + kP2p + "', '" + kWlan + "']>},)");
        supplicant.OnText(kP2p, kProperties, "GetAll", "({'CurrentBSS': <objectpath '/'>},)");
        supplicant.OnText(kWlan, kProperties, "GetAll",
                          std::string("({'CurrentBSS': <objectpath '") + kBss + "'>},)");
        supplicant.OnText(kBss, kProperties, "GetAll",
                          "({'BSSID': <[byte 0x02, 0x00, 0x00, 0xab, 0x00, 0xfe]>, 'Frequency': <uint16 5180>},)");
    }

    /// The result of wifi_get_connected_ap(), which must not touch its argument when it fails.
    static int Find(wifi_ap_h& ap)
    {
        int untouched = 0;
        ap = &untouched;
        const int result = wifi_get_connected_ap(&ap);
        if (result != 0) {
            EXPECT_EQ(ap, &untouched);
        }
        return result;
    }
};

TEST_F(AccessPointTest, IsThatOfTheConnectedInterface)
{
    FakeService supplicant(kSupplicant);
    PlayConnected(supplicant);
    wifi_ap_h ap = nullptr;
    ASSERT_EQ(Find(ap), 0);
    char* bssid = nullptr;
    ASSERT_EQ(wifi_ap_get_bssid(ap, &bssid), 0);
    EXPECT_STREQ(bssid, "02:00:00:ab:00:fe");
    std::free(bssid);
    int frequency = 0;
    EXPECT_EQ(wifi_ap_get_frequency(ap, &frequency), 0);
    EXPECT_EQ(frequency, 5180);
}

TEST_F(AccessPointTest, IsNotThereWithoutWpaSupplicant)
{
    wifi_ap_h ap = nullptr;
    EXPECT_NE(Find(ap), 0);
}

TEST_F(AccessPointTest, IsNotThereWhenNoInterfaceIsConnected)
{
    FakeService supplicant(kSupplicant);
    PlayConnected(supplicant);
    supplicant.OnText(kWlan, kProperties, "GetAll", "({'CurrentBSS': <objectpath '/'>},)");
    wifi_ap_h ap = nullptr;
    EXPECT_NE(Find(ap), 0);
}

TEST_F(AccessPointTest, IsNotThereWhenAnAnswerIsNotWhatItShouldBe)
{
    const std::vector<std::pair<const char*, const char*>> answers = {
        {kRoot, "(5,)"},
        {kRoot, "({'Interfaces': <5>},)"},
        {kRoot, "(@a{sv} {},)"},
        {kWlan, "({'CurrentBSS': <'text'>},)"},
        {kWlan, "('text',)"},
        {kBss, "(@a{sv} {},)"},
        {kBss, "({'BSSID': <[byte 0x02]>, 'Frequency': <uint16 5180>},)"},
        {kBss, "({'BSSID': <'02:00'>, 'Frequency': <uint16 5180>},)"},
        {kBss, "({'BSSID': <[byte 2, 0, 0, 0, 0, 1]>, 'Frequency': <int64 5180>},)"},
        {kBss, "({'BSSID': <[byte 2, 0, 0, 0, 0, 1]>},)"},
    };
    for (const auto& [path, values] : answers) {
        FakeService supplicant(kSupplicant);
        PlayConnected(supplicant);
        supplicant.OnText(path, kProperties, "GetAll", values);
        wifi_ap_h ap = nullptr;
        EXPECT_NE(Find(ap), 0) << values;
    }
}

TEST_F(AccessPointTest, IsNotThereWhenACallFails)
{
    for (const char* const path : {kRoot, kWlan, kBss}) {
        FakeService supplicant(kSupplicant);
        PlayConnected(supplicant);
        supplicant.Fail(path, kProperties, "GetAll", "fi.w1.wpa_supplicant1.UnknownError");
        wifi_ap_h ap = nullptr;
        EXPECT_NE(Find(ap), 0) << path;
    }
}

TEST_F(AccessPointTest, IsGivenUpWhenOneOfTheAnswersNeverComes)
{
    FakeService supplicant(kSupplicant);
    PlayConnected(supplicant);
    supplicant.On(kWlan, kProperties, "GetAll", [](GDBusMessage*) -> GDBusMessage* { return nullptr; });
    wifi_ap_h ap = nullptr;
    EXPECT_NE(Find(ap), 0);
}

TEST_F(AccessPointTest, IsTheSameHandleForAsLongAsItIsTheSame)
{
    FakeService supplicant(kSupplicant);
    PlayConnected(supplicant);
    wifi_ap_h first = nullptr;
    wifi_ap_h again = nullptr;
    wifi_ap_h moved = nullptr;
    ASSERT_EQ(Find(first), 0);
    ASSERT_EQ(Find(again), 0);
    EXPECT_EQ(first, again) << "who asks again and again must not make it grow";
    supplicant.OnText(kBss, kProperties, "GetAll",
                      "({'BSSID': <[byte 0x02, 0x00, 0x00, 0xab, 0x00, 0xfe]>, 'Frequency': <uint16 2412>},)");
    ASSERT_EQ(Find(moved), 0);
    EXPECT_NE(moved, first);
    int frequency = 0;
    EXPECT_EQ(wifi_ap_get_frequency(first, &frequency), 0);
    EXPECT_EQ(frequency, 5180);
}

TEST_F(AccessPointTest, IsUnknownOnceWifiIsClosed)
{
    FakeService supplicant(kSupplicant);
    PlayConnected(supplicant);
    wifi_ap_h ap = nullptr;
    ASSERT_EQ(Find(ap), 0);
    EXPECT_EQ(wifi_deinitialize(), 0);
    char* bssid = nullptr;
    int frequency = 7;
    EXPECT_NE(wifi_ap_get_bssid(ap, &bssid), 0);
    EXPECT_NE(wifi_ap_get_frequency(ap, &frequency), 0);
    EXPECT_EQ(bssid, nullptr);
    EXPECT_EQ(frequency, 7);
    wifi_ap_h other = nullptr;
    EXPECT_NE(Find(other), 0) << "Wi-Fi is closed";
}

TEST_F(AccessPointTest, IsRefusedWithoutAPlaceForTheAnswer)
{
    FakeService supplicant(kSupplicant);
    PlayConnected(supplicant);
    EXPECT_NE(wifi_get_connected_ap(nullptr), 0);
    wifi_ap_h ap = nullptr;
    ASSERT_EQ(Find(ap), 0);
    EXPECT_NE(wifi_ap_get_bssid(ap, nullptr), 0);
    EXPECT_NE(wifi_ap_get_frequency(ap, nullptr), 0);
    EXPECT_NE(wifi_ap_get_bssid(nullptr, nullptr), 0);
}

}  // namespace
}  // namespace lyn::linux_tests
