// SPDX-License-Identifier: Apache-2.0
//
// Every line that the library writes, as the platform's log receives it. This program has a log of its
// own in the place of the platform's.
#include <gmock/gmock.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "lyn_platform/log.h"
#include "support/App.h"
#include "support/SimulatedTv.h"

namespace {

struct ReceivedLine {
    int logId;
    int priority;
    std::string tag;
    std::string text;
};

std::mutex g_mutex;
std::vector<ReceivedLine> g_lines;

}  // namespace

int platform_log_print(int log_id, int priority, const char* tag, const char* format, ...)
{
    std::string text(4096, '\0');
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    text.resize(static_cast<std::size_t>(length));
    const std::lock_guard lock(g_mutex);
    g_lines.push_back({log_id, priority, tag, text});
    return 0;
}

namespace lyn::test {
namespace {

constexpr const char* PHONE = "AA:BB:CC:DD:EE:01";

class LogLine : public SimulatedTv {
protected:
    LogLine()
    {
        const std::lock_guard lock(g_mutex);
        g_lines.clear();
    }

    static std::vector<ReceivedLine> Received()
    {
        const std::lock_guard lock(g_mutex);
        return g_lines;
    }

    // Much of what a service can do, well and badly.
    static void LiveThrough(const std::string& service)
    {
        simulator::FailCall("vconf_set_int", -1, 1);
        App app(service);
        lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_50);
        lyn_start_advertise(app.handle, static_cast<lyn_adv_interval_e>(9));
        app.StartScan();
        app.StartScan();
        simulator::RunUntil([&] { return !app.phones.empty(); }, 300);
        simulator::DeliverAdvertisement(PHONE, -50, std::nullopt, std::nullopt);
        simulator::DeliverAdvertisement(PHONE, -50, simulator::ManufacturerData(117, {1, 25}), std::nullopt);
        app.StopScan();
        app.Request(PHONE);
        app.WaitForResult();
        simulator::Settle();
        nod_link_type type = 0;
        lyn_get_nodlink_type(app.handle, &type);
        lyn_get_request_initiating_error_string(app.handle, LYN_REQUEST_INITIATING_RESULT_SUCCESS);
        lyn_stop_scan(nullptr);
        app.Destroy();
    }

    static void LiveThroughEverything()
    {
        for (const std::string service : {"dummy", "mirroring", "nodlink", "kov"}) {
            simulator::Reset();
            simulator::AddPhone(PhoneOf(service));
            LiveThrough(service);
        }
    }

    static simulator::Phone PhoneOf(const std::string& service)
    {
        simulator::Phone phone = service == "kov"
                                     ? simulator::KovPhone(PHONE, "Kitchen", "0123456789abcdefghijkl")
                                     : simulator::MirroringPhone(PHONE, "Kitchen", "0123456789abcdefghijkl");
        if (service == "nodlink") {
            phone = simulator::NodLinkPhone(PHONE, true, true);
        }
        phone.services[0].characteristics[0].answers = {simulator::Answer{.text = "Success"}};
        return phone;
    }
};

TEST_F(LogLine, GoesToTheMainLogUnderOneTag)
{
    LiveThroughEverything();
    ASSERT_GT(Received().size(), 200U);
    for (const ReceivedLine& line : Received()) {
        EXPECT_EQ(line.logId, 0) << line.text;
        EXPECT_EQ(line.tag, "LYN_SERVICE") << line.text;
    }
}

TEST_F(LogLine, HasOneOfFourPriorities)
{
    LiveThroughEverything();
    std::set<int> seen;
    for (const ReceivedLine& line : Received()) {
        seen.insert(line.priority);
    }
    EXPECT_EQ(seen, (std::set<int>{3, 4, 5, 6}));
}

TEST_F(LogLine, BeginsWithFileFunctionAndLine)
{
    LiveThroughEverything();
    const std::regex form(R"(^[A-Za-z0-9_]+\.(cpp|h): (~?[A-Za-z_0-9]+|operator\(\))\([0-9]+\) > [^]*$)");
    for (const ReceivedLine& line : Received()) {
        EXPECT_TRUE(std::regex_match(line.text, form)) << line.text;
    }
}

// Readers filter by the operation: no helper speaks in its own name.
TEST_F(LogLine, OfScannersMessagesAndUtilitiesNamesAnOperation)
{
    const std::set<std::string> operations = {"StartScan",
                                              "StopScan",
                                              "StartAdvertisement",
                                              "StopAdvertisement",
                                              "SetBleAdvertisementInterval",
                                              "NotifyDeviceFound",
                                              "NotifyScanStateChanged",
                                              "GetManufDataFromScanResult",
                                              "OnLeScanResult",
                                              "GetDeviceId",
                                              "GetDeviceName",
                                              "ConvertManufacturerDataToDeviceName",
                                              "BuildExtraData",
                                              "GetExchangeData",
                                              "BuildControlData",
                                              "BuildMirroringTypeData",
                                              "GetMirroringTypeFromAppId",
                                              "GetTvName",
                                              "GetBtAddress",
                                              "GetP2PMac",
                                              "GetP2PListenChannel",
                                              "ConvertFreqToChannerl",
                                              "GetIntFmsValue",
                                              "IsAcmWorkOn2_4Ghz",
                                              "SetBtPerformanceBoost",
                                              "StringToJson",
                                              "JsonToString"};
    const std::regex form(R"(^(\w*Scanner|\w*ExchangeData|P2PListenChannel|Util)\.(?:cpp|h): (\w+)\([^]*$)");
    LiveThroughEverything();
    int seen = 0;
    for (const ReceivedLine& line : Received()) {
        std::smatch parts;
        if (std::regex_match(line.text, parts, form)) {
            ++seen;
            EXPECT_EQ(operations.count(parts[2]), 1U) << line.text;
        }
    }
    EXPECT_GT(seen, 50);
}

}  // namespace
}  // namespace lyn::test
