// SPDX-License-Identifier: Apache-2.0
#include "bluez/Adapter.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <memory>
#include <thread>
#include <vector>

#include "FakeService.h"
#include "PrivateBus.h"
#include "lyn_platform/bluetooth.h"

namespace lyn::linux_tests {
namespace {

constexpr const char* kManager = "org.freedesktop.DBus.ObjectManager";
constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

class AdapterTest : public ::testing::Test {
protected:
    AdapterTest()
    {
        PrivateBus::Instance();
        bluez = std::make_unique<FakeService>("org.bluez");
    }
    ~AdapterTest() override
    {
        bt_adapter_unset_state_changed_cb();
        ::unsetenv("LYN_BT_ADAPTER");
        bluez.reset();
        linux_platform::Adapter::Instance().Read();  // So that the next test begins without one.
        RunQuietly(50);
    }

    static std::string One(const std::string& name, const std::string& address, bool powered)
    {
        return "objectpath '/org/bluez/" + name + "': {'org.bluez.Adapter1': {'Address': <'" + address +
               "'>, 'Powered': <" + (powered ? "true" : "false") + ">}}";
    }

    void Have(const std::string& adapters) const
    {
        bluez->OnText("/", kManager, "GetManagedObjects", "({" + adapters + "},)");
    }

    void TellChange() const
    {
        bluez->Signal("/org/bluez/hci0", kProperties, "PropertiesChanged",
                      "('org.bluez.Adapter1', {'Powered': <true>}, @as [])");
    }

    void Watch()
    {
        ASSERT_EQ(bt_product_init(), 0);
        RunQuietly(50);
        ASSERT_EQ(bt_adapter_set_state_changed_cb(&AdapterTest::OnState, this), 0);
    }

    static std::string Address()
    {
        char* text = nullptr;
        if (bt_adapter_get_address(&text) != 0) {
            return "none";
        }
        const std::string address = text;
        std::free(text);
        return address;
    }

    static bt_adapter_state_e State()
    {
        bt_adapter_state_e state = BT_ADAPTER_ENABLED;
        EXPECT_EQ(bt_adapter_get_state(&state), 0);
        return state;
    }

    static void OnState(int result, bt_adapter_state_e state, void* self)
    {
        EXPECT_EQ(result, 0);
        static_cast<AdapterTest*>(self)->states.push_back(state);
    }

    std::unique_ptr<FakeService> bluez;
    std::vector<bt_adapter_state_e> states;
};

const std::string kOff = "02:00:00:00:00:00";
const std::string kOn = "02:00:00:00:00:01";
const std::string kAlsoOn = "02:00:00:00:00:02";

// Before all others: watching begins once in a process.
TEST_F(AdapterTest, IsNoChangeWhenWatchingBegins)
{
    Have(One("hci0", kOn, true));
    ASSERT_EQ(bt_adapter_set_state_changed_cb(&AdapterTest::OnState, this), 0);
    RunQuietly();
    EXPECT_TRUE(states.empty());
}

TEST_F(AdapterTest, IsTheFirstThatIsOn)
{
    Have(One("hci10", kAlsoOn, true) + ", " + One("hci2", kOn, true) + ", " + One("hci0", kOff, false));
    EXPECT_EQ(Address(), kOn);
    EXPECT_EQ(State(), BT_ADAPTER_ENABLED);
}

TEST_F(AdapterTest, IsTheFirstWhenAllAreOff)
{
    Have(One("hci1", kOn, false) + ", " + One("hci0", kOff, false));
    EXPECT_EQ(Address(), kOff);
    EXPECT_EQ(State(), BT_ADAPTER_DISABLED);
}

TEST_F(AdapterTest, IsKeptForAsLongAsItIsOn)
{
    Have(One("hci1", kOn, true) + ", " + One("hci0", kOff, false));
    EXPECT_EQ(Address(), kOn);
    Have(One("hci1", kOn, true) + ", " + One("hci0", kOff, true));
    EXPECT_EQ(Address(), kOn);
    Have(One("hci1", kOn, false) + ", " + One("hci0", kOff, true));
    EXPECT_EQ(Address(), kOff);
}

TEST_F(AdapterTest, IsTheOneThatTheEnvironmentNames)
{
    Have(One("hci0", kOn, true) + ", " + One("hci1", "02:00:00:00:00:AB", false));
    ::setenv("LYN_BT_ADAPTER", "hci1", 1);
    EXPECT_EQ(Address(), "02:00:00:00:00:AB");
    ::setenv("LYN_BT_ADAPTER", "02:00:00:00:00:ab", 1);
    EXPECT_EQ(Address(), "02:00:00:00:00:AB");
    ::setenv("LYN_BT_ADAPTER", "hci7", 1);
    EXPECT_EQ(Address(), "none");
    EXPECT_EQ(State(), BT_ADAPTER_DISABLED);
    ::setenv("LYN_BT_ADAPTER", "", 1);
    EXPECT_NE(Address(), "none") << "an empty name asks for none";
}

TEST_F(AdapterTest, IsOffWithoutBluetoothd)
{
    bluez.reset();
    EXPECT_EQ(State(), BT_ADAPTER_DISABLED);
    EXPECT_EQ(Address(), "none");
    EXPECT_EQ(bt_product_init(), 0) << "it may come";
}

TEST_F(AdapterTest, ReportsChangesAndNoMore)
{
    Have(One("hci0", kOn, true));
    Watch();
    TellChange();
    RunQuietly();
    EXPECT_TRUE(states.empty());
    Have(One("hci0", kOn, false));
    TellChange();
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED}; }));
    Have(One("hci0", kOn, true));
    TellChange();
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED, BT_ADAPTER_ENABLED}; }));
    EXPECT_EQ(bt_adapter_unset_state_changed_cb(), 0);
    Have(One("hci0", kOn, false));
    TellChange();
    RunQuietly();
    EXPECT_EQ(states.size(), 2U);
}

