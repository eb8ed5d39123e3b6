// SPDX-License-Identifier: Apache-2.0
//
// Starting and stopping the scan and the TV's advertisement, through the C interface.
#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "scanner/Advertisements.h"
#include "support/App.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

constexpr const char* BOOST_ON = "bt_adapter_le_enable_le_scan_performance_boost(true)";
constexpr const char* BOOST_OFF = "bt_adapter_le_enable_le_scan_performance_boost(false)";
constexpr const char* START_SCAN = "bt_adapter_le_start_scan()";
constexpr const char* STOP_SCAN = "bt_adapter_le_stop_scan()";
constexpr int NO_SCAN_RUNNING = -29359867;

std::string StartTime(const std::string& function)
{
    return "\\[LYN_SERVICE\\]\\[" + function +
           "\\]\\[Current time : [A-Z][a-z][a-z] [A-Z][a-z][a-z] [ 0-9][0-9] [0-9:]+ [0-9]+\\]";
}

class Scan : public SimulatedTv, public testing::WithParamInterface<std::string> {
protected:
    Scan()
    {
        simulator::SetSetting("memory/wifi/frequency", 5180);
        // The boost outlives a service: a test before this one may have left it on.
        App("mirroring").StopScan();
        app = std::make_unique<App>(GetParam());
        simulator::ClearJournal();
        simulator::ClearLog();
    }

    static bool IsNodLink() { return GetParam() == "nodlink"; }

    static std::string ChooseMode()
    {
        return IsNodLink() ? "bt_adapter_le_set_customized_scan_mode_with_scan_type(0, 1000, 500)"
                           : "bt_adapter_le_set_scan_mode(0)";
    }

    static std::vector<std::string> BluetoothCalls() { return Calls("bt_"); }

    // ERROR lines but those of the layers above the scanner.
    static std::vector<std::string> ScannerErrors()
    {
        std::vector<std::string> errors;
        for (const Line& line : LogLines()) {
            if (line.priority == ERROR && line.file.find("Scanner.cpp") != std::string::npos) {
                errors.push_back(line.message);
            }
        }
        return errors;
    }

    std::unique_ptr<App> app;
};

INSTANTIATE_TEST_SUITE_P(Of, Scan, testing::Values("mirroring", "nodlink", "kov"),
                         [](const auto& param) { return param.param; });

TEST_P(Scan, StartsWithItsModeThenTheBoostThenTheScan)
{
    EXPECT_EQ(app->StartScan(), LYN_ERROR_NONE);
    EXPECT_THAT(BluetoothCalls(), ElementsAre(ChooseMode(), BOOST_ON, START_SCAN));
    EXPECT_TRUE(simulator::Alive().scanning);
    EXPECT_THAT(Messages(ERROR), IsEmpty());
}

TEST_P(Scan, StopsWithTheBoostOffAndThenTheScan)
{
    app->StartScan();
    simulator::ClearJournal();
    EXPECT_EQ(app->StopScan(), LYN_ERROR_NONE);
    EXPECT_THAT(BluetoothCalls(), ElementsAre(BOOST_OFF, STOP_SCAN));
    EXPECT_FALSE(simulator::Alive().scanning);
    EXPECT_THAT(Messages(ERROR), IsEmpty());
}

TEST_P(Scan, StartsAgainAfterItHasStopped)
{
    for (int round = 0; round < 3; ++round) {
        simulator::ClearJournal();
        EXPECT_EQ(app->StartScan(), LYN_ERROR_NONE);
        EXPECT_EQ(app->StopScan(), LYN_ERROR_NONE);
        EXPECT_THAT(BluetoothCalls(), ElementsAre(ChooseMode(), BOOST_ON, START_SCAN, BOOST_OFF, STOP_SCAN));
    }
}

