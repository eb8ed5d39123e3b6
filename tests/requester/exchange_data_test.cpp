// SPDX-License-Identifier: Apache-2.0
//
// The builders of the messages by themselves.
#include <gtest/gtest.h>

#include <optional>

#include "Common/LynException.h"
#include "Requester/ExchangeData/CKovExchangeData.h"
#include "Requester/ExchangeData/CNodLinkExchangeData.h"
#include "Requester/ExchangeData/CScreenMirroringExchangeData.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

class ExchangeData : public SimulatedTv {
protected:
    ExchangeData()
    {
        simulator::SetSetting("db/menu/network/devicename/tv_name", "Salon");
        simulator::SetSetting("memory/menu/network/screenmirroring/p2p_listen_channel", 0);
        simulator::SetAdapterAddress("02:00:00:00:00:AA");
        simulator::SetWifiDirectAddress("02:00:00:00:00:BB");
        simulator::SetSystemInfo("com.calyxon/featureconf/devicename.device_type_index", 12);
        simulator::SetSystemInfo("com.calyxon/featureconf/devicename.icon_index", 3);
    }

    /// Code and text of what the library throws; none for nothing.
    template <typename Work>
    static std::string Thrown(const Work& work)
    {
        try {
            work();
        } catch (const LynException& e) {
            return std::to_string(e.GetCode()) + " " + e.what();
        }
        return "";
    }
};

TEST_F(ExchangeData, HasNoMessageInItsBase)
{
    CExchangeData data;
    EXPECT_EQ(data.GetExchangeData("control"), "");
    EXPECT_EQ(data.GetExchangeData(""), "");
    EXPECT_EQ(CountLog(INFO, "Not implemented"), 2);
    EXPECT_EQ(data.BuildControlData(), "");
    EXPECT_EQ(simulator::JournalText(), std::vector<std::string>{});
}

TEST_F(ExchangeData, NamesItsServiceType)
{
    EXPECT_EQ(CExchangeData().GetServiceType(), "default");
    EXPECT_EQ(CScreenMirroringExchangeData().GetServiceType(), "mirroring");
    EXPECT_EQ(CKovExchangeData().GetServiceType(), "kov");
    EXPECT_EQ(CNodLinkExchangeData("").GetServiceType(), "nodLink");
    EXPECT_EQ(CNodLinkExchangeData("3.0").GetServiceType(), "nodLink3.0");
}

TEST_F(ExchangeData, KeepsExtraDataUnchanged)
{
    CExchangeData data;
    EXPECT_EQ(data.GetExtraData(), "");
    const std::string extraData("{ not json \0 at all", 19);
    data.SetExtraData(extraData);
    EXPECT_EQ(data.GetExtraData(), extraData);
    data.SetExtraData("");
    EXPECT_EQ(data.GetExtraData(), "");
}

TEST_F(ExchangeData, BuildsTheControlMessageWhateverIsAskedFor)
{
    CScreenMirroringExchangeData mirroring;
    CKovExchangeData kov;
    for (const char* dataType : {"control", "mirroringType", "", "x"}) {
        EXPECT_EQ(mirroring.GetExchangeData(dataType), mirroring.BuildControlData());
        EXPECT_EQ(kov.GetExchangeData(dataType), kov.BuildControlData());
    }
    EXPECT_NE(mirroring.BuildControlData(), kov.BuildControlData());
}

TEST_F(ExchangeData, BuildsNodLinksTwoMessages)
{
    simulator::WriteFile("/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json", "{}");
    CNodLinkExchangeData control("3.0");
    EXPECT_EQ(control.GetExchangeData("control"), control.BuildControlData());
    EXPECT_EQ(control.GetExchangeData("MirroringType"), control.BuildControlData());
    EXPECT_EQ(control.GetExchangeData(""), control.BuildControlData());
    CNodLinkExchangeData answer(R"({"packageName":"a"})");
    EXPECT_EQ(answer.GetExchangeData("mirroringType"), answer.BuildMirroringTypeData());
    EXPECT_EQ(answer.BuildMirroringTypeData(),
              R"({"BtMac":"02:00:00:00:00:AA","service":"screen","type":"reqService","view":"multi"})");
}

TEST_F(ExchangeData, CannotBuildAMirroringTypeOfWhatIsNoMessage)
{
    EXPECT_EQ(Thrown([] { CNodLinkExchangeData("{").BuildMirroringTypeData(); }).substr(0, 2), "5 ");
    EXPECT_EQ(CountCalls("bt_adapter_get_address"), 0) << "read before anything else";
}

