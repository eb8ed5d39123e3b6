// SPDX-License-Identifier: Apache-2.0
//
// Whole exchanges: every platform call in its order, the message on the air, the lines of the log.
#include <algorithm>

#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

const std::string kMirroringMessage =
    R"({"P2PChannel":"1","P2PMac":"02:00:00:00:00:BB","deviceIcon":"3","deviceType":"12",)"
    R"("displayName":"Salon","type":"mirroring"})";
const std::string kKovMessage =
    R"({"P2PChannel":"1","P2PMac":"02:00:00:00:00:BB","deviceIcon":"3","deviceType":"12",)"
    R"("displayName":"Salon","type":"kov"})";
const std::string kNodLinkMessage =
    R"({"BtMac":"02:00:00:00:00:AA","P2PChannel":"1","P2PMac":"02:00:00:00:00:BB","deviceIcon":"3",)"
    R"("deviceType":"12","displayName":"Salon","type":"nodLink"})";

const Texts kStopScan = {"bt_adapter_le_stop_scan()"};
const Texts kReadP2PMac = {"wifi_direct_initialize()", "wifi_direct_get_mac_address(-> \"02:00:00:00:00:BB\")",
                           "wifi_direct_deinitialize()"};
const Texts kReadBtMac = {"bt_adapter_get_address(-> \"02:00:00:00:00:AA\")"};
const Texts kReadChannel = {"vconf_get_int(\"memory/menu/network/screenmirroring/p2p_listen_channel\" -> 0)"};
const Texts kReadName = {"vconf_get_str(\"db/menu/network/devicename/tv_name\" -> \"Salon\")"};
const Texts kReadTypeAndIcon = {
    "system_info_get_custom_int(\"com.calyxon/featureconf/devicename.device_type_index\" -> 12)",
    "system_info_get_custom_int(\"com.calyxon/featureconf/devicename.icon_index\" -> 3)"};
const Texts kUnsetMtu = {"bt_gatt_client_unset_att_mtu_changed_cb()"};

Texts WithoutSystemInfo(Texts calls)
{
    std::erase_if(calls, [](const std::string& call) { return call.rfind("system_info", 0) == 0; });
    return calls;
}

TEST_F(MirroringRequest, MakesThesePlatformCallsInThisOrder)
{
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    const Texts openAppIdFile = {"platform_file_path(\"/opt/etc/.lyn_appid\" -> \"" + simulator::FilePrefix() +
                                 "/opt/etc/.lyn_appid\")"};
    EXPECT_EQ(simulator::JournalText(),
              Join({kStopScan, BoostOn(), Connect(), SetUpLink(), kReadP2PMac, kReadChannel, kReadName,
                    kReadTypeAndIcon, openAppIdFile, Write(kMirroringMessage), kUnsetMtu, Disconnect(), BoostOff(),
                    ReleaseAfterDisconnection()}));
}

TEST_F(KovRequest, MakesThesePlatformCallsInThisOrder)
{
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(simulator::JournalText(), Join({kStopScan, BoostOn(), Connect(), SetUpLink(), kReadP2PMac,
                                              kReadChannel, kReadName, kReadTypeAndIcon, Write(kKovMessage),
                                              kUnsetMtu, Disconnect(), BoostOff(), ReleaseAfterDisconnection()}));
}

TEST_F(NodLinkRequest, MakesThesePlatformCallsInThisOrder)
{
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(WithoutSystemInfo(simulator::JournalText()),
              Join({kStopScan,
                    BoostOn(),
                    Connect(),
                    SetUpLink(),
                    kReadP2PMac,
                    kReadBtMac,
                    kReadChannel,
                    kReadName,
                    Write(kNodLinkMessage),
                    kUnsetMtu,
                    BoostOff(),
                    {"vconf_set_int(\"memory/lyn/nodlink/mirroring_mode\", 0)"},
                    Disconnect(),
                    ReleaseAfterDisconnection()}));
}

TEST_F(NodLinkRequest, DisconnectsOnlyAfterAnyOtherResult)
{
    PhoneAnswers({Says("NotTap")});
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_NOT_TAP);
    const Texts calls = simulator::JournalText();
    const Texts end = Join({kUnsetMtu, BoostOff(), Disconnect(), ReleaseAfterDisconnection()});
    ASSERT_GE(calls.size(), end.size());
    EXPECT_EQ(Texts(calls.end() - static_cast<std::ptrdiff_t>(end.size()), calls.end()), end);
}

TEST_P(FeatureRequest, WritesOneMessageOnly)
{
    Ask();
    ASSERT_EQ(MessagesToPhone().size(), 1U);
    EXPECT_NE(MessagesToPhone()[0].find(std::string("\"type\":\"") + feature.type + "\""), std::string::npos);
}

TEST_P(FeatureRequest, ArmsTenSecondsAtTheConnectionAndDisarmsThemAtTheAnswer)
{
    phone.mtuDelayMs = 20;
    simulator::AddPhone(phone);
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(ArmedTimeouts().empty());
    ASSERT_TRUE(RunUntilCalled("bt_gatt_client_request_att_mtu_change"));
    EXPECT_EQ(ArmedTimeouts(), std::vector<unsigned>{10});
    simulator::Settle();
    EXPECT_TRUE(ArmedTimeouts().empty());
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
}

TEST_P(FeatureRequest, LeavesNothingBehind)
{
    Ask();
    const simulator::Counts alive = simulator::Alive();
    EXPECT_EQ(alive.clients, 0);
    EXPECT_EQ(alive.links, 0);
    EXPECT_EQ(alive.wifiDirectInits, 0);
    EXPECT_FALSE(alive.boosted);
    EXPECT_EQ(simulator::ConnectionRegistration().callback, nullptr);
}

