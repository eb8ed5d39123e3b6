// SPDX-License-Identifier: Apache-2.0
//
// A way to every result, state, interval and NodLink type.
#include <vector>

#include "reference/ReferenceTest.h"

namespace lyn::test {
namespace {

class Result : public ReferenceTest,
               public ::testing::WithParamInterface<std::pair<std::string, lyn_request_initiating_result_e>> {};

TEST_P(Result, OfThePhonesAnswer)
{
    AddPhone("mirroring", {GetParam().first});
    app.Create("mirroring");
    app.Request(kPhone);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.results.back(), GetParam().second);
    EXPECT_EQ(lyn_get_request_initiating_error_string(app.handle, app.results.back()), GetParam().first);
}

INSTANTIATE_TEST_SUITE_P(
    Reference, Result,
    ::testing::Values(std::pair("Success", LYN_REQUEST_INITIATING_RESULT_SUCCESS),
                      std::pair("GattFail", LYN_REQUEST_INITIATING_RESULT_GATT_FAIL),
                      std::pair("NotRegisteredDevice", LYN_REQUEST_INITIATING_RESULT_NOT_REGISTERED_DEVICE),
                      std::pair("UnknownErr", LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR),
                      std::pair("CommandErr", LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR),
                      std::pair("NotSupported", LYN_REQUEST_INITIATING_RESULT_NOT_SUPPORTED),
                      std::pair("Connected", LYN_REQUEST_INITIATING_RESULT_CONNECTED),
                      std::pair("NotTap", LYN_REQUEST_INITIATING_RESULT_NOT_TAP),
                      std::pair("NotStartedKov", LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_KOV),
                      std::pair("NotStartedMirroring", LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_MIRRORING),
                      std::pair("GattDisconnected", LYN_REQUEST_INITIATING_RESULT_GATT_DISCONNECTED)),
    [](const auto& test) { return test.param.first; });

using AnyResult = ReferenceTest;

TEST_F(AnyResult, IsUnknownErrForAnotherAnswer)
{
    AddPhone("mirroring", {"Perhaps"});
    app.Create("mirroring");
    app.Request(kPhone);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR);
}

TEST_F(AnyResult, IsGattFailForAPhoneThatIsNotThere)
{
    simulator::SetConnectDeadline(1);
    app.Create("mirroring");
    app.Request(kPhone);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(AnyResult, IsCommandErrForAJsonAnswerThatNodLinkDoesNotKnow)
{
    AddPhone("nodlink", {R"({"type":"other"})"});
    app.Create("nodlink");
    app.Request(kPhone);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR);
}

class State : public ReferenceTest {
protected:
    State() { app.Create("nodlink"); }

    lyn_state_e Last() const { return app.states.empty() ? static_cast<lyn_state_e>(-1) : app.states.back(); }
};

TEST_F(State, IsReadyWhenTheScanStops)
{
    app.StopScan();
    EXPECT_EQ(Last(), LYN_STATE_READY);
}

TEST_F(State, IsScanningWhenTheScanStarts)
{
    app.StartScan();
    EXPECT_EQ(Last(), LYN_STATE_SCANNING);
}

TEST_F(State, IsRequestingAndThenReadyForARequest)
{
    AddPhone("nodlink", {"Success"});
    app.Request(kPhone);
    EXPECT_EQ(Last(), LYN_STATE_REQUESTING);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(Last(), LYN_STATE_READY);
}

TEST_F(State, IsNotReadyWhileBluetoothIsOff)
{
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    simulator::Settle();
    EXPECT_EQ(Last(), LYN_STATE_NOT_READY);
    simulator::SetAdapterState(BT_ADAPTER_ENABLED);
    simulator::Settle();
    EXPECT_EQ(Last(), LYN_STATE_READY);
}

TEST_F(State, IsNotReadyWhenTheTvSuspends)
{
    simulator::PowerOff(0x40000000);
    simulator::Settle();
    EXPECT_EQ(Last(), LYN_STATE_NOT_READY);
}

TEST_F(State, IsNotReadyAtAmbientPowerOff)
{
    simulator::AmbientPowerOff();
    simulator::Settle();
    EXPECT_EQ(Last(), LYN_STATE_NOT_READY);
}

class Interval : public ReferenceTest, public ::testing::WithParamInterface<std::pair<lyn_adv_interval_e, int>> {};

TEST_P(Interval, IsWrittenForTheAdvertisement)
{
    app.Create("mirroring");
    ASSERT_EQ(lyn_start_advertise(app.handle, GetParam().first), LYN_ERROR_NONE);
    NoteValue("lyn_adv_interval_e", GetParam().first, "lyn_start_advertise");
    EXPECT_EQ(simulator::IntSetting("memory/org.nuvex.bleapp/mirroring_trigger"), GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Reference, Interval,
                         ::testing::Values(std::pair(LYN_ADV_INTERVAL_50, 50),
                                           std::pair(LYN_ADV_INTERVAL_100, 100),
                                           std::pair(LYN_ADV_INTERVAL_150, 150),
                                           std::pair(LYN_ADV_INTERVAL_200, 200),
                                           std::pair(LYN_ADV_INTERVAL_300, 300)),
                         [](const auto& test) { return "Of" + std::to_string(test.param.second); });

class Type : public ReferenceTest, public ::testing::WithParamInterface<std::pair<std::string, int>> {};

TEST_P(Type, OfAnApplicationThatIs)
{
    simulator::WriteFile(
        "/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json",
        R"({"screenmirroring_fullview":["ListedForFullView"],"soundmirroring":["ListedForSound"]})");
    AddPhone("nodlink", {R"({"type":"fgApp","packageName":")" + GetParam().first + "\"}", "Success"});
    app.Create("nodlink");
    app.Request(kPhone);
    ASSERT_TRUE(app.WaitForResult());
    nod_link_type type = -1;
    ASSERT_EQ(lyn_get_nodlink_type(app.handle, &type), LYN_ERROR_NONE);
    NoteValue("nod_link_type", type, "lyn_get_nodlink_type");
    EXPECT_EQ(type, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Reference, Type,
                         ::testing::Values(std::pair("NotListed", LYN_NOD_LINK_TYPE_MULTI_VIEW),
                                           std::pair("ListedForFullView", LYN_NOD_LINK_TYPE_FULL_VIEW),
                                           std::pair("ListedForSound", LYN_NOD_LINK_TYPE_SOUND)),
                         [](const auto& test) { return test.param.first; });

}  // namespace
}  // namespace lyn::test
