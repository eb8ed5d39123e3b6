// SPDX-License-Identifier: Apache-2.0
//
// Scanning without the privilege: what BlueZ tells of its devices.
#include "ScanTest.h"

namespace lyn::linux_tests {
namespace {

const std::string kDevice = std::string(FakeAdapter::kPath) + "/dev_C0_00_00_00_00_01";

std::string ManufacturerData(const std::string& bytes, int company = 117)
{
    std::string list;
    for (const char byte : bytes) {
        list += (list.empty() ? "" : ", ") + std::to_string(static_cast<unsigned char>(byte));
    }
    return "'ManufacturerData': <{@q " + std::to_string(company) + ": <@ay [" + list + "]>}>";
}

std::string Properties(const std::string& bytes, int rssi = -50)
{
    return "{'RSSI': <int16 " + std::to_string(rssi) + ">, " + ManufacturerData(bytes) + "}";
}

std::string PacketWith(const std::string& bytes)
{
    return std::string{static_cast<char>(bytes.size() + 3), '\xFF', 117, 0} + bytes;
}

const std::string kPhone = "\x01\x19" + std::string(22, 'i');
const std::string kName = "\x01\x19Tom";

class DeviceAdvertsTest : public ScanTest {
protected:
    void StartListening()
    {
        ASSERT_EQ(bt_product_init(), 0);
        ASSERT_EQ(Start(), 0);
        RunQuietly(50);
    }

    FakeAdapter adapter;
};

TEST_F(DeviceAdvertsTest, ANewDeviceIsAResult)
{
    StartListening();
    adapter.AddDevice(kDevice, Properties(kPhone, -61));
    ASSERT_TRUE(RunUntil([&] { return results.size() == 1; }));
    EXPECT_EQ(results[0].address, "C0:00:00:00:00:01");
    EXPECT_EQ(results[0].rssi, -61);
    EXPECT_EQ(results[0].advertising, PacketWith(kPhone));
    EXPECT_EQ(results[0].response, std::nullopt);
}

TEST_F(DeviceAdvertsTest, ChangesAreResultsAndAlternatingDataAreJoined)
{
    StartListening();
    adapter.ChangeDevice(kDevice, Properties(kPhone));
    adapter.ChangeDevice(kDevice, "{" + ManufacturerData(kName) + "}");
    ASSERT_TRUE(RunUntil([&] { return results.size() == 2; }));
    EXPECT_EQ(results[1].rssi, -50);
    EXPECT_EQ(results[1].advertising, PacketWith(kPhone));
    EXPECT_EQ(results[1].response, PacketWith(kName));
}

TEST_F(DeviceAdvertsTest, DevicesThatAreHeardAlreadyAreResults)
{
    adapter.SetDevices("@o '" + kDevice + "': {'org.bluez.Device1': " + Properties(kPhone) + "}, @o '" + kDevice +
                       "': {'org.bluez.Device1': {" + ManufacturerData(kName) + "}}");
    StartListening();
    RunQuietly();
    ASSERT_EQ(results.size(), 1U) << "BlueZ only remembers the second one";
    EXPECT_EQ(results[0].advertising, PacketWith(kPhone));
}

TEST_F(DeviceAdvertsTest, OtherSignalsAreNoResults)
{
    StartListening();
    adapter.ChangeDevice(kDevice, "{'RSSI': <int16 -50>}");
    adapter.ChangeDevice(kDevice, "{" + ManufacturerData(kPhone, 76) + "}");
    adapter.ChangeDevice(kDevice, "{'ManufacturerData': <'text'>}");
    adapter.ChangeDevice(kDevice, "{'ManufacturerData': <{@q 117: <'text'>}>}");
    adapter.ChangeDevice("/org/bluez/hci7/dev_C0_00_00_00_00_01", Properties(kPhone));
    adapter.ChangeDevice(kDevice + "/service0001", Properties(kPhone));
    adapter.Service().Signal(kDevice, "org.freedesktop.DBus.Properties", "PropertiesChanged",
                             "('org.bluez.Device1', 'text')");
    adapter.Service().Signal("/", "org.freedesktop.DBus.ObjectManager", "InterfacesAdded", "('text',)");
    adapter.ChangeDevice(kDevice, Properties(kName));
    ASSERT_TRUE(RunUntil([&] { return !results.empty(); }));
    EXPECT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].advertising, PacketWith(kName));
}

TEST_F(DeviceAdvertsTest, NothingComesAfterTheStop)
{
    StartListening();
    adapter.ChangeDevice(kDevice, Properties(kPhone));
    EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
    adapter.ChangeDevice(kDevice, Properties(kPhone));
    RunQuietly();
    EXPECT_TRUE(results.empty());
}

TEST_F(DeviceAdvertsTest, AScanMayBeStoppedAndStartedFromInsideItsCallback)
{
    StartListening();
    onResult = [this] {
        onResult = nullptr;
        EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
        EXPECT_EQ(Start(), 0);
    };
    adapter.ChangeDevice(kDevice, Properties(kPhone));
    ASSERT_TRUE(RunUntil([&] { return results.size() == 1; }));
    RunQuietly(50);
    adapter.ChangeDevice(kDevice, Properties(kPhone));
    EXPECT_TRUE(RunUntil([&] { return results.size() == 2; }));
}

TEST_F(DeviceAdvertsTest, ASecondStartTakesThePlaceOfTheFirst)
{
    int old = 0;
    const auto count = [](int, bt_adapter_le_device_scan_result_info_s*, void* data) {
        ++*static_cast<int*>(data);
    };
    ASSERT_EQ(bt_adapter_le_start_scan(count, &old), 0);
    StartListening();
    adapter.ChangeDevice(kDevice, Properties(kPhone));
    EXPECT_TRUE(RunUntil([&] { return results.size() == 1; }));
    EXPECT_EQ(old, 0);
}

TEST_F(DeviceAdvertsTest, AnAdapterThatComesBackIsListenedToAgain)
{
    StartListening();
    adapter.SetPower(FakeAdapter::Power::off);
    RunQuietly(50);
    adapter.SetPower(FakeAdapter::Power::on);
    ASSERT_TRUE(RunUntil([&] { return adapter.IsDiscovering(); }));
    RunQuietly(50);
    adapter.ChangeDevice(kDevice, Properties(kPhone));
    EXPECT_TRUE(RunUntil([&] { return results.size() == 1; }));
}

TEST_F(DeviceAdvertsTest, WhatIsHeardWhenTheAdapterComesBackIsAResult)
{
    StartListening();
    adapter.SetPower(FakeAdapter::Power::off);
    RunQuietly(50);
    adapter.SetDevices("@o '" + kDevice + "': {'org.bluez.Device1': " + Properties(kPhone) + "}");
    adapter.SetPower(FakeAdapter::Power::on);
    EXPECT_TRUE(RunUntil([&] { return results.size() == 1; }));
}

}  // namespace
}  // namespace lyn::linux_tests