TEST_P(Scan, ThatThePlatformRefusesTakesTheBoostBackBeforeItIsLogged)
{
    simulator::FailCall("bt_adapter_le_start_scan", 0x0AB);
    EXPECT_EQ(app->StartScan(), LYN_ERROR_OPERATION_FAILED);
    EXPECT_THAT(BluetoothCalls(), ElementsAre(ChooseMode(), BOOST_ON, START_SCAN, BOOST_OFF));
    EXPECT_THAT(ScannerErrors(), ElementsAre("bt_adapter_le_start_scan failed with [0x00ab]"));
    EXPECT_THAT(FunctionsThatSay("bt_adapter_le_start_scan failed"), ElementsAre("StartScan"));
    EXPECT_THAT(simulator::KernelLog(), IsEmpty());
    EXPECT_FALSE(simulator::Alive().boosted);

    std::vector<std::string> order;
    for (const Line& line : LogLines()) {
        if (line.message.rfind("bt_adapter_le_", 0) == 0) {
            order.push_back(line.message);
        }
    }
    EXPECT_THAT(order, ElementsAre("bt_adapter_le_enable_le_scan_performance_boost : 1",
                                   "bt_adapter_le_enable_le_scan_performance_boost : 0",
                                   "bt_adapter_le_start_scan failed with [0x00ab]"));
}

TEST_P(Scan, ThatThePlatformRefusedCanBeStartedAgain)
{
    simulator::FailCall("bt_adapter_le_start_scan", -1);
    EXPECT_EQ(app->StartScan(), LYN_ERROR_OPERATION_FAILED);
    EXPECT_EQ(app->StartScan(), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::Alive().boosted);
}

TEST_P(Scan, StopsOverAPlatformThatIsNotScanning)
{
    EXPECT_EQ(app->StopScan(), LYN_ERROR_NONE);
    EXPECT_THAT(BluetoothCalls(), ElementsAre(STOP_SCAN)) << "the boost is off already";
    EXPECT_TRUE(HasLog(INFO, "already 0"));
    EXPECT_THAT(Messages(ERROR), IsEmpty());
}

TEST_P(Scan, StopsWellForTwoCodesOnly)
{
    const std::vector<std::pair<int, std::string>> bad = {
        {-29359868, "0xfe400104"}, {-29359866, "0xfe400106"}, {1, "0x0001"}, {-1, "0xffffffff"}};
    for (const auto& [code, text] : bad) {
        SCOPED_TRACE(text);
        app->StartScan();
        simulator::ClearLog();
        simulator::FailCall("bt_adapter_le_stop_scan", code);
        EXPECT_EQ(app->StopScan(), LYN_ERROR_OPERATION_FAILED);
        EXPECT_THAT(ScannerErrors(), ElementsAre("bt_adapter_le_stop_scan failed with [" + text + "]"));
        EXPECT_THAT(FunctionsThatSay("bt_adapter_le_stop_scan failed"), ElementsAre("StopScan"));
        EXPECT_FALSE(simulator::Alive().boosted) << "the boost is off all the same";
    }
    simulator::ClearLog();
    simulator::FailCall("bt_adapter_le_stop_scan", NO_SCAN_RUNNING);
    EXPECT_EQ(app->StopScan(), LYN_ERROR_NONE);
    EXPECT_THAT(ScannerErrors(), IsEmpty());
}

TEST_P(Scan, RunsWithoutTheBoostThatThePlatformRefuses)
{
    simulator::FailCall("bt_adapter_le_enable_le_scan_performance_boost", -1);
    EXPECT_EQ(app->StartScan(), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::Alive().scanning);
    simulator::ClearJournal();
    EXPECT_EQ(app->StopScan(), LYN_ERROR_NONE);
    EXPECT_THAT(BluetoothCalls(), ElementsAre(STOP_SCAN));
}