TEST_F(AdapterTest, ReportsAnOffThatIsOverBeforeItIsLookedAt)
{
    Have(One("hci0", kOn, true));
    Watch();
    bluez->Signal("/org/bluez/hci0", kProperties, "PropertiesChanged",
                  "('org.bluez.Adapter1', {'Powered': <false>}, @as [])");
    TellChange();
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED, BT_ADAPTER_ENABLED}; }));
}

TEST_F(AdapterTest, ReportsARemovalThatIsOverBeforeItIsLookedAt)
{
    Have(One("hci0", kOn, true));
    Watch();
    bluez->Signal("/", kManager, "InterfacesRemoved", "(@o '/org/bluez/hci0', ['org.bluez.Adapter1'])");
    bluez->Signal("/", kManager, "InterfacesAdded", "(@o '/org/bluez/hci0', {'org.bluez.Adapter1': @a{sv} {}})");
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED, BT_ADAPTER_ENABLED}; }));
}

TEST_F(AdapterTest, IsNotOffWhenAnotherOneIs)
{
    Have(One("hci0", kOn, true) + ", " + One("hci1", kOff, true));
    Watch();
    bluez->Signal("/org/bluez/hci1", kProperties, "PropertiesChanged",
                  "('org.bluez.Adapter1', {'Powered': <false>}, @as [])");
    bluez->Signal("/", kManager, "InterfacesRemoved", "(@o '/org/bluez/hci1', ['org.bluez.Adapter1'])");
    bluez->Signal("/", kManager, "InterfacesRemoved", "(@o '/org/bluez/hci0', ['org.bluez.Media1'])");
    RunQuietly();
    EXPECT_TRUE(states.empty());
}

TEST_F(AdapterTest, TakesNothingFromSignalsOfAnotherShape)
{
    Have(One("hci0", kOn, true));
    Watch();
    for (const char* const values : {"()", "(5,)", "('/org/bluez/hci0',)", "(@o '/org/bluez/hci0', 5)"}) {
        bluez->Signal("/", kManager, "InterfacesAdded", values);
        bluez->Signal("/", kManager, "InterfacesRemoved", values);
        bluez->Signal("/org/bluez/hci0", kProperties, "PropertiesChanged", values);
    }
    bluez->Signal("/org/bluez/hci0", kProperties, "PropertiesChanged",
                  "('org.bluez.Adapter1', {'Powered': <'no'>}, @as [])");
    RunQuietly();
    EXPECT_TRUE(states.empty());
    Have(One("hci0", kOn, false));
    TellChange();
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED}; }));
}

TEST_F(AdapterTest, GoesAndComesWithBluetoothd)
{
    Have(One("hci0", kOn, true));
    Watch();
    bluez.reset();
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED}; }));
    bluez = std::make_unique<FakeService>("org.bluez");
    Have(One("hci0", kOn, true));
    TellChange();
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED, BT_ADAPTER_ENABLED}; }));
}

TEST_F(AdapterTest, GoesAndComesWithTheSystemBus)
{
    Have(One("hci0", kOn, true));
    Watch();
    bluez.reset();
    PrivateBus::Restart();
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED}; }));
    bluez = std::make_unique<FakeService>("org.bluez");
    Have(One("hci0", kOn, true));
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED, BT_ADAPTER_ENABLED}; }));
    Have(One("hci0", kOn, false));
    TellChange();
    EXPECT_TRUE(RunUntil([&] { return states.size() == 3; })) << "changes are not heard any more";
}

TEST_F(AdapterTest, IsToldOnceMoreWhenAsked)
{
    Have(One("hci0", kOn, true));
    Watch();
    linux_platform::Adapter::Instance().TellAgain();
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_ENABLED}; }));
}

TEST_F(AdapterTest, IsNotLostWhenBluetoothdIsTooBusyToAnswer)
{
    Have(One("hci0", kOn, true));
    Watch();
    bluez->On("/", kManager, "GetManagedObjects", [](GDBusMessage*) -> GDBusMessage* { return nullptr; });
    TellChange();
    EXPECT_EQ(Address(), kOn);
    RunQuietly(2500);
    EXPECT_TRUE(states.empty());
    Have(One("hci0", kOn, false));
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED}; })) << "asked again";
}

