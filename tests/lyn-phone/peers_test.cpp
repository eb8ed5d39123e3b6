// SPDX-License-Identifier: Apache-2.0
#include "peers.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FakeService.h"
#include "PrivateBus.h"

namespace lynphone {
namespace {

using lyn::linux_tests::FakeService;
using lyn::linux_tests::PrivateBus;
using lyn::linux_tests::RunQuietly;
using lyn::linux_tests::RunUntil;

constexpr const char* kManager = "org.freedesktop.DBus.ObjectManager";
constexpr const char* kTv = "/org/bluez/hci1/dev_02_00_00_00_00_01";

class PeersTest : public ::testing::Test {
protected:
    PeersTest()
    {
        PrivateBus::Instance();
        RunQuietly(20);  // the signals are asked for
    }

    void Remove(const std::string& interface)
    {
        bluez.Signal("/", kManager, "InterfacesRemoved", std::string("(@o '") + kTv + "', ['" + interface + "'])");
    }

    FakeService bluez{"org.bluez"};
    std::vector<std::string> seen;
    Peers peers{lyn::linux_platform::Bus::System(), "/org/bluez/hci1",
                [this](const std::string& address, bool connected) {
                    seen.push_back(address + (connected ? " came" : " went"));
                }};
};

using Seen = std::vector<std::string>;

TEST_F(PeersTest, AreThereUntilTheirDeviceIsRemoved)
{
    bluez.Signal("/", kManager, "InterfacesAdded",
                 std::string("(@o '") + kTv + "', {'org.bluez.Device1': {'Connected': <true>}})");
    ASSERT_TRUE(RunUntil([&] { return seen == Seen{"02:00:00:00:00:01 came"}; }));
    Remove("org.bluez.Battery1");
    RunQuietly();
    EXPECT_EQ(seen, Seen{"02:00:00:00:00:01 came"});
    Remove("org.bluez.Device1");
    EXPECT_TRUE(RunUntil([&] { return seen == Seen{"02:00:00:00:00:01 came", "02:00:00:00:00:01 went"}; }));
}

}  // namespace
}  // namespace lynphone
