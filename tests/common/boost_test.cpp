// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <climits>
#include <optional>
#include <string>
#include <vector>

#include "Common/Util.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* FREQUENCY = "memory/wifi/frequency";
constexpr const char* SPEAKER = "memory/acm/networkspeaker_status";
constexpr const char* BOOST = "bt_adapter_le_enable_le_scan_performance_boost";

class Boost : public SimulatedTv {
protected:
    ~Boost() override
    {
        // The flag outlives the test when several run in one process.
        simulator::ClearFaults();
        LynUtil::SetBtPerformanceBoost(false);
    }

    static void SetWifi(std::optional<int> frequency, std::optional<int> speaker)
    {
        const auto set = [](const char* key, std::optional<int> value) {
            if (value) {
                simulator::SetSetting(key, *value);
            } else {
                simulator::RemoveSetting(key);
            }
        };
        set(FREQUENCY, frequency);
        set(SPEAKER, speaker);
        simulator::ClearLog();
        simulator::ClearJournal();
    }
};

// ---- Is the network speaker on the same band? -------------------------------------------------------

struct Band {
    std::optional<int> frequency;
    std::optional<int> speaker;
    bool isAcmOn24;
    Priority priority;
    std::string message;
};

class SpeakerBand : public Boost, public testing::WithParamInterface<Band> {};

TEST_P(SpeakerBand, IsJudgedByFrequencyFirstAndSpeakerSecond)
{
    const Band& band = GetParam();
    SetWifi(band.frequency, band.speaker);
    EXPECT_EQ(LynUtil::IsAcmWorkOn2_4Ghz(), band.isAcmOn24);
    const std::vector<Line> lines = LogLines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].priority, band.priority);
    EXPECT_EQ(lines[0].message, band.message);
    EXPECT_EQ(lines[0].function, "IsAcmWorkOn2_4Ghz");
}

const std::string STOPPED = "acm status is NETWORKSPEKAER_STOP";

std::string Working(int frequency, int status)
{
    return "frequency : " + std::to_string(frequency) + ", acm status : " + std::to_string(status) +
           " (O : NETWORKSPEKAER_STOP)";
}

INSTANTIATE_TEST_SUITE_P(
    Table, SpeakerBand,
    testing::Values(
        Band{2412, 1, true, ERROR, Working(2412, 1)}, Band{2412, 0, false, DEBUG, STOPPED},
        Band{2495, 1, true, ERROR, Working(2495, 1)}, Band{2496, 1, false, DEBUG, "frequency : 2496"},
        Band{2496, 0, false, DEBUG, "frequency : 2496"}, Band{5180, 1, false, DEBUG, "frequency : 5180"},
        Band{5180, 0, false, DEBUG, "frequency : 5180"}, Band{INT_MAX, 1, false, DEBUG, "frequency : 2147483647"},
        Band{0, 1, true, ERROR, Working(0, 1)}, Band{0, 0, false, DEBUG, STOPPED},
        Band{-1, 1, true, ERROR, Working(-1, 1)}, Band{2437, -1, true, ERROR, Working(2437, -1)},
        Band{2437, 2, true, ERROR, Working(2437, 2)}, Band{std::nullopt, 1, true, ERROR, Working(0, 1)},
        Band{2437, std::nullopt, false, DEBUG, STOPPED}, Band{std::nullopt, std::nullopt, false, DEBUG, STOPPED}));

TEST_F(Boost, AsksForTheSpeakerOnlyWhenTheFrequencyLeavesItOpen)
{
    SetWifi(5180, 1);
    LynUtil::IsAcmWorkOn2_4Ghz();
    EXPECT_THAT(simulator::JournalText(), ElementsAre("vconf_get_int(\"memory/wifi/frequency\" -> 5180)"));

    SetWifi(2437, 1);
    LynUtil::IsAcmWorkOn2_4Ghz();
    EXPECT_THAT(simulator::JournalText(), ElementsAre("vconf_get_int(\"memory/wifi/frequency\" -> 2437)",
                                                      "vconf_get_int(\"memory/acm/networkspeaker_status\" -> 1)"));
}

TEST_F(Boost, TakesASettingThatCannotBeReadAsZero)
{
    SetWifi(5180, 1);
    simulator::FailCall("vconf_get_int", -5, 1);
    EXPECT_TRUE(LynUtil::IsAcmWorkOn2_4Ghz()) << "the frequency counts as 0";

    SetWifi(2437, 1);
    simulator::FailCall("vconf_get_int", -5, 2);
    EXPECT_FALSE(LynUtil::IsAcmWorkOn2_4Ghz()) << "the speaker counts as stopped";
}

// ---- Switching it ------------------------------------------------------------------------------------

