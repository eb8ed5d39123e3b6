// SPDX-License-Identifier: Apache-2.0
//
// The Wi-Fi Direct channel that a message tells the phone.
#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

constexpr unsigned kPauseUs = 200000;
constexpr const char* kRead = "vconf_get_int(\"memory/menu/network/screenmirroring/p2p_listen_channel\" -> -1)";

class ListenChannel : public MirroringRequest {
protected:
    ListenChannel() { ForgetSleeps(); }
    ~ListenChannel() override
    {
        OnSleep({});
        InterruptSleeps(0);
    }

    void ListenOnTheAccessPointsChannel(int frequency)
    {
        simulator::SetSetting(kKeyListenChannel, 99);
        simulator::SetAccessPoint(simulator::AccessPoint{"02:00:00:00:00:CC", frequency});
    }

    /// The channel of the message written last; empty without one.
    static std::string Channel()
    {
        const std::string key = "\"P2PChannel\":\"";
        const Texts messages = MessagesToPhone();
        const std::string message = messages.empty() ? "" : messages.back();
        const std::size_t start = message.find(key);
        if (start == std::string::npos) {
            return "";
        }
        return message.substr(start + key.size(), message.find('"', start + key.size()) - start - key.size());
    }
};

TEST_F(ListenChannel, IsOneOnTheSocialChannelWithoutTouchingWifi)
{
    simulator::SetSetting(kKeyListenChannel, 0);
    Ask();
    EXPECT_EQ(Channel(), "1");
    EXPECT_TRUE(Sleeps().empty());
    EXPECT_EQ(CountCalls("wifi_initialize"), 0);
    EXPECT_TRUE(LogsInOrder({{INFO, "try : 1"}, {INFO, "Listen on social channel"}}));
    EXPECT_FALSE(HasLog(INFO, "try : 2"));
}

TEST_F(ListenChannel, IsReadFiveTimesWithASleepBehindEachWhileTheListenerIsStopped)
{
    simulator::SetSetting(kKeyListenChannel, -1);
    AskFromHere();
    EXPECT_EQ(Sleeps(), (std::vector<unsigned>{kPauseUs, kPauseUs, kPauseUs, kPauseUs, kPauseUs}));
    EXPECT_TRUE(LogsInOrder({{INFO, "try : 1"},
                             {INFO, "try : 2"},
                             {INFO, "try : 3"},
                             {INFO, "try : 4"},
                             {INFO, "try : 5"},
                             {ERROR, "p2p listen is stopped"},
                             {ERROR, "exception : p2p listen is stopped"}}));
    EXPECT_FALSE(HasLog(INFO, "try : 6"));
    int reads = 0;
    for (const std::string& call : Calls("vconf_get_int")) {
        reads += call == kRead ? 1 : 0;
    }
    EXPECT_EQ(reads, 5);
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_EQ(CountCalls("wifi_initialize"), 0);
}

TEST_F(ListenChannel, IsWaitedForToTheEndWhenSignalsCutTheSleepShort)
{
    simulator::SetSetting(kKeyListenChannel, -1);
    constexpr std::size_t interruptions = 3;
    InterruptSleeps(interruptions);
    OnSleep([] {
        if (Sleeps().size() == interruptions + 1) {
            simulator::SetSetting(kKeyListenChannel, 0);
        }
    });
    Ask();
    EXPECT_EQ(Channel(), "1");
    EXPECT_TRUE(HasLog(INFO, "try : 2"));
    EXPECT_FALSE(HasLog(INFO, "try : 3"));
    ASSERT_EQ(Sleeps().size(), interruptions + 1) << "all of them in one pause";
    for (std::size_t i = 1; i <= interruptions; ++i) {
        EXPECT_LE(Sleeps()[i], Sleeps()[i - 1]) << "the rest";
        EXPECT_GT(Sleeps()[i], 0U);
    }
}

TEST_F(ListenChannel, IsSpokenOfInTheNameOfOneFunction)
{
    const std::set<std::string> itself = {"GetP2PListenChannel"};
    simulator::SetSetting(kKeyListenChannel, -1);
    Ask();
    EXPECT_EQ(FunctionsThatSay("try : "), itself);
    simulator::SetSetting(kKeyListenChannel, 0);
    Ask();
    EXPECT_EQ(FunctionsThatSay("Listen on social channel"), itself);
    simulator::SetSetting(kKeyListenChannel, 99);
    simulator::SetAccessPoint(std::nullopt);
    Ask();
    EXPECT_EQ(FunctionsThatSay("Not connected ap, listen channel is 1"), itself);
}

