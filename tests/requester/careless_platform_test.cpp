// SPDX-License-Identifier: Apache-2.0
//
// A platform that writes its out values although it fails. What it writes is not its caller's: it is neither
// used nor freed. This program's own functions take the place of the platform's.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "Common/LynException.h"
#include "Common/Util.h"
#include "Requester/ExchangeData/CExchangeData.h"
#include "lyn_platform/bluetooth.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/system_info.h"
#include "lyn_platform/wifi.h"
#include "support/SimulatedTv.h"
#include "support/Thrown.h"

namespace {

constexpr int kFailure = -77;

// Not from malloc(): to free it ends the process.
std::array<char, 18> g_notTheCallers = {"02:00:00:00:00:99"};

std::string g_failing;  // The function that fails; the others do well.

int AnswerWithText(const char* function, char** text)
{
    *text = g_failing == function ? g_notTheCallers.data() : strdup("02:00:00:00:00:AA");
    return g_failing == function ? kFailure : 0;
}

int AnswerWithNumber(const char* function, int good, int* number)
{
    *number = g_failing == function ? 5 : good;
    return g_failing == function ? kFailure : 0;
}

}  // namespace

int bt_adapter_get_address(char** address)
{
    return AnswerWithText("bt_adapter_get_address", address);
}

int wifi_direct_get_mac_address(char** address)
{
    return AnswerWithText("wifi_direct_get_mac_address", address);
}

int wifi_ap_get_bssid(wifi_ap_h, char** bssid)
{
    return AnswerWithText("wifi_ap_get_bssid", bssid);
}

int wifi_ap_get_frequency(wifi_ap_h, int* frequency)
{
    return AnswerWithNumber("wifi_ap_get_frequency", 2437, frequency);
}

int vconf_get_int(const char*, int* value)
{
    return AnswerWithNumber("vconf_get_int", 99, value);
}

int system_info_get_custom_int(const char*, int* value)
{
    return AnswerWithNumber("system_info_get_custom_int", 12, value);
}

namespace lyn::test {
namespace {

class CarelessPlatform : public SimulatedTv {
protected:
    CarelessPlatform() { simulator::SetAccessPoint(simulator::AccessPoint{"02:00:00:00:00:CC", 2437}); }
    ~CarelessPlatform() override { g_failing.clear(); }

    template <typename E = LynExceptionInternal, typename Read>
    static std::string ThrownWhile(const char* function, const Read& read)
    {
        g_failing = function;
        return ThrownBy<E>(read);
    }

    CExchangeData data;
};

TEST_F(CarelessPlatform, DoesWellWhenNothingFails)
{
    EXPECT_EQ(data.GetBtAddress(), "02:00:00:00:00:AA");
    EXPECT_EQ(data.GetP2PMac(), "02:00:00:00:00:AA");
    EXPECT_EQ(data.GetP2PListenChannel(), 6);
    EXPECT_EQ(data.GetDeviceType(), 12);
}

TEST_F(CarelessPlatform, KeepsTheTextsThatItWritesWhileItFails)
{
    EXPECT_EQ(ThrownWhile("bt_adapter_get_address", [&] { data.GetBtAddress(); }), "btAddress is nullptr");
    EXPECT_EQ(ThrownWhile("wifi_direct_get_mac_address", [&] { data.GetP2PMac(); }),
              "Fail to wifi_direct_get_mac_address");
    EXPECT_EQ(ThrownWhile("wifi_ap_get_bssid", [&] { data.GetP2PListenChannel(); }),
              "Fail to get bssid of connected ap");
    EXPECT_STREQ(g_notTheCallers.data(), "02:00:00:00:00:99");
}

TEST_F(CarelessPlatform, HasNoNumberWhileItFails)
{
    EXPECT_EQ(ThrownWhile("wifi_ap_get_frequency", [&] { data.GetP2PListenChannel(); }), "fail to get frequency");
    EXPECT_EQ(ThrownWhile("vconf_get_int", [&] { data.GetP2PListenChannel(); }),
              "fail to get memory/menu/network/screenmirroring/p2p_listen_channel");
    const auto readType = [&] { data.GetDeviceType(); };
    EXPECT_EQ(ThrownWhile<LynExceptionOperationFailed>("system_info_get_custom_int", readType),
              "Fail to get fms key");
    g_failing.clear();
    EXPECT_EQ(data.GetDeviceType(), 12) << "a failure is not remembered";
}

TEST_F(CarelessPlatform, HasNoSpeakerThatRunsWhileItFails)
{
    EXPECT_TRUE(LynUtil::IsAcmWorkOn2_4Ghz());
    g_failing = "vconf_get_int";
    EXPECT_FALSE(LynUtil::IsAcmWorkOn2_4Ghz());
    EXPECT_TRUE(HasLog(DEBUG, "acm status is NETWORKSPEKAER_STOP"));
}

}  // namespace
}  // namespace lyn::test
