// SPDX-License-Identifier: Apache-2.0
//
// One platform call fails at a time: what is said, what the application is told, and when.
#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

constexpr int kFailure = -77;

struct FailingStep {
    const char* name;
    const char* function;
    bool endsAtOnce;  ///< else by the time-out
    Texts errors;     ///< up to there
};

const std::string kUuid = kMirroring.characteristicUuid;
const std::string kMirroringMessage =
    R"({"P2PChannel":"1","P2PMac":"02:00:00:00:00:BB","deviceIcon":"3","deviceType":"12",)"
    R"("displayName":"Salon","type":"mirroring"})";

class FailingLinkCall : public MirroringRequest, public ::testing::WithParamInterface<FailingStep> {};

TEST_P(FailingLinkCall, EndsInGattFail)
{
    const FailingStep& step = GetParam();
    simulator::FailCall(step.function, kFailure, 1);
    AskFromHere();
    EXPECT_EQ(Messages(ERROR), step.errors);
    EXPECT_EQ(MessagesToPhone(), Texts{});
    if (step.endsAtOnce) {
        EXPECT_TRUE(ArmedTimeouts().empty());
    } else {
        EXPECT_TRUE(app.results.empty());
        simulator::ClearLog();
        LetTimeOut();
        EXPECT_EQ(Messages(ERROR), Texts{"Gatt is connected but no response from peer device"});
    }
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 1);
    const simulator::Counts alive = simulator::Alive();
    EXPECT_EQ(alive.clients, 0);
    EXPECT_EQ(alive.links, 0);
    EXPECT_EQ(alive.registrations, 0);
    EXPECT_FALSE(alive.boosted);
}

