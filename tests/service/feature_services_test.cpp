// SPDX-License-Identifier: Apache-2.0
//
// "mirroring", "nodlink" and "kov" from creation to destruction, with a phone of theirs in the room.
#include "service/AppTest.h"

namespace lyn::test {
namespace {

class FeatureService : public AppTest, public ::testing::WithParamInterface<std::string> {
protected:
    static bool IsNodLink() { return GetParam() == "nodlink"; }
    static Texts ScanMode()
    {
        return IsNodLink() ? Calls("bt_adapter_le_set_customized_scan_mode")
                           : Calls("bt_adapter_le_set_scan_mode");
    }
};

TEST_P(FeatureService, ReportsNothingForItsCreation)
{
    ASSERT_EQ(app.Create(GetParam()), LYN_ERROR_NONE);
    simulator::Settle();
    EXPECT_TRUE(app.events.empty());
    EXPECT_TRUE(Messages(ERROR).empty());
    EXPECT_EQ(simulator::JournalText().front(), "bt_product_init()");
    EXPECT_EQ(simulator::JournalText().size(), IsNodLink() ? 6U : 1U);
}

TEST_P(FeatureService, NeedsBluetoothForItsCreationOnlyWhereItIsNodLink)
{
    simulator::SetAdapterState(BT_ADAPTER_DISABLED, false);
    EXPECT_EQ(app.Create(GetParam()), IsNodLink() ? LYN_ERROR_INTERNAL : LYN_ERROR_NONE);
}

TEST_P(FeatureService, NeedsAPowerStateThatServesOnlyWhereItIsNodLink)
{
    simulator::SetPowerState(3);
    EXPECT_EQ(app.Create(GetParam()), IsNodLink() ? LYN_ERROR_INTERNAL : LYN_ERROR_NONE);
}

TEST_P(FeatureService, SucceedsWithoutPartsWhenTheBluetoothProductFails)
{
    simulator::FailCall("bt_product_init", -1);
    EXPECT_EQ(app.Create(GetParam()), LYN_ERROR_NONE);
    EXPECT_TRUE(app.events.empty());
    EXPECT_EQ(app.StartScan(), LYN_ERROR_INTERNAL);
    EXPECT_TRUE(HasLog(ERROR, "exception: m_pFsm is NULL"));
    EXPECT_EQ(simulator::JournalText(), Texts({"bt_product_init()"}));
}

TEST_P(FeatureService, FollowsTheDeviceOnlyWhereItIsNodLink)
{
    Begin(GetParam());
    SetBluetooth(BT_ADAPTER_DISABLED);
    SetBluetooth(BT_ADAPTER_ENABLED);
    simulator::AmbientPowerOff();
    simulator::Settle();
    EXPECT_EQ(app.states,
              IsNodLink() ? States({LYN_STATE_NOT_READY, LYN_STATE_READY, LYN_STATE_NOT_READY}) : States());
}

TEST_P(FeatureService, ScansWithTheRadio)
{
    Begin(GetParam());
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_SCANNING}));
    EXPECT_EQ(ScanMode().size(), 1U);
    EXPECT_TRUE(simulator::Alive().scanning);
    EXPECT_TRUE(simulator::Alive().boosted);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_SCANNING, LYN_STATE_READY}));
    EXPECT_FALSE(simulator::Alive().scanning);
    EXPECT_FALSE(simulator::Alive().boosted);
}

TEST_P(FeatureService, FindsItsPhoneAndNoOther)
{
    for (const std::string service : {"mirroring", "nodlink", "kov"}) {
        simulator::Phone phone = PhoneFor(service, "");
        phone.address = service == GetParam() ? kPhone : "AA:BB:CC:DD:EE:0" + std::to_string(service.size());
        simulator::AddPhone(phone);
    }
    Begin(GetParam());
    app.StartScan();
    ASSERT_TRUE(simulator::RunUntil([&] { return app.phones.size() >= 3; }));
    for (const FoundPhone& phone : app.phones) {
        EXPECT_EQ(phone.address, kPhone);
        EXPECT_EQ(phone.hasName, !IsNodLink());
    }
    app.StopScan();
    const std::size_t found = app.phones.size();
    simulator::Settle();
    EXPECT_EQ(app.phones.size(), found);
}