TEST_F(ListenChannel, IsTakenAsSoonAsTheListenerIsUp)
{
    for (std::size_t sleeps = 1; sleeps <= 4; ++sleeps) {
        SCOPED_TRACE(sleeps);
        ForgetSleeps();
        simulator::SetSetting(kKeyListenChannel, -1);
        OnSleep([sleeps] {
            if (Sleeps().size() == sleeps) {
                simulator::SetSetting(kKeyListenChannel, 0);
            }
        });
        AskFromHere();
        EXPECT_EQ(app.results.back(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
        EXPECT_EQ(Sleeps().size(), sleeps);
        EXPECT_TRUE(HasLog(INFO, "try : " + std::to_string(sleeps + 1)));
        EXPECT_FALSE(HasLog(INFO, "try : " + std::to_string(sleeps + 2)));
    }
}

TEST_F(ListenChannel, ComesTooLateInTheFifthSleep)
{
    simulator::SetSetting(kKeyListenChannel, -1);
    OnSleep([] {
        if (Sleeps().size() == 5) {
            simulator::SetSetting(kKeyListenChannel, 0);
        }
    });
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_TRUE(HasLog(ERROR, "exception : p2p listen is stopped"));
}

TEST_F(ListenChannel, IsNotReadAgainAfterAFailedRead)
{
    simulator::SetSetting(kKeyListenChannel, -1);
    OnSleep([] { simulator::RemoveSetting(kKeyListenChannel); });
    Ask();
    EXPECT_EQ(Sleeps().size(), 1U);
    EXPECT_TRUE(HasLog(INFO, "try : 2"));
    EXPECT_FALSE(HasLog(INFO, "try : 3"));
    EXPECT_TRUE(HasLog(ERROR, "exception : fail to get memory/menu/network/screenmirroring/p2p_listen_channel"));
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
}

TEST_F(ListenChannel, IsThatOfTheConnectedAccessPoint)
{
    ListenOnTheAccessPointsChannel(2437);
    AskFromHere();
    EXPECT_EQ(Channel(), "6");
    EXPECT_EQ(Calls("wifi_"),
              (Texts{"wifi_direct_initialize()", "wifi_direct_get_mac_address(-> \"02:00:00:00:00:BB\")",
                     "wifi_direct_deinitialize()", "wifi_initialize()", "wifi_get_connected_ap()",
                     "wifi_ap_get_bssid(-> \"02:00:00:00:00:CC\")", "wifi_ap_get_frequency(-> 2437)",
                     "wifi_deinitialize()"}));
    EXPECT_EQ(simulator::Alive().wifiInits, 0);
}

TEST_F(ListenChannel, FollowsTheFrequency)
{
    struct Case {
        int frequency;
        const char* channel;
    };
    const std::vector<Case> cases = {
        {2412, "1"},  {2413, "1"},  {2416, "1"},  {2417, "2"},   {2437, "6"},   {2462, "11"},  {2467, "12"},
        {2471, "12"}, {2472, "13"}, {2473, "-1"}, {2480, "-1"},  {2483, "-1"},  {2484, "14"},  {5170, "34"},
        {5174, "34"}, {5175, "35"}, {5180, "36"}, {5500, "100"}, {5745, "149"}, {5824, "164"}, {5825, "165"},
    };
    for (const Case& tested : cases) {
        SCOPED_TRACE(tested.frequency);
        ListenOnTheAccessPointsChannel(tested.frequency);
        Ask();
        EXPECT_EQ(Channel(), tested.channel);
    }
    EXPECT_EQ(MessagesToPhone().size(), cases.size());
}

TEST_F(ListenChannel, HasNoFrequencyElsewhere)
{
    for (const int frequency : {-1, 0, 2407, 2411, 2485, 3000, 5169, 5826, 5955, 2147483647}) {
        SCOPED_TRACE(frequency);
        ListenOnTheAccessPointsChannel(frequency);
        app.results.clear();
        AskFromHere();
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        EXPECT_EQ(Messages(ERROR), (Texts{"wrong frequency range", "exception : wrong frequency range"}));
        EXPECT_EQ(CountCalls("wifi_deinitialize"), 1);
    }
    EXPECT_EQ(MessagesToPhone(), Texts{});
}

TEST_F(ListenChannel, IsOneWithoutAnAccessPointAndWifiStaysOpen)
{
    simulator::SetSetting(kKeyListenChannel, 99);
    simulator::SetAccessPoint(std::nullopt);
    AskFromHere();
    EXPECT_EQ(Channel(), "1");
    EXPECT_TRUE(HasLog(INFO, "Not connected ap, listen channel is 1"));
    EXPECT_EQ(CountCalls("wifi_get_connected_ap"), 1);
    EXPECT_EQ(CountCalls("wifi_ap_get_bssid"), 0);
    EXPECT_EQ(CountCalls("wifi_deinitialize"), 0);
    EXPECT_EQ(simulator::Alive().wifiInits, 1);
}

TEST_F(ListenChannel, IsOneWhateverTheReasonForTheMissingAccessPoint)
{
    ListenOnTheAccessPointsChannel(2437);
    simulator::FailCall("wifi_get_connected_ap", -9, 1);
    Ask();
    EXPECT_EQ(Channel(), "1");
    EXPECT_EQ(CountCalls("wifi_deinitialize"), 0);
}

TEST_F(ListenChannel, IsReadWhenWifiIsOpenAlready)
{
    simulator::SetSetting(kKeyListenChannel, 99);
    Ask();  // Leaves Wi-Fi open.
    ASSERT_EQ(simulator::Alive().wifiInits, 1);
    ListenOnTheAccessPointsChannel(5180);
    AskFromHere();
    ASSERT_EQ(CountCalls("wifi_initialize"), 1);
    for (const simulator::Call& call : simulator::Journal()) {
        if (call.function == "wifi_initialize") {
            EXPECT_EQ(call.result, -38);
        }
    }
    EXPECT_EQ(Channel(), "36");
    EXPECT_EQ(CountCalls("wifi_deinitialize"), 1);
    EXPECT_EQ(simulator::Alive().wifiInits, 0);
    EXPECT_EQ(Messages(ERROR), Texts{});
}

TEST_F(ListenChannel, NeedsTheBssidEvenThoughItSaysNothing)
{
    ListenOnTheAccessPointsChannel(2437);
    simulator::SetAccessPoint(simulator::AccessPoint{"", 2437});
    Ask();
    EXPECT_EQ(Channel(), "6") << "an empty text is one";
}

}  // namespace
}  // namespace lyn::test