TEST_P(FailingLinkCall, DoesNotHurtTheNextRequest)
{
    simulator::FailCall(GetParam().function, kFailure, 1);
    Ask();
    if (!GetParam().endsAtOnce) {
        LetTimeOut();
    }
    Ask();
    ASSERT_EQ(app.results.size(), 2U);
    EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

INSTANTIATE_TEST_SUITE_P(
    Steps, FailingLinkCall,
    ::testing::Values(
        FailingStep{
            "ClientCreation",
            "bt_gatt_client_create",
            false,
            {"fail to bt_gatt_client_create", "client handle is nullptr", "fail to request set mtu as 256."}},
        FailingStep{"ServiceLookUp",
                    "bt_gatt_client_get_service",
                    true,
                    {std::string("fail to bt_gatt_client_get_service for ") + kMirroring.serviceUuid,
                     "fail to register gatt service", std::string("No service for ") + kMirroring.serviceUuid,
                     "exception : No Service"}},
        FailingStep{"CharacteristicLookUp",
                    "bt_gatt_service_get_characteristic",
                    true,
                    {"Failt to get chr handle", "no charateristic for " + kUuid,
                     "exception : Invalid Parameter exception"}},
        FailingStep{"Notifications",
                    "bt_gatt_client_set_characteristic_value_changed_cb",
                    true,
                    {"fail to bt_gatt_client_set_characteristic_value_changed_cb", "no charateristic for " + kUuid,
                     "exception : Invalid Parameter exception"}},
        FailingStep{"MtuRegistration", "bt_gatt_client_set_att_mtu_changed_cb", false, {}},
        FailingStep{"MtuRequest", "bt_gatt_client_request_att_mtu_change", false, {}},
        FailingStep{"SettingOfTheValue",
                    "bt_gatt_set_value",
                    false,
                    {"fail to bt_gatt_set_value(" + kMirroringMessage + ")"}},
        FailingStep{"Write", "bt_gatt_client_write_value", false, {"fail to bt_gatt_client_write_value"}}),
    [](const auto& tested) { return std::string(tested.param.name); });

/// Calls that end something: their failure is nobody's business.
class FailingEnd : public MirroringRequest, public ::testing::WithParamInterface<const char*> {};

TEST_P(FailingEnd, ChangesNoResult)
{
    simulator::FailCall(GetParam(), kFailure, 0);
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(Messages(ERROR), Texts{});
    simulator::ClearFaults();
    app.Destroy();
    simulator::Reset();
}

INSTANTIATE_TEST_SUITE_P(Calls, FailingEnd,
                         ::testing::Values("bt_gatt_client_unset_att_mtu_changed_cb",
                                           "bt_gatt_client_unset_characteristic_value_changed_cb",
                                           "bt_gatt_client_destroy", "bt_gatt_disconnect",
                                           "bt_gatt_unset_connection_state_changed_cb",
                                           "wifi_direct_deinitialize"));

TEST_F(MirroringRequest, EndsAtOnceWhenThePhoneRefusesTheWrite)
{
    for (const int code : {1, -5, 133, kReportedAsSuccess}) {
        SCOPED_TRACE(code);
        PhoneAnswers({RefusesWrite(code)});
        app.results.clear();
        AskFromHere();
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        EXPECT_TRUE(ArmedTimeouts().empty());
        EXPECT_EQ(CountLog(INFO, "result : " + std::to_string(code)), 2) << "the characteristic and the requester";
        EXPECT_EQ(Messages(ERROR), Texts{});
    }
}

TEST_F(MirroringRequest, DisconnectsBeforeItTellsOfARefusedWrite)
{
    PhoneAnswers({RefusesWrite(5)});
    AskFromHere();
    const Texts calls = simulator::JournalText();
    const Texts end = Join({Disconnect(), BoostOff(), ReleaseAfterDisconnection()});
    ASSERT_GE(calls.size(), end.size());
    EXPECT_EQ(Texts(calls.end() - static_cast<std::ptrdiff_t>(end.size()), calls.end()), end);
}

TEST_F(MirroringRequest, DisconnectsAfterItTellsOfAMessageThatCouldNotBeBuilt)
{
    simulator::RemoveSetting(kKeyTvName);
    AskFromHere();
    const Texts calls = simulator::JournalText();
    const Texts end = Join({BoostOff(), Disconnect(), ReleaseAfterDisconnection()});
    ASSERT_GE(calls.size(), end.size());
    EXPECT_EQ(Texts(calls.end() - static_cast<std::ptrdiff_t>(end.size()), calls.end()), end);
    EXPECT_EQ(CountCalls("bt_gatt_client_unset_att_mtu_changed_cb"), 0) << "its client is gone by then";
}

TEST_F(MirroringRequest, EndsWhenThePhoneLacksTheService)
{
    phone.services.clear();
    simulator::AddPhone(phone);
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_TRUE(HasLog(ERROR, "exception : No Service"));
}

TEST_F(MirroringRequest, EndsWhenThePhoneLacksTheCharacteristic)
{
    phone.services[0].characteristics[0].uuid = kKov.characteristicUuid;
    simulator::AddPhone(phone);
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(Messages(ERROR), (Texts{"Failt to get chr handle", "no charateristic for " + kUuid,
                                      "exception : Invalid Parameter exception"}));
}

TEST_F(MirroringRequest, EndsWhenTheCharacteristicDoesNotNotify)
{
    phone.services[0].characteristics[0].notifies = false;
    simulator::AddPhone(phone);
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(MirroringRequest, WaitsInVainWhenTheCharacteristicCannotBeWritten)
{
    phone.services[0].characteristics[0].writable = false;
    simulator::AddPhone(phone);
    Ask();
    EXPECT_TRUE(app.results.empty());
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(MirroringRequest, WaitsInVainWhenTheMessageIsLongerThanAWrite)
{
    Ask("{\"text\":\"" + std::string(600, 'x') + "\"}");
    EXPECT_TRUE(HasLogWith(ERROR, "fail to bt_gatt_set_value({"));
    EXPECT_TRUE(app.results.empty());
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(MessagesToPhone(), Texts{});
}

/// Whichever call fails, the request either is refused or has its one result.
TEST_P(FeatureRequest, ComesToAnEndWhicheverCallFails)
{
    Ask();
    const int calls = static_cast<int>(simulator::Journal().size());
    for (int nth = 1; nth <= calls; ++nth) {
        SCOPED_TRACE(nth);
        app.results.clear();
        simulator::ClearFaults();
        simulator::FailAnyCall(kFailure, nth);
        const lyn_error_e asked = app.Request(kPhone);
        simulator::Settle();
        if (asked == LYN_ERROR_NONE && app.results.empty()) {
            LetTimeOut();
        }
        simulator::ClearFaults();
        EXPECT_EQ(app.results.size(), asked == LYN_ERROR_NONE ? 1U : 0U);
        EXPECT_TRUE(ArmedTimeouts().empty());
        EXPECT_EQ(app.states.back(), LYN_STATE_READY);
    }
    app.Destroy();
    simulator::Reset();  // What a failed release has left.
}

}  // namespace
}  // namespace lyn::test
