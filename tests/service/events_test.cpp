// SPDX-License-Identifier: Apache-2.0
//
// Which events an operation raises, and what work they carry.
#include <regex>

#include "Common/LynException.h"
#include "service/ServiceTest.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

class ServiceEvents : public ServiceTest {
protected:
    ServiceEvents() { InstallParts(); }
};

TEST_F(ServiceEvents, CarryTheirWork)
{
    service->StartScan(KeepDevices());
    EXPECT_EQ(TakeCalls(), Texts({"event 0", "start scan"}));
    service->StopScan();
    EXPECT_EQ(TakeCalls(), Texts({"event 1", "stop scan"}));
    service->StartAdvertisement(150);
    EXPECT_EQ(TakeCalls(), Texts({"event 5", "start advertise 150"}));
    service->StartAdvertisement(-1);
    EXPECT_EQ(TakeCalls(), Texts({"event 5", "start advertise -1"}));
    service->StopAdvertisement();
    EXPECT_EQ(TakeCalls(), Texts({"event 6", "stop advertise"}));
}

TEST_F(ServiceEvents, OfARequestStopTheAdvertisementThenTheScan)
{
    service->RequestInitiating(KeepResults(), "AA:BB", "{\"a\":1}");
    EXPECT_EQ(TakeCalls(), Texts({"event 6", "stop advertise", "event 1", "stop scan", "event 3",
                                  "request 'AA:BB' '{\"a\":1}'"}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(ServiceEvents, OfARequestCarryEmptyTexts)
{
    service->RequestInitiating(KeepResults(), "", "");
    EXPECT_EQ(TakeCalls().back(), "request '' ''");
}

TEST_F(ServiceEvents, HaveAnArgumentEach)
{
    std::vector<EventArgPtr> seen;
    parts.onEvent = [&](LynFsmEvent, const EventArgPtr& arg) {
        ASSERT_TRUE(arg);
        EXPECT_TRUE(arg->m_Action);
        for (const EventArgPtr& earlier : seen) {
            EXPECT_NE(earlier, arg);
        }
        seen.push_back(arg);
    };
    service->StartScan(KeepDevices());
    service->StopScan();
    service->RequestInitiating(KeepResults(), "id", "");
    service->StartAdvertisement(50);
    service->StopAdvertisement();
    EXPECT_EQ(seen.size(), 7U);
}

TEST_F(ServiceEvents, RunNoWorkOfTheirOwn)
{
    parts.onEvent = [](LynFsmEvent, const EventArgPtr&) {};
    service->StartScan(KeepDevices());
    service->StopScan();
    service->RequestInitiating(KeepResults(), "id", "");
    service->StartAdvertisement(50);
    service->StopAdvertisement();
    EXPECT_EQ(TakeCalls(), Texts({"event 0", "event 1", "event 6", "event 1", "event 3", "event 5", "event 6"}));
}

TEST_F(ServiceEvents, ReachTheMachineAsTheyAreGiven)
{
    const auto given = std::make_shared<EventArg>();
    EventArgPtr reached;
    parts.onEvent = [&](LynFsmEvent, const EventArgPtr& arg) { reached = arg; };
    service->ProcessEvent(LYN_FSM_EVENT_SCAN_STOPPED, given);
    EXPECT_EQ(TakeCalls(), Texts({"event 2"}));
    EXPECT_EQ(reached, given);
}

TEST_F(ServiceEvents, AreRefusedToTheCaller)
{
    parts.onEvent = [](LynFsmEvent, const EventArgPtr&) { throw LynExceptionInvalidState("Invalid State"); };
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { service->StartScan(KeepDevices()); }), "Invalid State");
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { service->StopScan(); }), "Invalid State");
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { service->StartAdvertisement(50); }), "Invalid State");
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { service->StopAdvertisement(); }), "Invalid State");
}

TEST_F(ServiceEvents, AreNotRaisedForAScanWithoutACallback)
{
    EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { service->StartScan(nullptr); }), "DeviceFoundCb is NULL");
    EXPECT_EQ(Messages(ERROR), Texts({"DeviceFoundCb is NULL"}));
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(ServiceEvents, AreNotRaisedForARequestWithoutACallback)
{
    EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { service->RequestInitiating(nullptr, "id", "x"); }),
              "RequestInitiatingResultCb is NULL");
    EXPECT_EQ(Messages(ERROR), Texts({"RequestInitiatingResultCb is NULL"}));
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(HasLogWith(INFO, ", device address : id, extra data : x"));
}

TEST_F(ServiceEvents, OfARequestComeAfterALineWithTheTimeAndTheArguments)
{
    parts.onEvent = [](LynFsmEvent, const EventArgPtr&) {
        const Texts lines = Messages(INFO);
        ASSERT_EQ(lines.size(), 1U);
        EXPECT_TRUE(std::regex_match(
            lines[0],
            std::regex("Current time : \\w{3} \\w{3} [ \\d]\\d \\d\\d:\\d\\d:\\d\\d \\d{4}, device address : "
                       "AA:BB:CC:DD:EE:01, extra data : \\{\"a\":1\\}")))
            << lines[0];
    };
    service->RequestInitiating(KeepResults(), "AA:BB:CC:DD:EE:01", "{\"a\":1}");
    EXPECT_EQ(parts.calls.size(), 3U);
}

TEST_F(ServiceEvents, AreNotNeededForTheNodlinkControls)
{
    parts.nodlinkType = 2;
    EXPECT_EQ(service->GetNodlinkType(), 2);
    service->SetNodlinkVersion("3.0");
    service->SetNodlinkVersion("anything");
    EXPECT_EQ(TakeCalls(), Texts({"version 3.0", "version anything"}));
    EXPECT_TRUE(HasLogWith(INFO, "3.0"));
    EXPECT_TRUE(HasLogWith(INFO, "anything"));
}

}  // namespace
}  // namespace lyn::test
