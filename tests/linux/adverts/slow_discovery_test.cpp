// SPDX-License-Identifier: Apache-2.0
//
// A scan while bluetoothd is slow, refuses, or was away.
#include <memory>
#include <thread>

#include "FakeBluez.h"
#include "ScanTest.h"

namespace lyn::linux_tests {
namespace {

constexpr const char* kAdapter = "hci64000";  // no real adapter has this index
constexpr const char* kStart = "Adapter1.StartDiscovery";
constexpr const char* kStop = "Adapter1.StopDiscovery";

class SlowDiscovery : public ScanTest {
protected:
    SlowDiscovery()
    {
        FakePhone phone;
        phone.adapter = kAdapter;
        phone.adverts = {"\x01\x19" + std::string(22, 'i')};
        bluez->AddPhone(phone);
        EXPECT_EQ(bt_product_init(), 0);
        RunQuietly(50);  // the adapter is watched from the main context
        bluez->Forget();
    }

    bool Hears()
    {
        results.clear();
        return RunUntil([&] { return !results.empty(); });
    }

    bool AllIsOver() const
    {
        return RunUntil([&] { return !bluez->IsDiscovering(); });
    }

    std::unique_ptr<FakeBluez> bluez = std::make_unique<FakeBluez>(kAdapter);
};

TEST_F(SlowDiscovery, AStartThatIsStoppedMeanwhileIsStoppedInTheEnd)
{
    bluez->Treat(kStart, 1, Treatment::Late(200));
    std::thread starter([this] { EXPECT_EQ(Start(), 0); });
    EXPECT_TRUE(RunUntil([&] { return bluez->Count(kStart) == 1; }));
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    starter.join();
    EXPECT_TRUE(AllIsOver());
    EXPECT_EQ(bluez->Count(kStop), 1);
}

TEST_F(SlowDiscovery, WhatIsStartedAgainAfterTheAdapterWasOffIsStoppedWhenNobodyWantsItAnyMore)
{
    ASSERT_EQ(Start(), 0);
    bluez->Treat(kStart, 1, Treatment::Late(200));
    bluez->SetPowered(kAdapter, false);
    RunQuietly(50);
    bluez->SetPowered(kAdapter, true);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count(kStart) == 2; }));
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    EXPECT_TRUE(AllIsOver());
}

TEST_F(SlowDiscovery, ARestartThatIsRefusedIsTriedAgain)
{
    ASSERT_EQ(Start(), 0);
    bluez->Treat(kStart, 1, Treatment::Fails("org.bluez.Error.Failed"));
    bluez->SetPowered(kAdapter, false);
    RunQuietly(50);
    bluez->SetPowered(kAdapter, true);
    EXPECT_TRUE(RunUntil([&] { return bluez->Count(kStart) == 3 && bluez->IsDiscovering(); }));
    EXPECT_TRUE(Hears());
}

TEST_F(SlowDiscovery, ARestartOfWhatRunsAlreadyIsNone)
{
    ASSERT_EQ(Start(), 0);
    bluez->Treat(kStart, 1, Treatment::Fails("org.bluez.Error.InProgress"));
    bluez->SetPowered(kAdapter, false);
    RunQuietly(50);
    bluez->SetPowered(kAdapter, true);
    ASSERT_TRUE(RunUntil([&] { return bluez->Count(kStart) == 2; }));
    RunQuietly(2300);
    EXPECT_EQ(bluez->Count(kStart), 2) << "it was started already";
}

TEST_F(SlowDiscovery, PhonesAreHeardAgainWhenBluetoothdIsBack)
{
    ASSERT_EQ(Start(), 0);
    ASSERT_TRUE(Hears());
    bluez->Die();
    RunQuietly(50);
    bluez->Return();
    EXPECT_TRUE(Hears());
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    EXPECT_TRUE(AllIsOver());
}

}  // namespace
}  // namespace lyn::linux_tests
