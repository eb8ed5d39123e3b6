// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <set>

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

class Scan : public SimulatorTest {
protected:
    Listener listener;
};

TEST_F(Scan, HearsEachPhoneAtOnceInTheOrderOfTheirAdding)
{
    AddPhone(MirroringPhone(kOther, "First", kUniqueId));
    AddPhone(MirroringPhone(kPhone, "Second", kUniqueId));
    ASSERT_EQ(listener.Start(), 0);
    Settle();
    EXPECT_EQ(listener.Addresses(), (std::vector<std::string>{kOther, kPhone}));
}

TEST_F(Scan, HearsNothingBeforeTheMainLoopRuns)
{
    AddPhone(MirroringPhone(kPhone, "Kitchen", kUniqueId));
    listener.Start();
    EXPECT_TRUE(listener.results.empty());
}

TEST_F(Scan, HandsThePacketsOnAsTheyAre)
{
    Phone phone = MirroringPhone(kPhone, "Kitchen", kUniqueId);
    phone.advertising = {0x05, 0xFF, 0x00};
    phone.scanResponse = Bytes{};
    phone.rssi = -77;
    AddPhone(phone);
    listener.Start();
    Settle();
    ASSERT_EQ(listener.results.size(), 1U);
    EXPECT_EQ(listener.results[0].rssi, -77);
    EXPECT_EQ(listener.results[0].advertising, phone.advertising);
    EXPECT_EQ(listener.results[0].scanResponse, Bytes{});
}

TEST_F(Scan, ReportsMissingPacketsAsNull)
{
    Phone phone = MirroringPhone(kPhone, "Kitchen", kUniqueId);
    phone.hasAdvertising = false;
    phone.scanResponse = std::nullopt;
    AddPhone(phone);
    listener.Start();
    Settle();
    ASSERT_EQ(listener.results.size(), 1U);
    EXPECT_FALSE(listener.results[0].advertising);
    EXPECT_FALSE(listener.results[0].scanResponse);
}

TEST_F(Scan, HearsAPhoneAgainAfterItsInterval)
{
    Phone phone = MirroringPhone(kPhone, "Kitchen", kUniqueId);
    phone.intervalMs = 1;
    AddPhone(phone);
    listener.Start();
    EXPECT_TRUE(RunUntil([&] { return listener.results.size() >= 5; }));
}

TEST_F(Scan, HearsAPhoneNoMoreOftenThanItsLimitInOneScan)
{
    Phone phone = MirroringPhone(kPhone, "Kitchen", kUniqueId);
    phone.intervalMs = 0;
    phone.limit = 3;
    Phone marker = MirroringPhone(kOther, "Marker", kUniqueId);
    marker.intervalMs = 1;
    AddPhone(phone);
    AddPhone(marker);
    const auto heard = [&](const char* address) {
        const auto addresses = listener.Addresses();
        return std::count(addresses.begin(), addresses.end(), address);
    };
    listener.Start();
    EXPECT_TRUE(RunUntil([&] { return heard(kOther) >= 10; }));
    EXPECT_EQ(heard(kPhone), 3);
    listener.Stop();
    listener.Start();
    EXPECT_TRUE(RunUntil([&] { return heard(kOther) >= 20; }));
    EXPECT_EQ(heard(kPhone), 6);
}

TEST_F(Scan, HearsAPhoneThatIsAddedWhileItRuns)
{
    listener.Start();
    Settle();
    AddPhone(MirroringPhone(kPhone, "Kitchen", kUniqueId));
    Settle();
    EXPECT_EQ(listener.results.size(), 1U);
}

TEST_F(Scan, HearsTheNewBytesOfAPhoneThatIsReplaced)
{
    AddPhone(MirroringPhone(kPhone, "Old", kUniqueId));
    listener.Start();
    Settle();
    AddPhone(MirroringPhone(kPhone, "New", kUniqueId));
    Settle();
    ASSERT_EQ(listener.results.size(), 2U);
    EXPECT_NE(listener.results[0].scanResponse, listener.results[1].scanResponse);
}