TEST_P(Scan, RunsWithoutTheBoostWhileTheNetworkSpeakerNeedsTheBand)
{
    simulator::SetSetting("memory/wifi/frequency", 2412);
    simulator::SetSetting("memory/acm/networkspeaker_status", 1);
    EXPECT_EQ(app->StartScan(), LYN_ERROR_NONE);
    EXPECT_THAT(BluetoothCalls(), ElementsAre(ChooseMode(), START_SCAN));
    EXPECT_TRUE(HasLog(INFO, "ACM is working on 2.4Ghz"));
}

TEST_P(Scan, IsNotStoppedByTheEndOfTheService)
{
    app->StartScan();
    simulator::ClearJournal();
    EXPECT_EQ(app->Destroy(), LYN_ERROR_NONE);
    EXPECT_EQ(CountCalls("bt_adapter_le_stop_scan"), 0);
    EXPECT_EQ(CountCalls("vconf_set_int"), 0);
}

TEST_P(Scan, IsWrittenToTheKernelLogForNodLinkOnly)
{
    app->StartScan();
    const std::vector<std::string> started = simulator::KernelLog();
    app->StopScan();
    const std::vector<std::string> stopped = simulator::KernelLog();
    if (!IsNodLink()) {
        EXPECT_THAT(stopped, IsEmpty());
        return;
    }
    EXPECT_THAT(started, ElementsAre(MatchesRegex(StartTime("StartScan"))));
    EXPECT_THAT(stopped, ElementsAre(MatchesRegex(StartTime("StartScan")), MatchesRegex(StartTime("StopScan"))));
}

// ---- What the modes do not agree on ------------------------------------------------------------------

class PhoneScan : public Scan {};
INSTANTIATE_TEST_SUITE_P(Of, PhoneScan, testing::Values("mirroring", "kov"),
                         [](const auto& param) { return param.param; });

TEST_P(PhoneScan, DoesNotStartWithoutItsMode)
{
    for (const int code : {-1, 1}) {
        SCOPED_TRACE(code);
        simulator::ClearJournal();
        simulator::ClearLog();
        simulator::FailCall("bt_adapter_le_set_scan_mode", code);
        EXPECT_EQ(app->StartScan(), LYN_ERROR_OPERATION_FAILED);
        EXPECT_THAT(BluetoothCalls(), ElementsAre(ChooseMode()));
        EXPECT_THAT(ScannerErrors(), ElementsAre("bt_adapter_le_set_scan_mode"));
    }
}

class NodLinkScan : public Scan {};
INSTANTIATE_TEST_SUITE_P(Of, NodLinkScan, testing::Values("nodlink"),
                         [](const auto& param) { return param.param; });

TEST_P(NodLinkScan, StartsWithoutItsMode)
{
    simulator::FailCall("bt_adapter_le_set_customized_scan_mode_with_scan_type", -1);
    EXPECT_EQ(app->StartScan(), LYN_ERROR_NONE);
    EXPECT_THAT(BluetoothCalls(), ElementsAre(ChooseMode(), BOOST_ON, START_SCAN));
    EXPECT_THAT(Messages(ERROR), IsEmpty());
}

TEST_P(NodLinkScan, ThatStopsOverAPlatformThatIsNotScanningIsWrittenToTheKernelLog)
{
    EXPECT_EQ(app->StopScan(), LYN_ERROR_NONE);
    EXPECT_THAT(simulator::KernelLog(), ElementsAre(MatchesRegex(StartTime("StopScan"))));
}

TEST_P(NodLinkScan, ThatDoesNotStopIsNotWrittenToTheKernelLog)
{
    simulator::FailCall("bt_adapter_le_stop_scan", -1);
    EXPECT_EQ(app->StopScan(), LYN_ERROR_OPERATION_FAILED);
    EXPECT_THAT(simulator::KernelLog(), IsEmpty());
}

TEST_P(NodLinkScan, StartsAndStopsWithoutAKernelLog)
{
    simulator::SetKernelLogMode(simulator::KernelLogMode::refuseOpen);
    EXPECT_EQ(app->StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app->StopScan(), LYN_ERROR_NONE);
    EXPECT_THAT(Messages(ERROR), IsEmpty());
}

