// SPDX-License-Identifier: Apache-2.0
//
// The checker's beginning and end: what it reads, what it makes of it, what it registers.
#include <climits>

#include "fsm/CheckerTest.h"

namespace lyn::test {
namespace {

const Texts kRegistrations = {"device_power_subscribe_poweroff_event()",
                              "device_power_subscribe_ambient_poweroff()", "bt_adapter_set_state_changed_cb()"};
const Texts kUnregistrations = {"bt_adapter_unset_state_changed_cb()",
                                "device_power_unsubscribe_ambient_poweroff()",
                                "device_power_unsubscribe_poweroff_event()"};

using DeviceStateChecker = CheckerTest;

TEST_F(DeviceStateChecker, ReadsBothStatesThenRegisters)
{
    checker->Init(KeepReports());
    Texts calls = {"device_power_get_state()", "bt_adapter_get_state(-> 1)"};
    calls.insert(calls.end(), kRegistrations.begin(), kRegistrations.end());
    EXPECT_EQ(simulator::JournalText(), calls);
    EXPECT_TRUE(reports.empty());
}

TEST_F(DeviceStateChecker, LogsWhatItHasRead)
{
    simulator::SetPowerState(4);
    checker->Init(KeepReports());
    EXPECT_EQ(Messages(INFO),
              Texts({"Power State: 4", "BT Adapter Staet: 1", "bluetoothEnabled : 1, vaildPowerState 1"}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(DeviceStateChecker, IsEnabledWithBluetoothOnAndAPowerStateThatServes)
{
    const std::vector<std::pair<int, bool>> powerStates = {
        {0, true},  {1, true},  {2, true},      {3, false},  {4, true},   {5, false},       {6, false},
        {7, false}, {8, false}, {0x104, false}, {-1, false}, {-4, false}, {INT_MIN, false}, {INT_MAX, false}};
    for (const auto& [power, serves] : powerStates) {
        for (const bt_adapter_state_e adapter : {BT_ADAPTER_DISABLED, BT_ADAPTER_ENABLED}) {
            SCOPED_TRACE("power " + std::to_string(power) + ", adapter " + std::to_string(adapter));
            simulator::SetPowerState(power);
            simulator::SetAdapterState(adapter, false);
            simulator::ClearLog();
            checker = MakeChecker();
            checker->Init(KeepReports());
            EXPECT_EQ(checker->IsEnableState(), serves && adapter == BT_ADAPTER_ENABLED);
            EXPECT_EQ(Messages(INFO).back(), "bluetoothEnabled : " + std::to_string(adapter) +
                                                 ", vaildPowerState " + (serves ? "1" : "0"));
        }
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(DeviceStateChecker, IsNotEnabledBeforeItsInit)
{
    EXPECT_FALSE(checker->IsEnableState());
}

TEST_F(DeviceStateChecker, TakesAnAdapterThatCannotBeReadForOff)
{
    simulator::FailCall("bt_adapter_get_state", -7);
    checker->Init(KeepReports());
    EXPECT_FALSE(checker->IsEnableState());
    EXPECT_EQ(Messages(ERROR), Texts({"fail to get bt_adapter_get_state"}));
    EXPECT_TRUE(HasLog(INFO, "bluetoothEnabled : 0, vaildPowerState 1"));
    EXPECT_EQ(Calls("device_power_subscribe").size(), 2U);
    EXPECT_EQ(CountCalls("bt_adapter_set_state_changed_cb"), 1);
}

TEST_F(DeviceStateChecker, KeepsTheAdapterStateThatItKnewWhenItCannotBeReadAgain)
{
    checker->Init(KeepReports());
    simulator::FailCall("bt_adapter_get_state", -7);
    checker->Init(KeepReports());
    EXPECT_TRUE(checker->IsEnableState());
}

TEST_F(DeviceStateChecker, RegistersWhatItCanWhenARegistrationFails)
{
    for (const std::string& failing : kRegistrations) {
        SCOPED_TRACE(failing);
        simulator::Reset();
        simulator::FailCall(failing.substr(0, failing.find('(')), -7);
        checker = MakeChecker();
        EXPECT_NO_THROW(checker->Init(KeepReports()));
        Texts calls = simulator::JournalText();
        ASSERT_GE(calls.size(), kRegistrations.size());
        calls.erase(calls.begin(), calls.end() - static_cast<std::ptrdiff_t>(kRegistrations.size()));
        EXPECT_EQ(calls, kRegistrations);
        EXPECT_EQ(simulator::Alive().registrations, 2);
        EXPECT_TRUE(checker->IsEnableState());
        checker.reset();
        EXPECT_EQ(simulator::Alive().registrations, 0);
    }
}

TEST_F(DeviceStateChecker, RegistersThreeCallbacksWithOneUserData)
{
    checker->Init(KeepReports());
    EXPECT_EQ(simulator::AdapterRegistration().callback, &CDeviceStateChecekr::BluetoothAdapterStateChangedCb);
    EXPECT_EQ(simulator::PowerOffRegistration().callback, &CDeviceStateChecekr::PowerOffCb);
    EXPECT_EQ(simulator::AmbientPowerOffRegistration().callback, &CDeviceStateChecekr::AmbientPowerOffCb);
    EXPECT_NE(simulator::AdapterRegistration().userData, nullptr);
    EXPECT_EQ(simulator::AdapterRegistration().userData, simulator::PowerOffRegistration().userData);
    EXPECT_EQ(simulator::AdapterRegistration().userData, simulator::AmbientPowerOffRegistration().userData);
}

TEST_F(DeviceStateChecker, RemovesItsRegistrationsInItsDeinit)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    checker->Deinit();
    EXPECT_EQ(simulator::JournalText(), kUnregistrations);
    EXPECT_EQ(simulator::Alive().registrations, 0);
    EXPECT_TRUE(reports.empty());
}

TEST_F(DeviceStateChecker, RemovesTheOtherRegistrationsWhenOneRemovalFails)
{
    for (const std::string& failing : kUnregistrations) {
        SCOPED_TRACE(failing);
        simulator::Reset();
        checker = MakeChecker();
        Begin(BT_ADAPTER_ENABLED, 0);
        simulator::FailCall(failing.substr(0, failing.find('(')), -7);
        EXPECT_NO_THROW(checker->Deinit());
        EXPECT_EQ(simulator::JournalText(), kUnregistrations);
        simulator::ClearFaults();
    }
}

TEST_F(DeviceStateChecker, IsNotFoundByAReportThatComesAfterItsEnd)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    const auto adapter = simulator::AdapterRegistration();
    const auto powerOff = simulator::PowerOffRegistration();
    const auto ambient = simulator::AmbientPowerOffRegistration();
    checker.reset();
    simulator::ClearLog();
    const device_power_off_info_s info = {kSuspend};
    adapter.callback(0, BT_ADAPTER_DISABLED, adapter.userData);
    EXPECT_EQ(powerOff.callback(&info, powerOff.userData), 0);
    EXPECT_EQ(ambient.callback(&info, ambient.userData), 0);
    EXPECT_TRUE(reports.empty());
    EXPECT_TRUE(LogLines().empty());
}

TEST_F(DeviceStateChecker, LeavesTheRegistrationsToTheOneThatCameAfterIt)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    const auto next = MakeChecker();
    std::vector<bool> nextReports;
    next->Init([&](bool enabled) { nextReports.push_back(enabled); });
    next->Start();
    simulator::ClearJournal();
    checker.reset();
    EXPECT_TRUE(simulator::JournalText().empty());
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    simulator::Settle();
    EXPECT_EQ(nextReports, std::vector({false}));
    EXPECT_TRUE(reports.empty());
}

TEST_F(DeviceStateChecker, TakesTheRegistrationsOverFromTheOneThatCameBefore)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    void* const before = simulator::AdapterRegistration().userData;
    auto next = MakeChecker();
    next->Init(KeepReports());
    Texts calls = simulator::JournalText();
    ASSERT_GE(calls.size(), kRegistrations.size());
    calls.erase(calls.begin(), calls.end() - static_cast<std::ptrdiff_t>(kRegistrations.size()));
    EXPECT_EQ(calls, kRegistrations);
    EXPECT_NE(simulator::AdapterRegistration().userData, before);
    EXPECT_EQ(simulator::AdapterRegistration().userData, simulator::PowerOffRegistration().userData);
    EXPECT_EQ(simulator::AdapterRegistration().userData, simulator::AmbientPowerOffRegistration().userData);

    checker.reset();
    simulator::ClearJournal();
    next.reset();
    EXPECT_EQ(simulator::JournalText(), kUnregistrations);
    EXPECT_EQ(simulator::Alive().registrations, 0);
}

TEST_F(DeviceStateChecker, RegistersOnceForTwoInits)
{
    checker->Init(KeepReports());
    simulator::ClearJournal();
    checker->Init(KeepReports());
    EXPECT_EQ(simulator::JournalText(), Texts({"device_power_get_state()", "bt_adapter_get_state(-> 1)"}));
    EXPECT_EQ(simulator::Alive().registrations, 3);
}

TEST_F(DeviceStateChecker, UnregistersOnceForTwoDeinits)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    checker->Deinit();
    checker->Deinit();
    EXPECT_EQ(simulator::JournalText(), kUnregistrations);
}

}  // namespace
}  // namespace lyn::test