TEST_P(FeatureRequest, ReportsReadyBeforeTheResult)
{
    app.events.clear();
    Ask();
    EXPECT_EQ(app.events, (Texts{"state 0", "state 2", "state 0", "result 0"}));
}

TEST_P(FeatureRequest, NeverAsksTheSameLinkTwice)
{
    for (int round = 1; round <= 3; ++round) {
        Ask();
        EXPECT_EQ(app.results.size(), static_cast<std::size_t>(round));
        EXPECT_EQ(MessagesToPhone().size(), static_cast<std::size_t>(round));
        EXPECT_EQ(simulator::Alive().clients, 0);
    }
    EXPECT_EQ(CountCalls("bt_gatt_connect"), 3);
    EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 3);
}

TEST_P(FeatureRequest, GoesOnWhenTheBoostIsRefused)
{
    simulator::FailCall("bt_adapter_le_enable_le_scan_performance_boost", -7, 1);
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_TRUE(HasLog(ERROR, "ERROR: bt_adapter_le_enable_le_scan_performance_boost ret -7"));
    EXPECT_EQ(CountCalls("bt_adapter_le_enable_le_scan_performance_boost"), 1) << "it is off already";
}

TEST_F(MirroringRequest, SaysWhatItDoes)
{
    simulator::ClearLog();
    Ask(R"({"a":1})");
    EXPECT_TRUE(LogsInOrder({
        {INFO, R"(device address : AA:BB:CC:DD:EE:01, extra data : {"a":1})"},
        {INFO, "bt_adapter_le_enable_le_scan_performance_boost : 1"},
        {INFO, "AA:BB:CC:DD:EE:01 is connected"},
        {INFO, "register characteristic for 9be85432-b1db-416c-9e1c-d6d381305337"},
        {DEBUG, "uuid : 9be85432-b1db-416c-9e1c-d6d381305337"},
        {INFO, "forward callback to user"},
        {INFO, R"(extra data : {"a":1})"},
        {INFO, "try : 1"},
        {INFO, "Listen on social channel"},
        {INFO, "key : com.calyxon/featureconf/devicename.device_type_index, value : 12"},
        {INFO, "key : com.calyxon/featureconf/devicename.icon_index, value : 3"},
        {INFO, R"(data : {"P2PChannel":"1","P2PMac":"02:00:00:00:00:BB","a":1,"deviceIcon":"3",)"
               R"("deviceType":"12","displayName":"Salon","type":"mirroring"})"},
        {INFO, "result : 0"},
        {INFO, "value : Success, len : 7"},
        {INFO, "data : Success"},
        {INFO, "bt_adapter_le_enable_le_scan_performance_boost : 0"},
        {INFO, "AA:BB:CC:DD:EE:01 is disconnected"},
        {INFO, "forward callback to user"},
        {INFO, "disconnected gatt [AA:BB:CC:DD:EE:01]"},
        {INFO, "in custom deleter of m_GattClient"},
    }));
    EXPECT_EQ(Messages(ERROR), Texts{}) << "nothing has failed";
}

TEST_F(KovRequest, SaysItsMessage)
{
    Ask();
    EXPECT_TRUE(HasLog(INFO, "data : " + kKovMessage));
    EXPECT_EQ(Messages(ERROR), Texts{});
}

TEST_F(NodLinkRequest, SaysItsMessageAndResult)
{
    Ask();
    EXPECT_TRUE(LogsInOrder({{INFO, "<Not Error> data : " + kNodLinkMessage},
                             {INFO, "data : Success"},
                             {INFO, "screen mirroring mode : 0"}}));
    // That the answer is no JSON is said, and is no failure.
    ASSERT_EQ(Messages(ERROR).size(), 1U);
    EXPECT_TRUE(HasLogWith(ERROR, "Syntax error"));
}

TEST_F(MirroringRequest, LogsUnderTheFileAndFunctionThatSpeak)
{
    Ask();
    const std::vector<Line> lines = LogLines();
    const auto found = std::find_if(lines.begin(), lines.end(),
                                    [](const Line& line) { return line.message == "data : Success"; });
    ASSERT_NE(found, lines.end());
    EXPECT_EQ(found->file, "CRequester.cpp");
    EXPECT_EQ(found->function, "OnCharateristicValueChangedCb");
}

TEST_F(MirroringRequest, TakesThePhonesAddressAsItIsGiven)
{
    simulator::RemovePhone(kPhone);
    phone.address = kOtherPhone;
    simulator::AddPhone(phone);
    ASSERT_EQ(app.Request(kOtherPhone), LYN_ERROR_NONE);
    simulator::Settle();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(Calls("bt_gatt_connect"), Texts{"bt_gatt_connect(\"AA:BB:CC:DD:EE:02\", false)"});
    EXPECT_EQ(Calls("bt_gatt_disconnect"), Texts{"bt_gatt_disconnect(\"AA:BB:CC:DD:EE:02\")"});
}

TEST_F(MirroringRequest, UsesWhateverMtuThePhoneGrants)
{
    for (const unsigned mtu : {23U, 185U, 256U, 517U}) {
        phone.maxMtu = mtu;
        simulator::AddPhone(phone);
        Ask();
        EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_SUCCESS) << mtu;
    }
    phone.mtuStatus = 5;
    simulator::AddPhone(phone);
    Ask();
    EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_SUCCESS) << "a failed MTU change is no failure";
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Features, FeatureRequest, ::testing::Values(kMirroring, kNodLink, kKov),
                         [](const auto& tested) { return std::string(tested.param.service); });

}  // namespace lyn::test