TEST_P(NodLinkScan, HasNoAdvertisementOfTheTv)
{
    EXPECT_EQ(lyn_start_advertise(app->handle, LYN_ADV_INTERVAL_50), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_stop_advertise(app->handle), LYN_ERROR_NONE);
    EXPECT_EQ(CountLog(WARN, "Not supported"), 2);
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

// ---- The TV's advertisement --------------------------------------------------------------------------

class TvAdvertisement : public Scan {
protected:
    static std::string Key()
    {
        return GetParam() == "kov" ? "memory/org.nuvex.bleapp/kov_trigger"
                                   : "memory/org.nuvex.bleapp/mirroring_trigger";
    }

    static std::string Write(int interval)
    {
        return "vconf_set_int(\"" + Key() + "\", " + std::to_string(interval) + ")";
    }

    lyn_error_e Start(int interval) const
    {
        return lyn_start_advertise(app->handle, static_cast<lyn_adv_interval_e>(interval));
    }

    lyn_error_e Stop() const { return lyn_stop_advertise(app->handle); }
};

INSTANTIATE_TEST_SUITE_P(Of, TvAdvertisement, testing::Values("mirroring", "kov"),
                         [](const auto& param) { return param.param; });

TEST_P(TvAdvertisement, IsTheIntervalInTheServicesOwnKey)
{
    const std::vector<int> intervals = {50, 100, 150, 200, 300};
    for (std::size_t i = 0; i < intervals.size(); ++i) {
        SCOPED_TRACE(intervals[i]);
        simulator::ClearJournal();
        simulator::ClearLog();
        EXPECT_EQ(Start(static_cast<int>(i)), LYN_ERROR_NONE);
        EXPECT_THAT(simulator::JournalText(), ElementsAre(Write(intervals[i])));
        EXPECT_EQ(simulator::IntSetting(Key()), intervals[i]);
        EXPECT_TRUE(HasLog(INFO, "Interval : " + std::to_string(intervals[i])));
    }
}

TEST_P(TvAdvertisement, EndsWithAZeroOnce)
{
    Start(0);
    simulator::ClearJournal();
    EXPECT_EQ(Stop(), LYN_ERROR_NONE);
    EXPECT_THAT(simulator::JournalText(), ElementsAre(Write(0)));
    EXPECT_EQ(Stop(), LYN_ERROR_NONE);
    EXPECT_THAT(simulator::JournalText(), ElementsAre(Write(0)));
}

TEST_P(TvAdvertisement, ThatWasNeverStartedEndsWithoutAWrite)
{
    EXPECT_EQ(Stop(), LYN_ERROR_NONE);
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

TEST_P(TvAdvertisement, ThatCouldNotStartEndsWithoutAWrite)
{
    simulator::FailCall("vconf_set_int", -1);
    EXPECT_EQ(Start(0), LYN_ERROR_OPERATION_FAILED);
    EXPECT_THAT(ScannerErrors(), ElementsAre("vconf_set_int failed for key : " + Key()));
    EXPECT_EQ(Stop(), LYN_ERROR_NONE);
    EXPECT_THAT(simulator::JournalText(), ElementsAre(Write(50)));
}

TEST_P(TvAdvertisement, ThatCouldNotEndIsTriedAgainByTheNextStop)
{
    Start(0);
    simulator::FailCall("vconf_set_int", -1);
    EXPECT_EQ(Stop(), LYN_ERROR_OPERATION_FAILED);
    EXPECT_EQ(simulator::IntSetting(Key()), 50);
    EXPECT_EQ(Stop(), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::IntSetting(Key()), 0);
    EXPECT_THAT(simulator::JournalText(), ElementsAre(Write(50), Write(0), Write(0)));
}

TEST_P(TvAdvertisement, OutlivesTheService)
{
    Start(1);
    EXPECT_EQ(app->Destroy(), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::IntSetting(Key()), 100);
}

}  // namespace
}  // namespace lyn::test