TEST_F(AdapterTest, IsNotLostWhenBluetoothdFailsToTellOfIt)
{
    Have(One("hci0", kOn, true));
    Watch();
    bluez->Fail("/", kManager, "GetManagedObjects", "org.bluez.Error.Failed");
    TellChange();
    RunQuietly();
    EXPECT_EQ(Address(), kOn);
    EXPECT_TRUE(states.empty());
}

TEST_F(AdapterTest, IsLookedAtAgainWhenBluetoothdFailsToTellOfIt)
{
    Have(One("hci0", kOn, true));
    Watch();
    bluez->Fail("/", kManager, "GetManagedObjects", "org.bluez.Error.Failed");
    bluez->Signal("/org/bluez/hci0", kProperties, "PropertiesChanged",
                  "('org.bluez.Adapter1', {'Powered': <false>}, @as [])");
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_DISABLED}; }));
    RunQuietly(50);
    Have(One("hci0", kOn, true));
    EXPECT_TRUE(RunUntil([&] {
        return states == std::vector{BT_ADAPTER_DISABLED, BT_ADAPTER_ENABLED};
    })) << "although no signal says so";
}

TEST_F(AdapterTest, IsToldOnceMoreAlsoWhenOtherLooksComeBetween)
{
    Have(One("hci0", kOn, true));
    Watch();
    bluez->On("/", kManager, "GetManagedObjects", [](GDBusMessage*) -> GDBusMessage* { return nullptr; });
    linux_platform::Adapter::Instance().TellAgain();
    RunQuietly(50);
    TellChange();
    RunQuietly(2500);
    Have(One("hci0", kOn, true));
    EXPECT_TRUE(RunUntil([&] { return states == std::vector{BT_ADAPTER_ENABLED}; })) << "after a resume";
}

TEST_F(AdapterTest, IsNotThereWhenTheAnswerIsNonsense)
{
    for (const char* const answer : {"(5,)", "({'/a': 5},)", "(@a{oa{sa{sv}}} {},)"}) {
        bluez->OnText("/", kManager, "GetManagedObjects", answer);
        EXPECT_EQ(Address(), "none") << answer;
    }
    Have("objectpath '/org/bluez/hci0': {'org.bluez.Adapter1': {'Address': <5>, 'Powered': <'yes'>}}");
    EXPECT_EQ(Address(), "none");
    EXPECT_EQ(State(), BT_ADAPTER_DISABLED);
}

TEST_F(AdapterTest, IsNotLostToSignalsThatAreNonsense)
{
    Have(One("hci0", kOn, true));
    Watch();
    for (const char* const name : {"InterfacesAdded", "InterfacesRemoved"}) {
        for (const char* const values : {"()", "(5,)", "('text',)", "(@o '/org/bluez/hci0',)", "(true, false)"}) {
            bluez->Signal("/", kManager, name, values);
        }
    }
    bluez->Signal("/org/bluez/hci0", kProperties, "PropertiesChanged", "('org.bluez.Adapter1', 5)");
    RunQuietly();
    EXPECT_TRUE(states.empty());
    EXPECT_EQ(Address(), kOn);
}

TEST_F(AdapterTest, MayBeAskedForOnSeveralThreadsWhileItChanges)
{
    Have(One("hci0", kOn, true));
    Watch();
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([] {
            for (int round = 0; round < 20; ++round) {
                EXPECT_EQ(bt_product_init(), 0);
                EXPECT_EQ(Address(), kOn);
                EXPECT_EQ(linux_platform::Adapter::Instance().Known().address, kOn);
            }
        });
    }
    for (int i = 0; i < 20; ++i) {
        Have(One("hci0", kOn, i % 2 == 0));
        TellChange();
        bt_adapter_unset_state_changed_cb();
        ASSERT_EQ(bt_adapter_set_state_changed_cb(&AdapterTest::OnState, this), 0);
        RunQuietly(5);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(AdapterTest, DoesNotLookAtPhonesThatComeAndGo)
{
    Have(One("hci0", kOn, true));
    Watch();
    const auto before = bluez->Calls().size();
    for (int i = 0; i < 10; ++i) {
        bluez->Signal("/", kManager, "InterfacesAdded",
                      "(@o '/org/bluez/hci0/dev_A0_00_00_00_00_01', @a{sa{sv}} {})");
        bluez->Signal("/", kManager, "InterfacesRemoved",
                      "(@o '/org/bluez/hci0/dev_A0_00_00_00_00_01', ['org.bluez.Device1'])");
    }
    RunQuietly();
    EXPECT_EQ(bluez->Calls().size(), before);
}

TEST_F(AdapterTest, NeedsAPlaceForItsAnswers)
{
    Have(One("hci0", kOn, true));
    EXPECT_NE(bt_adapter_get_state(nullptr), 0);
    EXPECT_NE(bt_adapter_get_address(nullptr), 0);
    EXPECT_NE(bt_adapter_set_state_changed_cb(nullptr, nullptr), 0);
}

}  // namespace
}  // namespace lyn::linux_tests
