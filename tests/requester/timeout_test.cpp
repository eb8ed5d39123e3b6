// SPDX-License-Identifier: Apache-2.0
//
// Phones that connect and then leave the TV waiting.
#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

constexpr const char* kNoResponse = "Gatt is connected but no response from peer device";

TEST_P(FeatureRequest, EndsInGattFailWhenThePhoneNeverAnswers)
{
    PhoneAnswers({StaysSilent()});
    Ask();
    EXPECT_EQ(MessagesToPhone().size(), 1U);
    EXPECT_TRUE(app.results.empty());
    simulator::ClearJournal();
    simulator::ClearLog();
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(simulator::JournalText(), Join({BoostOff(), Disconnect(), ReleaseAfterDisconnection()}));
    EXPECT_EQ(Messages(ERROR), Texts{kNoResponse}) << "the disconnection that follows is no failure";
    EXPECT_TRUE(ArmedTimeouts().empty());
}

TEST_F(MirroringRequest, BeginsToWaitAtTheConnection)
{
    phone.connects = {{0, 20}};
    simulator::AddPhone(phone);
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(ArmedTimeouts().empty()) << "the connect has its own end";
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_F(MirroringRequest, ArmsTheTimeOutAfterTheMtuRequest)
{
    PhoneAnswers({StaysSilent()});
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    simulator::FailCall("bt_gatt_client_request_att_mtu_change", -1, 1);
    simulator::Settle();
    EXPECT_EQ(ArmedTimeouts(), std::vector<unsigned>{10}) << "and also when that has failed";
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(MirroringRequest, TimesOutWithoutAnMtuReport)
{
    phone.mtuDelayMs = 3000;
    simulator::AddPhone(phone);
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ASSERT_TRUE(RunUntilCalled("bt_gatt_client_request_att_mtu_change"));
    ASSERT_TRUE(ElapseTimeout());
    ASSERT_TRUE(simulator::RunUntil([&] { return !app.results.empty(); }));
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(MessagesToPhone(), Texts{});
}

TEST_F(MirroringRequest, TimesOutOnceOnly)
{
    PhoneAnswers({StaysSilent()});
    Ask();
    LetTimeOut();
    EXPECT_FALSE(ElapseTimeout()) << "the source is gone";
    EXPECT_EQ(CountLog(ERROR, kNoResponse), 1);
}

TEST_F(MirroringRequest, EndsTheSourceThatFires)
{
    PhoneAnswers({StaysSilent()});
    Ask();
    const SourceCallback timeout = LastTimeout();
    EXPECT_EQ(timeout.function(timeout.data), FALSE);
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(MirroringRequest, SaysAndForgetsATimeOutOfNobody)
{
    PhoneAnswers({StaysSilent()});
    Ask();
    const SourceCallback timeout = LastTimeout();
    EXPECT_EQ(timeout.function(nullptr), FALSE);
    EXPECT_TRUE(HasLog(ERROR, "data is nullptr"));
    EXPECT_FALSE(HasLog(ERROR, kNoResponse));
    simulator::Settle();
    EXPECT_TRUE(app.results.empty());
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(MirroringRequest, DoesNotListenAfterTheTimeOut)
{
    simulator::Answer late = Says("Success");
    late.delayMs = 50;
    PhoneAnswers({late});
    phone.disconnectDelayMs = 100;
    simulator::AddPhone(phone);
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ASSERT_TRUE(RunUntilCalled("bt_gatt_client_write_value"));
    ASSERT_TRUE(ElapseTimeout());
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(MirroringRequest, CanBeMadeAgainAfterATimeOut)
{
    PhoneAnswers({StaysSilent(), Says("Connected")});
    Ask();
    LetTimeOut();
    Ask();
    EXPECT_EQ(app.results,
              (std::vector{LYN_REQUEST_INITIATING_RESULT_GATT_FAIL, LYN_REQUEST_INITIATING_RESULT_CONNECTED}));
}

TEST_F(NodLinkRequest, HasOneTimeOutForBothSteps)
{
    simulator::WriteFile("/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json", "{}");
    PhoneAnswers({Says(R"({"type":"fgApp","packageName":"a"})"), StaysSilent()});
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ASSERT_TRUE(RunUntilCalled("bt_gatt_client_request_att_mtu_change"));
    const SourceCallback first = LastTimeout();
    simulator::Settle();
    EXPECT_EQ(MessagesToPhone().size(), 2U);
    EXPECT_EQ(ArmedTimeouts(), std::vector<unsigned>{10});
    EXPECT_EQ(LastTimeout().data, first.data) << "armed once";
    LetTimeOut();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

}  // namespace
}  // namespace lyn::test
