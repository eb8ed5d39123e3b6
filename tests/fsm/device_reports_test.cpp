// SPDX-License-Identifier: Apache-2.0
//
// What the platform reports to a checker, and what the checker makes of it.
#include <stdexcept>

#include "fsm/CheckerTest.h"

namespace lyn::test {
namespace {

class DeviceReports : public CheckerTest {
protected:
    // The same news as through the platform's callbacks.
    void SetBluetooth(bt_adapter_state_e state)
    {
        simulator::SetAdapterState(state);
        simulator::Settle();
    }

    static void PowerOff(std::uint32_t flags)
    {
        simulator::PowerOff(flags);
        simulator::Settle();
    }

    static void AmbientPowerOff()
    {
        simulator::AmbientPowerOff();
        simulator::Settle();
    }
};

TEST_F(DeviceReports, OfBluetoothOffAndOnAreReportedOnceEach)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    SetBluetooth(BT_ADAPTER_DISABLED);
    EXPECT_FALSE(checker->IsEnableState());
    EXPECT_EQ(reports, std::vector({false}));
    EXPECT_EQ(Messages(INFO), Texts({"m_BluetoothAdapterState: 0", "enabled : 0"}));
    SetBluetooth(BT_ADAPTER_ENABLED);
    EXPECT_TRUE(checker->IsEnableState());
    EXPECT_EQ(reports, std::vector({false, true}));
    EXPECT_EQ(Messages(INFO),
              Texts({"m_BluetoothAdapterState: 0", "enabled : 0", "m_BluetoothAdapterState: 1", "enabled : 1"}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(DeviceReports, OfTheSameStateAreOnlyLogged)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    SetBluetooth(BT_ADAPTER_ENABLED);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(Messages(INFO), Texts({"m_BluetoothAdapterState: 1"}));
    EXPECT_EQ(Messages(ERROR), Texts({"same enabled state"}));
}

TEST_F(DeviceReports, OfBluetoothOnEnableWhateverThePowerStateWas)
{
    for (const int power : {3, 5, 1000}) {
        SCOPED_TRACE(power);
        checker = MakeChecker();
        reports.clear();
        Begin(BT_ADAPTER_ENABLED, power);
        ASSERT_FALSE(checker->IsEnableState());
        SetBluetooth(BT_ADAPTER_ENABLED);
        EXPECT_TRUE(checker->IsEnableState());
        EXPECT_EQ(reports, std::vector({true}));
        EXPECT_EQ(CountCalls("device_power_get_state"), 0);
        EXPECT_EQ(CountCalls("bt_adapter_get_state"), 0);
    }
}

TEST_F(DeviceReports, OfAnAdapterStateThatIsNeitherDisable)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    checker->OnBluetoothAdapterStateChanged(2);
    EXPECT_FALSE(checker->IsEnableState());
    EXPECT_TRUE(HasLog(INFO, "m_BluetoothAdapterState: 2"));
    checker->OnBluetoothAdapterStateChanged(1);
    checker->OnBluetoothAdapterStateChanged(-1);
    EXPECT_EQ(reports, std::vector({false, true, false}));
}

TEST_F(DeviceReports, OfTheAdapterCountWhateverTheirResultCode)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    const auto registration = simulator::AdapterRegistration();
    registration.callback(-7, BT_ADAPTER_DISABLED, registration.userData);
    registration.callback(-7, BT_ADAPTER_ENABLED, registration.userData);
    EXPECT_EQ(reports, std::vector({false, true}));
}

TEST_F(DeviceReports, OfASuspendDisable)
{
    for (const std::uint32_t flags : {kSuspend, 0x40000001U, 0xC0000000U, 0xFFFFFFFFU}) {
        SCOPED_TRACE(flags);
        checker = MakeChecker();
        reports.clear();
        Begin(BT_ADAPTER_ENABLED, 0);
        PowerOff(flags);
        EXPECT_FALSE(checker->IsEnableState());
        EXPECT_EQ(reports, std::vector({false}));
        EXPECT_EQ(Messages(INFO), Texts({"Goto Suspend", "enabled : 0"}));
        EXPECT_TRUE(Messages(ERROR).empty());
    }
}

TEST_F(DeviceReports, OfAnotherPowerOffChangeNothing)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    for (const std::uint32_t flags : {0U, 1U, 0x3FFFFFFFU, 0x80000000U, 0xBFFFFFFFU}) {
        SCOPED_TRACE(flags);
        PowerOff(flags);
        EXPECT_TRUE(checker->IsEnableState());
        EXPECT_TRUE(LogLines().empty());
    }
    EXPECT_TRUE(reports.empty());
}

