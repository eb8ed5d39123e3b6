// SPDX-License-Identifier: Apache-2.0
//
// The values that messages are made of: where they are read, and what becomes of a request without them.
#include <algorithm>
#include <functional>
#include <map>

#include "requester/RequestTest.h"

namespace lyn::test {
namespace {

constexpr int kFailure = -77;
constexpr int kConnectedAp = 99;

struct MissingValue {
    const char* name;
    std::function<void()> arrange;
    std::string error;
    Texts wifiCalls;  ///< of Wi-Fi and Wi-Fi Direct
};

const Texts kWifiDirect = {"wifi_direct_initialize()", "wifi_direct_get_mac_address(-> \"02:00:00:00:00:BB\")",
                           "wifi_direct_deinitialize()"};
constexpr const char* kGetBssid = "wifi_ap_get_bssid(-> \"02:00:00:00:00:CC\")";

void ListenOnTheAccessPointsChannel(int frequency)
{
    simulator::SetSetting(kKeyListenChannel, kConnectedAp);
    simulator::SetAccessPoint(simulator::AccessPoint{"02:00:00:00:00:CC", frequency});
}

void Fail(const char* function, int nth = 1)
{
    simulator::FailCall(function, kFailure, nth);
}

/// Values of all features.
const std::vector<MissingValue>& MissingValues()
{
    static const std::vector<MissingValue> values = {
        {"TvNameAbsent", [] { simulator::RemoveSetting(kKeyTvName); }, "Fail to get tv name", kWifiDirect},
        {"TvNameIsANumber", [] { simulator::SetSetting(kKeyTvName, 5); }, "Fail to get tv name", kWifiDirect},
        {"TvNameNull", [] { simulator::NullText("vconf_get_str"); }, "Fail to get tv name", kWifiDirect},
        {"DeviceTypeAbsent", [] { simulator::SetSystemInfo(kDeviceType, std::nullopt); }, "Fail to get fms key",
         kWifiDirect},
        {"DeviceIconAbsent", [] { simulator::SetSystemInfo(kDeviceIcon, std::nullopt); }, "Fail to get fms key",
         kWifiDirect},
        {"WifiDirectRefused",
         [] { Fail("wifi_direct_initialize"); },
         "Fail to wifi_direct_initialize",
         {"wifi_direct_initialize()"}},
        {"P2PMacRefused",
         [] { Fail("wifi_direct_get_mac_address"); },
         "Fail to wifi_direct_get_mac_address",
         {"wifi_direct_initialize()", "wifi_direct_get_mac_address()", "wifi_direct_deinitialize()"}},
        {"P2PMacNull",
         [] { simulator::SetWifiDirectAddress(std::nullopt); },
         "p2p_addr is nullptr",
         {"wifi_direct_initialize()", "wifi_direct_get_mac_address(-> null)", "wifi_direct_deinitialize()"}},
        {"ListenChannelAbsent", [] { simulator::RemoveSetting(kKeyListenChannel); },
         "fail to get memory/menu/network/screenmirroring/p2p_listen_channel", kWifiDirect},
        {"ListenChannelUnknown", [] { simulator::SetSetting(kKeyListenChannel, 6); },
         "p2p_listen_channel is unknown", kWifiDirect},
        {"ListenChannelNegative", [] { simulator::SetSetting(kKeyListenChannel, -2); },
         "p2p_listen_channel is unknown", kWifiDirect},
        {"ListenChannelAlmostSocial", [] { simulator::SetSetting(kKeyListenChannel, 1); },
         "p2p_listen_channel is unknown", kWifiDirect},
        {"ListenChannelAlmostTheAccessPoints", [] { simulator::SetSetting(kKeyListenChannel, 98); },
         "p2p_listen_channel is unknown", kWifiDirect},
        {"ListenStopped", [] { simulator::SetSetting(kKeyListenChannel, -1); }, "p2p listen is stopped",
         kWifiDirect},
        {"WifiRefused",
         [] {
             ListenOnTheAccessPointsChannel(2437);
             Fail("wifi_initialize");
         },
         "Fail to init wifi", Join({kWifiDirect, {"wifi_initialize()"}})},
        {"BssidRefused",
         [] {
             ListenOnTheAccessPointsChannel(2437);
             Fail("wifi_ap_get_bssid");
         },
         "Fail to get bssid of connected ap",
         Join({kWifiDirect,
               {"wifi_initialize()", "wifi_get_connected_ap()", "wifi_ap_get_bssid()", "wifi_deinitialize()"}})},
        {"BssidNull",
         [] {
             ListenOnTheAccessPointsChannel(2437);
             simulator::SetAccessPoint(simulator::AccessPoint{std::nullopt, 2437});
         },
         "bssid is null",
         Join({kWifiDirect,
               {"wifi_initialize()", "wifi_get_connected_ap()", "wifi_ap_get_bssid(-> null)",
                "wifi_deinitialize()"}})},
        {"FrequencyRefused",
         [] {
             ListenOnTheAccessPointsChannel(2437);
             Fail("wifi_ap_get_frequency");
         },
         "fail to get frequency",
         Join({kWifiDirect,
               {"wifi_initialize()", "wifi_get_connected_ap()", kGetBssid, "wifi_ap_get_frequency()",
                "wifi_deinitialize()"}})},
        {"FrequencyWrong", [] { ListenOnTheAccessPointsChannel(3000); }, "wrong frequency range",
         Join({kWifiDirect,
               {"wifi_initialize()", "wifi_get_connected_ap()", kGetBssid, "wifi_ap_get_frequency(-> 3000)",
                "wifi_deinitialize()"}})},
    };
    return values;
}

/// The function that finds that the value is missing.
std::string Finder(const MissingValue& value)
{
    static const std::map<std::string, std::string> finders = {
        {"Fail to get tv name", "GetTvName"},
        {"Fail to get fms key", "GetIntFmsValue"},
        {"Fail to wifi_direct_initialize", "GetP2PMac"},
        {"Fail to wifi_direct_get_mac_address", "GetP2PMac"},
        {"p2p_addr is nullptr", "GetP2PMac"},
        {"wrong frequency range", "ConvertFreqToChannerl"},
    };
    const auto finder = finders.find(value.error);
    return finder != finders.end() ? finder->second : "GetP2PListenChannel";
}

class WithoutAValue : public MirroringRequest, public ::testing::WithParamInterface<MissingValue> {};

TEST_P(WithoutAValue, EndsInGattFailAtOnce)
{
    GetParam().arrange();
    AskFromHere();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
    EXPECT_TRUE(ArmedTimeouts().empty());
    EXPECT_EQ(MessagesToPhone(), Texts{});
    EXPECT_EQ(Calls("wifi_"), GetParam().wifiCalls);
    EXPECT_TRUE(LogsInOrder({{ERROR, GetParam().error}, {ERROR, "exception : " + GetParam().error}}));
    EXPECT_EQ(Messages(ERROR).size(), 2U) << "said where it is found, and where the request ends";
    EXPECT_EQ(FunctionsThatSay(GetParam().error), (std::set<std::string>{Finder(GetParam()), "OnMtuChanged"}));
    EXPECT_EQ(simulator::Alive().wifiInits, 0);
    EXPECT_EQ(simulator::Alive().wifiDirectInits, 0);
}

INSTANTIATE_TEST_SUITE_P(Values, WithoutAValue, ::testing::ValuesIn(MissingValues()),
                         [](const auto& tested) { return std::string(tested.param.name); });

TEST_P(FeatureRequest, EndsInGattFailAtOnceWithoutAnyOfItsValues)
{
    for (const MissingValue& value : MissingValues()) {
        SCOPED_TRACE(value.name);
        SetUpTv();
        simulator::ClearFaults();
        value.arrange();
        app.results.clear();
        AskFromHere();
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        EXPECT_TRUE(HasLog(ERROR, "exception : " + value.error));
    }
    EXPECT_EQ(MessagesToPhone(), Texts{});
}

TEST_P(FeatureRequest, ReadsEachValueOnceInTheOrderOfItsMessage)
{
    AskFromHere();
    Texts reads;
    for (const std::string& call : simulator::JournalText()) {
        const std::string function = call.substr(0, call.find('('));
        for (const char* prefix : {"wifi_direct_get", "bt_adapter_get_address", "vconf_get_", "system_info_"}) {
            if (function.rfind(prefix, 0) == 0 && call.find("memory/wifi") == call.npos &&
                call.find("memory/acm") == call.npos) {
                reads.push_back(call);
            }
        }
    }
    const Texts btAddress = {R"(bt_adapter_get_address(-> "02:00:00:00:00:AA"))"};
    EXPECT_EQ(reads, Join({{R"(wifi_direct_get_mac_address(-> "02:00:00:00:00:BB"))"},
                           std::string(feature.service) == "nodlink" ? btAddress : Texts{},
                           {"vconf_get_int(\"" + std::string(kKeyListenChannel) + "\" -> 0)",
                            "vconf_get_str(\"" + std::string(kKeyTvName) + "\" -> \"Salon\")",
                            "system_info_get_custom_int(\"" + std::string(kDeviceType) + "\" -> 12)",
                            "system_info_get_custom_int(\"" + std::string(kDeviceIcon) + "\" -> 3)"}}));
}

TEST_F(NodLinkRequest, EndsInGattFailAtOnceWithoutTheBluetoothAddress)
{
    const std::vector<std::function<void()>> ways = {
        [] { Fail("bt_adapter_get_address"); },
        [] { simulator::NullText("bt_adapter_get_address"); },
        [] { simulator::SetAdapterAddress(std::nullopt); },
    };
    for (const auto& arrange : ways) {
        arrange();
        app.results.clear();
        AskFromHere();
        EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        EXPECT_EQ(Messages(ERROR), (Texts{"btAddress is nullptr", "exception : btAddress is nullptr"}));
        EXPECT_EQ(FunctionsThatSay("btAddress is nullptr"),
                  (std::set<std::string>{"GetBtAddress", "OnMtuChanged"}));
    }
    EXPECT_EQ(MessagesToPhone(), Texts{});
}

TEST_F(KovRequest, DoesNotAskForTheBluetoothAddress)
{
    simulator::SetAdapterAddress(std::nullopt);
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(CountCalls("bt_adapter_get_address"), 0);
}

TEST_F(MirroringRequest, SendsAnEmptyTvName)
{
    simulator::SetSetting(kKeyTvName, "");
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    ASSERT_EQ(MessagesToPhone().size(), 1U);
    EXPECT_NE(MessagesToPhone()[0].find(R"("displayName":"")"), std::string::npos);
}

TEST_F(MirroringRequest, EscapesTheTvNameAsJsonWants)
{
    simulator::SetSetting(kKeyTvName, "A \"B\" \\ \n\tK\xC3\xBC"
                                      "che \xF0\x9F\x93\xBA");
    Ask();
    ASSERT_EQ(MessagesToPhone().size(), 1U);
    EXPECT_NE(MessagesToPhone()[0].find(R"("displayName":"A \"B\" \\ \n\tK\u00fcche \ud83d\udcfa")"),
              std::string::npos)
        << MessagesToPhone()[0];
}

TEST_F(MirroringRequest, SendsATvNameThatIsNotUtf8)
{
    simulator::SetSetting(kKeyTvName, "\xff\xfeTV");
    Ask();
    EXPECT_EQ(Result(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(MessagesToPhone().size(), 1U);
}

TEST_F(MirroringRequest, SendsTypeAndIconAsTheyAre)
{
    for (const int value : {0, -1, 23, 41, 2147483647}) {
        simulator::SetSystemInfo(kDeviceType, value);
        simulator::SetSystemInfo(kDeviceIcon, value);
        Ask();
        const std::string expected =
            R"("deviceIcon":")" + std::to_string(value) + R"(","deviceType":")" + std::to_string(value) + "\"";
        EXPECT_NE(MessagesToPhone().back().find(expected), std::string::npos) << MessagesToPhone().back();
    }
}

}  // namespace
}  // namespace lyn::test
