// SPDX-License-Identifier: Apache-2.0
//
// A request stops the advertisement and the scan first; it is tried whatever becomes of that.
#include <algorithm>
#include <stdexcept>

#include "Common/LynException.h"
#include "service/ServiceTest.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

class PreparationOfARequest : public ServiceTest {
protected:
    // The machine throws this at one event, and runs the work of the others.
    template <typename Exception>
    void FailAt(LynFsmEvent failing, const Exception& exception)
    {
        parts.onEvent = [failing, exception](LynFsmEvent event, const EventArgPtr& arg) {
            if (event == failing) {
                throw exception;
            }
            arg->m_Action();
        };
    }

    void Request() { service->RequestInitiating(KeepResults(), "id", ""); }

    static void ExpectAlreadyStopped()
    {
        const Texts errors = Messages(ERROR);
        const auto isOurs = [](const std::string& line) {
            return line.starts_with("Current time : ") && line.ends_with(", Already stoppted");
        };
        EXPECT_EQ(std::count_if(errors.begin(), errors.end(), isOurs), 1) << ::testing::PrintToString(errors);
    }
};

TEST_F(PreparationOfARequest, SkipsTheScanWhenTheAdvertisementIsNotStopped)
{
    InstallParts();
    FailAt(LYN_FSM_EVENT_STOP_ADVERTISE, LynExceptionInvalidState("Invalid State"));
    Request();
    EXPECT_EQ(TakeCalls(), Texts({"event 6", "event 3", "request 'id' ''"}));
    ExpectAlreadyStopped();
}

TEST_F(PreparationOfARequest, DoesNotMindAScanThatIsNotStopped)
{
    InstallParts();
    FailAt(LYN_FSM_EVENT_STOP_SCAN, LynExceptionOperationFailed("fail to stop scan"));
    Request();
    EXPECT_EQ(TakeCalls(), Texts({"event 6", "stop advertise", "event 1", "event 3", "request 'id' ''"}));
    ExpectAlreadyStopped();
}

TEST_F(PreparationOfARequest, DoesNotMindAnyStandardException)
{
    InstallParts();
    for (const LynFsmEvent event : {LYN_FSM_EVENT_STOP_ADVERTISE, LYN_FSM_EVENT_STOP_SCAN}) {
        SCOPED_TRACE(event);
        simulator::ClearLog();
        FailAt(event, std::runtime_error("something else"));
        EXPECT_NO_THROW(Request());
        EXPECT_EQ(TakeCalls().back(), "request 'id' ''");
        ExpectAlreadyStopped();
    }
}

TEST_F(PreparationOfARequest, LetsAnythingElsePass)
{
    InstallParts();
    FailAt(LYN_FSM_EVENT_STOP_SCAN, 7);
    EXPECT_THROW(Request(), int);
    EXPECT_EQ(TakeCalls(), Texts({"event 6", "stop advertise", "event 1"}));
}

TEST_F(PreparationOfARequest, GuardsOnlyItself)
{
    InstallParts();
    FailAt(LYN_FSM_EVENT_REQUEST_INITIATING, LynExceptionInvalidState("Invalid State"));
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { Request(); }), "Invalid State");
    EXPECT_EQ(TakeCalls(), Texts({"event 6", "stop advertise", "event 1", "stop scan", "event 3"}));
    EXPECT_FALSE(HasLogWith(ERROR, "Already stoppted"));
}

TEST_F(PreparationOfARequest, ReportsReadyWhileScanning)
{
    InstallPartsAndMachine(LYN_STATE_SCANNING);
    Request();
    EXPECT_EQ(TakeCalls(), Texts({"stop advertise", "stop scan", "request 'id' ''"}));
    EXPECT_EQ(told, Texts({"state 0", "state 2"}));
}

TEST_F(PreparationOfARequest, ReportsReadyWhileReady)
{
    InstallPartsAndMachine(LYN_STATE_READY);
    Request();
    EXPECT_EQ(TakeCalls(), Texts({"stop advertise", "stop scan", "request 'id' ''"}));
    EXPECT_EQ(told, Texts({"state 0", "state 2"}));
}

TEST_F(PreparationOfARequest, EndsTheRequestWhileRequesting)
{
    InstallPartsAndMachine(LYN_STATE_REQUESTING);
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { Request(); }), "Invalid State");
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(told.empty());
    const Texts errors = Messages(ERROR);
    ASSERT_EQ(errors.size(), 3U);
    EXPECT_EQ(errors[0], "Invalid State");
    EXPECT_TRUE(errors[1].ends_with(", Already stoppted")) << errors[1];
    EXPECT_EQ(errors[2], "Invalid State");
}

TEST_F(PreparationOfARequest, EndsTheRequestWhileNotReady)
{
    InstallPartsAndMachine(LYN_STATE_NOT_READY);
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { Request(); }), "Invalid State");
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(told.empty());
    ExpectAlreadyStopped();
}

TEST_F(PreparationOfARequest, LeavesTheScanRunningWhenItCannotBeStopped)
{
    parts.stops = false;
    InstallPartsAndMachine(LYN_STATE_SCANNING);
    Request();
    EXPECT_EQ(TakeCalls(), Texts({"stop advertise", "stop scan", "request 'id' ''"}));
    EXPECT_EQ(told, Texts({"state 2"}));
    EXPECT_TRUE(HasLogWith(WARN, "transit to 2 from 1 "));
    ExpectAlreadyStopped();
}

TEST_F(PreparationOfARequest, IsNotUndoneWhenTheRequestFails)
{
    parts.requests = false;
    InstallPartsAndMachine(LYN_STATE_SCANNING);
    EXPECT_EQ(ThrownBy<LynExceptionOperationFailed>([&] { Request(); }), "fail to RequestInitiating");
    EXPECT_EQ(TakeCalls(), Texts({"stop advertise", "stop scan", "request 'id' ''"}));
    EXPECT_EQ(told, Texts({"state 0"}));
}

}  // namespace
}  // namespace lyn::test