TEST_F(DeviceReports, OfAPowerOffWithoutInfoAreLogged)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    const auto registration = simulator::PowerOffRegistration();
    EXPECT_EQ(registration.callback(nullptr, registration.userData), 0);
    EXPECT_EQ(Messages(ERROR), Texts({"info is nullptr"}));
    EXPECT_TRUE(Messages(INFO).empty());
    EXPECT_TRUE(reports.empty());
    EXPECT_TRUE(checker->IsEnableState());
}

TEST_F(DeviceReports, OfAnAmbientPowerOffDisableOnce)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    AmbientPowerOff();
    EXPECT_EQ(Messages(INFO), Texts({"Go to Ambient off", "enabled : 0"}));
    EXPECT_EQ(reports, std::vector({false}));
    simulator::ClearLog();
    AmbientPowerOff();
    EXPECT_EQ(Messages(INFO), Texts({"Go to Ambient off"}));
    EXPECT_EQ(Messages(ERROR), Texts({"same enabled state"}));
    EXPECT_EQ(reports, std::vector({false}));
}

TEST_F(DeviceReports, OfAnAmbientPowerOffNeedNoInfo)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    const auto registration = simulator::AmbientPowerOffRegistration();
    EXPECT_EQ(registration.callback(nullptr, registration.userData), 0);
    EXPECT_EQ(reports, std::vector({false}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(DeviceReports, OfBluetoothOnEndASuspendAndAnAmbientPowerOff)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    PowerOff(kSuspend);
    SetBluetooth(BT_ADAPTER_ENABLED);
    AmbientPowerOff();
    SetBluetooth(BT_ADAPTER_ENABLED);
    EXPECT_EQ(reports, std::vector({false, true, false, true}));
    EXPECT_TRUE(checker->IsEnableState());
}

TEST_F(DeviceReports, WithoutUserDataAreLoggedAndDropped)
{
    Begin(BT_ADAPTER_ENABLED, 0);
    const device_power_off_info_s info = {kSuspend};
    CDeviceStateChecekr::BluetoothAdapterStateChangedCb(0, BT_ADAPTER_DISABLED, nullptr);
    EXPECT_EQ(CDeviceStateChecekr::PowerOffCb(&info, nullptr), 0);
    EXPECT_EQ(CDeviceStateChecekr::AmbientPowerOffCb(&info, nullptr), 0);
    std::vector<std::pair<std::string, std::string>> lines;
    for (const Line& line : LogLines()) {
        EXPECT_EQ(line.priority, ERROR);
        lines.emplace_back(line.function, line.message);
    }
    const std::vector<std::pair<std::string, std::string>> expected = {
        {"BluetoothAdapterStateChangedCb", "userData is nullptr"},
        {"PowerOffCb", "userData is nullptr"},
        {"AmbientPowerOffCb", "userData is nullptr"}};
    EXPECT_EQ(lines, expected);
    EXPECT_TRUE(reports.empty());
    EXPECT_TRUE(checker->IsEnableState());
}

TEST_F(DeviceReports, WithoutACallbackLeaveTheFlagAsItIs)
{
    checker->Init(nullptr);
    checker->Start();
    ASSERT_TRUE(checker->IsEnableState());
    simulator::ClearLog();
    SetBluetooth(BT_ADAPTER_DISABLED);
    EXPECT_TRUE(checker->IsEnableState());
    AmbientPowerOff();
    EXPECT_TRUE(checker->IsEnableState());
    EXPECT_EQ(Messages(ERROR), Texts({"callback is null", "callback is null"}));
    EXPECT_FALSE(HasLogWith(INFO, "enabled :"));
}

TEST_F(DeviceReports, BeforeTheOwnerIsReadyAreMadeByTheMainLoopAfterwards)
{
    checker->Init(KeepReports());
    checker->OnBluetoothAdapterStateChanged(BT_ADAPTER_DISABLED);
    simulator::Settle();
    EXPECT_TRUE(reports.empty());
    EXPECT_TRUE(checker->IsEnableState()) << "as it was read";
    checker->Start();
    EXPECT_TRUE(reports.empty()) << "the owner is still at its beginning";
    simulator::Settle();
    EXPECT_EQ(reports, std::vector({false}));
    EXPECT_FALSE(checker->IsEnableState());
    SetBluetooth(BT_ADAPTER_ENABLED);
    EXPECT_EQ(reports, std::vector({false, true})) << "and from then on as they come";
}

TEST_F(DeviceReports, BeforeTheMainLoopHasMadeTheFirstAreMadeByIt)
{
    checker->Init(KeepReports());
    checker->OnBluetoothAdapterStateChanged(BT_ADAPTER_DISABLED);
    checker->Start();
    checker->OnBluetoothAdapterStateChanged(BT_ADAPTER_ENABLED);
    checker->OnAmbientPowerOffEvent();
    EXPECT_TRUE(reports.empty());
    simulator::Settle();
    EXPECT_EQ(reports, std::vector({false})) << "the last of them counts";
}

TEST_F(DeviceReports, BeforeTheOwnerIsReadyThatTakeEachOtherBackChangeNothing)
{
    checker->Init(KeepReports());
    checker->OnBluetoothAdapterStateChanged(BT_ADAPTER_DISABLED);
    checker->OnBluetoothAdapterStateChanged(BT_ADAPTER_ENABLED);
    checker->Start();
    simulator::Settle();
    EXPECT_TRUE(reports.empty());
    EXPECT_TRUE(checker->IsEnableState());
    EXPECT_EQ(Messages(ERROR), Texts({"same enabled state"}));
}

TEST_F(DeviceReports, BeforeTheOwnerIsReadyGoWithTheChecker)
{
    checker->Init(KeepReports());
    checker->OnBluetoothAdapterStateChanged(BT_ADAPTER_DISABLED);
    checker->Start();
    checker.reset();
    simulator::Settle();
    EXPECT_TRUE(reports.empty());
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(DeviceReports, OfTheSameStateAreSaidBeforeTheMissingCallback)
{
    checker->Init(nullptr);
    checker->Start();
    SetBluetooth(BT_ADAPTER_ENABLED);
    EXPECT_EQ(Messages(ERROR), Texts({"same enabled state"}));
}

TEST_F(DeviceReports, AreMadeWithTheFlagAlreadySet)
{
    std::vector<bool> flags;
    checker->Init([&](bool) { flags.push_back(checker->IsEnableState()); });
    checker->Start();
    AmbientPowerOff();
    SetBluetooth(BT_ADAPTER_ENABLED);
    EXPECT_EQ(flags, std::vector({false, true}));
}

TEST_F(DeviceReports, EndWhatIsThrownByTheirReceiver)
{
    checker->Init([](bool) { throw std::runtime_error("the application has failed"); });
    checker->Start();
    const device_power_off_info_s info = {kSuspend};
    const auto adapter = simulator::AdapterRegistration();
    const auto powerOff = simulator::PowerOffRegistration();
    const auto ambient = simulator::AmbientPowerOffRegistration();
    EXPECT_NO_THROW(adapter.callback(0, BT_ADAPTER_DISABLED, adapter.userData));
    EXPECT_NO_THROW(adapter.callback(0, BT_ADAPTER_ENABLED, adapter.userData));
    EXPECT_NO_THROW(EXPECT_EQ(powerOff.callback(&info, powerOff.userData), 0));
    checker->Init([](bool) { throw 7; });
    EXPECT_NO_THROW(EXPECT_EQ(ambient.callback(&info, ambient.userData), 0));
    EXPECT_EQ(Messages(ERROR).size(), 4U);
    EXPECT_TRUE(HasLogWith(ERROR, "the application has failed"));
}

}  // namespace
}  // namespace lyn::test
