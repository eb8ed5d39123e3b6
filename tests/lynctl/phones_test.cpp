// SPDX-License-Identifier: Apache-2.0
#include "phones.h"

#include <gtest/gtest.h>

namespace lynctl {
namespace {

Sighting Kitchen()
{
    return {"Kitchen", "AA:BB:CC:DD:EE:01", "0123456789abcdefghijkl", "", -50};
}

TEST(Sighting, TakesNullTextsAsEmpty)
{
    const lyn_device_info_t info{nullptr, "AA:BB:CC:DD:EE:01", nullptr, nullptr, -7};
    const Sighting sighting = Sighting::From(info);
    EXPECT_EQ(sighting.name, "");
    EXPECT_EQ(sighting.address, "AA:BB:CC:DD:EE:01");
    EXPECT_EQ(sighting.rssi, -7);
}

TEST(Sighting, ReadsTheSerializedForm)
{
    const Sighting sighting = Sighting::From(
        R"({"Address":"AA:BB:CC:DD:EE:01","ExtraData":"{\"appid\":\"music\"}","Name":"Zo\u00eb","RSSI":-48,"UniqueID":"u"})");
    EXPECT_EQ(sighting.address, "AA:BB:CC:DD:EE:01");
    EXPECT_EQ(sighting.extra, R"({"appid":"music"})");
    EXPECT_EQ(sighting.name, "Zoë");
    EXPECT_EQ(sighting.rssi, -48);
    EXPECT_EQ(sighting.id, "u");
}

TEST(Sighting, LeavesEmptyWhatItCannotRead)
{
    for (const char* const json :
         {"", "[]", "{", R"({"Address":1,"RSSI":"x"})", static_cast<const char*>(nullptr)}) {
        const Sighting sighting = Sighting::From(json);
        EXPECT_EQ(sighting.address, "");
        EXPECT_EQ(sighting.rssi, 0);
    }
}

TEST(Phones, SayWhatIsNew)
{
    Phones phones;
    Sighting sighting = Kitchen();
    EXPECT_EQ(phones.Add(sighting, 1).news, Phones::News::added);
    sighting.rssi = -60;
    EXPECT_EQ(phones.Add(sighting, 2).news, Phones::News::none);
    sighting.name = "Hall";
    EXPECT_EQ(phones.Add(sighting, 3).news, Phones::News::changed);
    ASSERT_EQ(phones.All().size(), 1U);
    EXPECT_EQ(phones.All()[0].name, "Hall");
    EXPECT_EQ(phones.All()[0].rssi, -60);
    EXPECT_EQ(phones.All()[0].lastSeen, 3);
    EXPECT_EQ(phones.All()[0].count, 3U);
    EXPECT_EQ(phones.Advertisements(), 3U);
}

TEST(Phones, KeepTheOrderInWhichTheyCame)
{
    Phones phones;
    Sighting other = Kitchen();
    other.address = "00:00:00:00:00:01";
    phones.Add(Kitchen(), 1);
    phones.Add(other, 2);
    phones.Add(Kitchen(), 3);
    ASSERT_EQ(phones.All().size(), 2U);
    EXPECT_EQ(phones.All()[0].address, Kitchen().address);
}

TEST(Phones, AFloodPushesOutTheOneThatIsSilentForLongest)
{
    Phones phones;
    double now = 0;
    Sighting sighting = Kitchen();
    sighting.address = "silent";
    phones.Add(sighting, ++now);
    for (std::size_t i = 0; i < 3 * Phones::kMost; ++i) {
        phones.Add(Kitchen(), ++now);
        sighting.address = std::to_string(i);
        phones.Add(sighting, ++now);
    }
    EXPECT_EQ(phones.All().size(), Phones::kMost);
    bool kitchen = false;
    for (const Phone& phone : phones.All()) {
        kitchen = kitchen || phone.address == Kitchen().address;
        EXPECT_NE(phone.address, "silent");
    }
    EXPECT_TRUE(kitchen);
}

}  // namespace
}  // namespace lynctl