TEST_F(Scan, HearsNothingOfAPhoneThatIsRemovedFromInsideItsCallback)
{
    AddPhone(MirroringPhone(kPhone, "Kitchen", kUniqueId));
    AddPhone(MirroringPhone(kOther, "Other", kUniqueId));
    listener.onResult = [](auto*) { RemovePhone(kOther); };
    listener.Start();
    Settle();
    EXPECT_EQ(listener.Addresses(), std::vector<std::string>{kPhone});
}

TEST_F(Scan, EndsAtOnceWhenStoppedFromInsideItsCallback)
{
    AddPhone(MirroringPhone(kPhone, "Kitchen", kUniqueId));
    AddPhone(MirroringPhone(kOther, "Other", kUniqueId));
    listener.onResult = [&](auto*) { listener.Stop(); };
    listener.Start();
    Settle();
    EXPECT_EQ(listener.results.size(), 1U);
    EXPECT_FALSE(Alive().scanning);
}

TEST_F(Scan, GoesOnWithTheNewCallbackWhenStartedAgain)
{
    AddPhone(MirroringPhone(kPhone, "Kitchen", kUniqueId));
    Listener second;
    listener.Start();
    second.Start();
    Settle();
    EXPECT_TRUE(listener.results.empty());
    EXPECT_EQ(second.results.size(), 1U);
}

TEST_F(Scan, SaysSoWhenItIsStoppedWithoutRunning)
{
    EXPECT_EQ(bt_adapter_le_stop_scan(), kScanNotRunning);
    listener.Start();
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    EXPECT_EQ(bt_adapter_le_stop_scan(), kScanNotRunning);
}

TEST_F(Scan, SpreadsTheRssiWithinTheJitter)
{
    Phone phone = MirroringPhone(kPhone, "Kitchen", kUniqueId);
    phone.intervalMs = 0;
    phone.rssi = -60;
    phone.rssiJitter = 3;
    AddPhone(phone);
    listener.Start();
    ASSERT_TRUE(RunUntil([&] { return listener.results.size() >= 100; }));
    std::set<int> heard;
    for (const Listener::Result& result : listener.results) {
        EXPECT_GE(result.rssi, -63);
        EXPECT_LE(result.rssi, -57);
        heard.insert(result.rssi);
    }
    EXPECT_GT(heard.size(), 1U);
}

TEST_F(Scan, ChecksItsModes)
{
    EXPECT_EQ(bt_adapter_le_set_scan_mode(0), 0);
    EXPECT_NE(bt_adapter_le_set_scan_mode(-1), 0);
    EXPECT_EQ(bt_adapter_le_set_customized_scan_mode_with_scan_type(0, 1000, 500), 0);
    EXPECT_NE(bt_adapter_le_set_customized_scan_mode_with_scan_type(0, 500, 1000), 0);
    EXPECT_NE(bt_adapter_le_set_customized_scan_mode_with_scan_type(2, 1000, 500), 0);
    EXPECT_NE(bt_adapter_le_start_scan(nullptr, nullptr), 0);
}

TEST_F(Scan, TakesAnAdvertisementFromTheTestItself)
{
    listener.Start();
    DeliverAdvertisement("not an address", -1, Bytes{1, 2}, std::nullopt);
    ASSERT_EQ(listener.results.size(), 1U);
    EXPECT_EQ(listener.results[0].address, "not an address");
    EXPECT_EQ(listener.results[0].advertising, (Bytes{1, 2}));
    listener.Stop();
    DeliverAdvertisement(kPhone, -1, Bytes{1, 2}, std::nullopt);
    EXPECT_EQ(listener.results.size(), 1U);
}

}  // namespace
}  // namespace lyn::simulator::test