TEST_F(Boost, IsOffWhenTheLibraryIsLoaded)
{
    LynUtil::SetBtPerformanceBoost(false);
    EXPECT_THAT(Messages(INFO), ElementsAre("already 0"));
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

TEST_F(Boost, IsSwitchedOnAndOffByThePlatform)
{
    SetWifi(5180, 1);
    LynUtil::SetBtPerformanceBoost(true);
    EXPECT_TRUE(simulator::Alive().boosted);
    EXPECT_THAT(Messages(INFO), ElementsAre(std::string(BOOST) + " : 1"));
    EXPECT_THAT(simulator::JournalText(),
                ElementsAre("vconf_get_int(\"memory/wifi/frequency\" -> 5180)", std::string(BOOST) + "(true)"));

    simulator::ClearLog();
    simulator::ClearJournal();
    LynUtil::SetBtPerformanceBoost(false);
    EXPECT_FALSE(simulator::Alive().boosted);
    EXPECT_THAT(Messages(INFO), ElementsAre(std::string(BOOST) + " : 0"));
    EXPECT_THAT(simulator::JournalText(), ElementsAre(std::string(BOOST) + "(false)"));
}

TEST_F(Boost, IsNotSwitchedTwice)
{
    SetWifi(5180, 0);
    LynUtil::SetBtPerformanceBoost(true);
    simulator::ClearLog();
    simulator::ClearJournal();
    LynUtil::SetBtPerformanceBoost(true);
    EXPECT_THAT(Messages(INFO), ElementsAre("already 1"));
    EXPECT_THAT(simulator::JournalText(), IsEmpty());

    LynUtil::SetBtPerformanceBoost(false);
    simulator::ClearLog();
    simulator::ClearJournal();
    LynUtil::SetBtPerformanceBoost(false);
    EXPECT_THAT(Messages(INFO), ElementsAre("already 0"));
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

TEST_F(Boost, StaysOffWhileTheNetworkSpeakerWorksOnTheSameBand)
{
    SetWifi(2412, 1);
    LynUtil::SetBtPerformanceBoost(true);
    EXPECT_THAT(Messages(INFO), ElementsAre("ACM is working on 2.4Ghz"));
    EXPECT_EQ(CountCalls(BOOST), 0);

    simulator::ClearLog();
    LynUtil::SetBtPerformanceBoost(false);
    EXPECT_THAT(Messages(INFO), ElementsAre("already 0"));
    EXPECT_EQ(CountCalls(BOOST), 0);
}

TEST_F(Boost, IsSwitchedOnAgainOnceTheNetworkSpeakerHasStopped)
{
    SetWifi(2412, 1);
    LynUtil::SetBtPerformanceBoost(true);
    SetWifi(2412, 0);
    LynUtil::SetBtPerformanceBoost(true);
    EXPECT_TRUE(simulator::Alive().boosted);
}

TEST_F(Boost, IsSwitchedOffEvenWhileTheNetworkSpeakerWorksOnTheSameBand)
{
    SetWifi(5180, 0);
    LynUtil::SetBtPerformanceBoost(true);
    SetWifi(2412, 1);
    LynUtil::SetBtPerformanceBoost(false);
    EXPECT_FALSE(simulator::Alive().boosted);
    EXPECT_THAT(simulator::JournalText(), ElementsAre(std::string(BOOST) + "(false)"));
}

TEST_F(Boost, ThatThePlatformRefusesIsLoggedAndTriedAgainByTheNextCall)
{
    SetWifi(5180, 0);
    simulator::FailCall(BOOST, -29359871);
    LynUtil::SetBtPerformanceBoost(true);
    EXPECT_THAT(Messages(INFO), ElementsAre(std::string(BOOST) + " : 1"));
    EXPECT_THAT(Messages(ERROR), ElementsAre("ERROR: " + std::string(BOOST) + " ret -29359871"));
    EXPECT_FALSE(simulator::Alive().boosted);

    LynUtil::SetBtPerformanceBoost(true);
    EXPECT_TRUE(simulator::Alive().boosted);
    EXPECT_EQ(CountCalls(BOOST), 2);

    simulator::FailCall(BOOST, 3);
    LynUtil::SetBtPerformanceBoost(false);
    EXPECT_EQ(Messages(ERROR).back(), "ERROR: " + std::string(BOOST) + " ret 3");
    EXPECT_TRUE(simulator::Alive().boosted);

    LynUtil::SetBtPerformanceBoost(false);
    EXPECT_FALSE(simulator::Alive().boosted);
    EXPECT_EQ(CountCalls(BOOST), 4);
}

}  // namespace
}  // namespace lyn::test
