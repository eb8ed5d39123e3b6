// SPDX-License-Identifier: Apache-2.0
//
// The end of a service: its parts go with it, each once, and nothing is told afterwards.
#include "Common/LynException.h"
#include "service/ServiceTest.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

using ServiceDestruction = ServiceTest;

TEST_F(ServiceDestruction, DeletesScannerRequesterAndStateMachineInThisOrder)
{
    InstallParts();
    service.reset();
    EXPECT_EQ(TakeCalls(), Texts({"delete scanner", "delete requester", "deinit fsm", "delete fsm"}));
}

TEST_F(ServiceDestruction, LogsTheReleaseOfEachPart)
{
    InstallParts();
    service.reset();
    EXPECT_EQ(Messages(DEBUG), Texts({"in custom deleter of IScanner", "in custom deleter of IRequester",
                                      "in custom deleter of IServiceFSM"}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(ServiceDestruction, NeedsNoParts)
{
    service.reset();
    EXPECT_TRUE(LogLines().empty());
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(ServiceDestruction, TouchesNothingOnThePlatform)
{
    InstallPartsAndMachine();
    service->StartScan(KeepDevices());
    service.reset();
    EXPECT_TRUE(simulator::JournalText().empty());
    EXPECT_EQ(TakeCalls(), Texts({"start scan", "delete scanner", "delete requester"}))
        << "the scan is not stopped";
}

TEST_F(ServiceDestruction, TellsNoStateAnyMore)
{
    InstallParts();
    const StateChangedCb report = fsm->report;
    ASSERT_TRUE(report);
    service.reset();
    report(LYN_STATE_SCANNING);
    EXPECT_TRUE(told.empty());
}

TEST_F(ServiceDestruction, TakesEffectAtOnceInsideTheReportOfAState)
{
    InstallParts();
    Texts calls;
    onState = [&](lyn_state_e) {
        service.reset();
        calls = TakeCalls();
    };
    const StateChangedCb report = fsm->report;
    report(LYN_STATE_READY);
    EXPECT_EQ(calls, Texts({"delete scanner", "delete requester", "deinit fsm", "delete fsm"}));
    EXPECT_EQ(told, Texts({"state 0"}));
}

TEST_F(ServiceDestruction, KeepsTheStateMachineThroughTheEventThatEndsTheService)
{
    InstallParts();
    parts.onEvent = [&](LynFsmEvent, const EventArgPtr&) {
        service.reset();
        EXPECT_EQ(TakeCalls().back(), "delete requester") << "the machine is at work";
    };
    CService* const doomed = service.get();
    doomed->ProcessEvent(LYN_FSM_EVENT_SCAN_STOPPED, nullptr);
    EXPECT_EQ(TakeCalls(), Texts({"deinit fsm", "delete fsm"}));
}

}  // namespace
}  // namespace lyn::test