TEST_F(ExchangeData, NamesTheMirroringType)
{
    const CNodLinkExchangeData data("");
    simulator::WriteFile("/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json",
                         R"({"screenmirroring_fullview":["a"],"soundmirroring":["a","b"]})");
    EXPECT_EQ(data.GetMirroringTypeFromAppId("a"), "screenmirroring_fullview");
    EXPECT_EQ(data.GetMirroringTypeFromAppId("b"), "soundmirroring");
    EXPECT_EQ(data.GetMirroringTypeFromAppId("c"), "screenmirroring_multiview");
}

TEST_F(ExchangeData, ReadsTheTvsValues)
{
    const CExchangeData data;
    EXPECT_EQ(data.GetTvName(), "Salon");
    EXPECT_EQ(data.GetBtAddress(), "02:00:00:00:00:AA");
    EXPECT_EQ(data.GetP2PMac(), "02:00:00:00:00:BB");
    EXPECT_EQ(data.GetP2PListenChannel(), 1);
    EXPECT_EQ(data.GetDeviceType(), 12);
    EXPECT_EQ(data.GetDeviceIcon(), 3);
}

TEST_F(ExchangeData, FailsWithTheseCodes)
{
    const CExchangeData data;
    simulator::NullText("vconf_get_str");
    EXPECT_EQ(Thrown([&] { data.GetTvName(); }), "2 Fail to get tv name");
    simulator::NullText("bt_adapter_get_address");
    EXPECT_EQ(Thrown([&] { data.GetBtAddress(); }), "2 btAddress is nullptr");
    simulator::FailCall("wifi_direct_initialize", -1);
    EXPECT_EQ(Thrown([&] { data.GetP2PMac(); }), "2 Fail to wifi_direct_initialize");
    simulator::NullText("wifi_direct_get_mac_address");
    EXPECT_EQ(Thrown([&] { data.GetP2PMac(); }), "2 p2p_addr is nullptr");
    simulator::FailCall("vconf_get_int", -1);
    EXPECT_EQ(Thrown([&] { data.GetP2PListenChannel(); }),
              "2 fail to get memory/menu/network/screenmirroring/p2p_listen_channel");
    simulator::FailCall("system_info_get_custom_int", -1);
    EXPECT_EQ(Thrown([&] { data.GetDeviceType(); }), "6 Fail to get fms key");
    simulator::FailCall("system_info_get_custom_int", -1);
    EXPECT_EQ(Thrown([&] { data.GetDeviceIcon(); }), "6 Fail to get fms key");
    EXPECT_EQ(Thrown([] { CNodLinkExchangeData("").GetMirroringTypeFromAppId("a"); }),
              "2 fail to open meta_data file");
    simulator::WriteFile("/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json", "{");
    EXPECT_EQ(Thrown([] { CNodLinkExchangeData("").GetMirroringTypeFromAppId("a"); }).substr(0, 2), "2 ");
}

/// The channel by counting up from the band's first one.
std::optional<int> ExpectedChannel(int frequency)
{
    if (frequency > 2472 && frequency < 2484) {
        return -1;
    }
    if (frequency == 2484) {
        return 14;
    }
    for (int channel = 1; channel <= 13; ++channel) {
        const int center = 2407 + 5 * channel;
        if (frequency >= center && frequency < center + 5 && frequency <= 2472) {
            return channel;
        }
    }
    for (int channel = 34; channel <= 165; ++channel) {
        const int center = 5000 + 5 * channel;
        if (frequency >= center && frequency < center + 5 && frequency <= 5825) {
            return channel;
        }
    }
    return std::nullopt;
}

TEST_F(ExchangeData, ConvertsEveryFrequency)
{
    const CExchangeData data;
    simulator::SetLogCapture(7);
    for (int frequency = 2300; frequency <= 6000; ++frequency) {
        std::optional<int> channel;
        const std::string thrown = Thrown([&] { channel = data.ConvertFreqToChannerl(frequency); });
        ASSERT_EQ(channel, ExpectedChannel(frequency)) << frequency;
        ASSERT_EQ(thrown, channel ? "" : "2 wrong frequency range") << frequency;
    }
    for (const int frequency : {-2147483647 - 1, -1, 0, 1, 24370, 2147483647}) {
        EXPECT_EQ(Thrown([&] { data.ConvertFreqToChannerl(frequency); }), "2 wrong frequency range");
    }
}

}  // namespace
}  // namespace lyn::test