TEST_P(FeatureService, AsksItsPhone)
{
    simulator::AddPhone(PhoneFor(GetParam(), "Success"));
    Begin(GetParam());
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_EQ(app.states, States({LYN_STATE_SCANNING, LYN_STATE_READY, LYN_STATE_REQUESTING}));
    EXPECT_FALSE(simulator::Alive().scanning);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.results, Results({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
    const Texts lastTwo(app.events.end() - 2, app.events.end());
    EXPECT_EQ(lastTwo, Texts({"state 0", "result 0"}));
}

TEST_P(FeatureService, TurnsEachAnswerIntoItsResult)
{
    const std::vector<std::pair<std::string, int>> answers = {{"Success", 0},
                                                              {"GattFail", 1},
                                                              {"NotRegisteredDevice", 2},
                                                              {"UnknownErr", 3},
                                                              {"CommandErr", 4},
                                                              {"NotSupported", 5},
                                                              {"Connected", 6},
                                                              {"NotTap", 8},
                                                              {"NotStartedKov", 9},
                                                              {"NotStartedMirroring", 10},
                                                              {"GattDisconnected", 11},
                                                              {"something else", 3}};
    Begin(GetParam());
    for (const auto& [answer, result] : answers) {
        SCOPED_TRACE(answer);
        simulator::AddPhone(PhoneFor(GetParam(), answer));
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        ASSERT_TRUE(app.WaitForResult());
        simulator::Settle();
        EXPECT_EQ(app.results.back(), result);
    }
    EXPECT_EQ(app.results.size(), answers.size());
    EXPECT_EQ(CountLog(ERROR, "Not defined error code. Return Unknown."), 1);
}

TEST_P(FeatureService, IsReleasedInOrder)
{
    Begin(GetParam());
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    Texts calls = {"bt_product_deinit()"};
    if (IsNodLink()) {
        calls.insert(calls.end(),
                     {"bt_adapter_unset_state_changed_cb()", "device_power_unsubscribe_ambient_poweroff()",
                      "device_power_unsubscribe_poweroff_event()"});
    }
    EXPECT_EQ(simulator::JournalText(), calls);
    EXPECT_TRUE(LogsInOrder({{INFO, "In custom deleter of IService"},
                             {DEBUG, "in custom deleter of IScanner"},
                             {DEBUG, "in custom deleter of IRequester"},
                             {DEBUG, "in custom deleter of IServiceFSM"}}));
    EXPECT_EQ(CountLog(INFO, "In custom deleter of IService"), 1);
    EXPECT_EQ(CountLog(DEBUG, "in custom deleter of CDeviceStateChecekr"), IsNodLink() ? 1 : 0);
    EXPECT_EQ(simulator::Alive().registrations, 0);
    EXPECT_TRUE(app.events.empty());
}

TEST_P(FeatureService, PrintsTheLegendInTheMachinesTwoLinesOnly)
{
    simulator::AddPhone(PhoneFor(GetParam(), "Success"));
    Begin(GetParam());
    app.StartScan();
    app.Request(kPhone);
    ASSERT_TRUE(app.WaitForResult());
    SetBluetooth(BT_ADAPTER_DISABLED);
    app.Destroy();
    for (const Line& line : LogLines()) {
        if (line.message.find("0: READY") != std::string::npos) {
            EXPECT_EQ(line.file, "CServiceFSM.cpp") << line.message;
            EXPECT_TRUE(line.function == "GetCurrentState" || line.function == "TransitState") << line.function;
        }
    }
    EXPECT_EQ(CountLog(WARN, "transit to 2 from 0 (0: READY, 1: SCANNING, 2: REQUESTING, 3: NOT_READY)"), 1);
}

INSTANTIATE_TEST_SUITE_P(Each, FeatureService, ::testing::Values("mirroring", "nodlink", "kov"),
                         [](const auto& test) { return test.param; });

using NodLinkService = AppTest;

TEST_F(NodLinkService, TakesItsControlsInEveryState)
{
    simulator::AddPhone(PhoneFor("nodlink", ""));
    Begin("nodlink");
    const auto expectControls = [&] {
        nod_link_type type = 77;
        EXPECT_EQ(lyn_set_nodlink_version(app.handle, "2.0"), LYN_ERROR_NONE);
        EXPECT_EQ(lyn_set_nodlink_version(app.handle, "3.0"), LYN_ERROR_NONE);
        EXPECT_EQ(lyn_get_nodlink_type(app.handle, &type), LYN_ERROR_NONE);
        EXPECT_EQ(type, LYN_NOD_LINK_TYPE_MULTI_VIEW);
    };
    expectControls();
    app.StartScan();
    expectControls();
    app.Request(kPhone);
    expectControls();
    SetBluetooth(BT_ADAPTER_DISABLED);
    ASSERT_EQ(app.states.back(), LYN_STATE_NOT_READY);
    expectControls();
    EXPECT_TRUE(HasLogWith(INFO, "3.0"));
}

TEST_F(NodLinkService, ReleasesItsCheckerAfterTheBluetoothProduct)
{
    Begin("nodlink");
    app.Destroy();
    EXPECT_TRUE(LogsInOrder({{INFO, "In custom deleter of IService"},
                             {DEBUG, "in custom deleter of IServiceFSM"},
                             {DEBUG, "in custom deleter of CDeviceStateChecekr"}}));
    EXPECT_EQ(simulator::JournalText().front(), "bt_product_deinit()");
}

}  // namespace
}  // namespace lyn::test
