// SPDX-License-Identifier: Apache-2.0
//
// What the parts report to a service, and what the application is told of it.
#include <stdexcept>

#include "Common/LynException.h"
#include "service/ServiceTest.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

constexpr lyn_state_e kStates[] = {LYN_STATE_READY, LYN_STATE_SCANNING, LYN_STATE_REQUESTING, LYN_STATE_NOT_READY};

class ServiceReports : public ServiceTest {
protected:
    void Find(const char* address)
    {
        lyn_device_info_t info{};
        info.address = address;
        service->OnDeviceFound(info);
    }

    void Request(const std::string& mark = "result") { service->RequestInitiating(KeepResults(mark), "id", ""); }
};

TEST_F(ServiceReports, OfAPhoneAreDroppedWithoutACallback)
{
    InstallParts();
    Find("AA");
    EXPECT_EQ(Messages(ERROR), Texts({"m_DeviceFoundCb is NULL"}));
    EXPECT_TRUE(told.empty());
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(ServiceReports, OfAPhoneComeAsTheyAreInWhateverState)
{
    InstallPartsAndMachine();
    const lyn_device_info_t info = {"name", "address", "unique", "extra", -77};
    const lyn_device_info_t* seen = nullptr;
    service->StartScan([&](const lyn_device_info_t& given) { seen = &given; });
    for (const lyn_state_e state : kStates) {
        Enter(state);
        seen = nullptr;
        service->OnDeviceFound(info);
        EXPECT_EQ(seen, &info) << state;
        EXPECT_TRUE(told.empty());
        EXPECT_TRUE(Messages(WARN).empty()) << "the machine was asked";
    }
}

TEST_F(ServiceReports, OfAPhoneGoToTheLatestCallbackAlsoOfARefusedScan)
{
    InstallPartsAndMachine();
    service->StartScan(KeepDevices("first"));
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { service->StartScan(KeepDevices("second")); }),
              "Invalid State");
    Find("AA");
    EXPECT_EQ(told, Texts({"state 1", "second AA"}));
}

TEST_F(ServiceReports, OfAPhoneStayWithTheirCallbackWhenAnEmptyOneIsRefused)
{
    InstallPartsAndMachine();
    service->StartScan(KeepDevices("first"));
    EXPECT_THROW(service->StartScan(nullptr), LynExceptionInvalidParam);
    Find("AA");
    EXPECT_EQ(told, Texts({"state 1", "first AA"}));
}

TEST_F(ServiceReports, OfAPhoneGoOnAfterTheScan)
{
    InstallPartsAndMachine();
    service->StartScan(KeepDevices());
    service->StopScan();
    Find("AA");
    EXPECT_EQ(told, Texts({"state 1", "state 0", "found AA"}));
}

TEST_F(ServiceReports, OfAScanThatStoppedRaiseTheirEvent)
{
    InstallParts();
    service->OnScanStateChangedCallback(SCAN_STATE_STOPPED);
    EXPECT_EQ(TakeCalls(), Texts({"event 2"}));
}

TEST_F(ServiceReports, OfAnyOtherScanStateRaiseNone)
{
    InstallParts();
    for (const int state : {1, 2, -1}) {
        service->OnScanStateChangedCallback(static_cast<ScanState>(state));
    }
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(LogLines().empty());
}

TEST_F(ServiceReports, OfAScanThatStoppedLeadToReady)
{
    InstallPartsAndMachine(LYN_STATE_SCANNING);
    service->OnScanStateChangedCallback(SCAN_STATE_STOPPED);
    EXPECT_EQ(told, Texts({"state 0"}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(ServiceReports, OfAScanThatStoppedAreSwallowedWhereTheyAreRefused)
{
    InstallPartsAndMachine();
    for (const lyn_state_e state : {LYN_STATE_READY, LYN_STATE_REQUESTING, LYN_STATE_NOT_READY}) {
        SCOPED_TRACE(state);
        Enter(state);
        EXPECT_NO_THROW(service->OnScanStateChangedCallback(SCAN_STATE_STOPPED));
        EXPECT_TRUE(told.empty());
        ASSERT_EQ(Messages(ERROR).size(), 2U);
        EXPECT_EQ(Messages(ERROR)[0], "Invalid State");
        EXPECT_NE(Messages(ERROR)[1].find("Invalid State"), std::string::npos);
    }
}

TEST_F(ServiceReports, OfAResultRaiseTheirEventBeforeTheCallback)
{
    InstallParts();
    Request();
    TakeCalls();
    parts.onEvent = [&](LynFsmEvent event, const EventArgPtr&) {
        EXPECT_EQ(event, LYN_FSM_EVENT_REQUEST_INITIATING_RESULT);
        EXPECT_TRUE(told.empty());
    };
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_CONNECTED);
    EXPECT_EQ(TakeCalls(), Texts({"event 4"}));
    EXPECT_EQ(told, Texts({"result 6"}));
}

TEST_F(ServiceReports, OfAResultComeAfterReady)
{
    InstallPartsAndMachine();
    Request();
    told.clear();
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_NOT_TAP);
    EXPECT_EQ(told, Texts({"state 0", "result 8"}));
}

TEST_F(ServiceReports, OfAResultWithoutACallbackAreLoggedAfterTheEvent)
{
    InstallPartsAndMachine(LYN_STATE_REQUESTING);
    EXPECT_NO_THROW(service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS));
    EXPECT_EQ(told, Texts({"state 0"}));
    EXPECT_EQ(Messages(ERROR), Texts({"m_RequestResultCb is NULL"}));
}

TEST_F(ServiceReports, OfAResultAreLostWhereTheyAreRefused)
{
    InstallPartsAndMachine();
    Request();
    for (const lyn_state_e state : {LYN_STATE_READY, LYN_STATE_SCANNING, LYN_STATE_NOT_READY}) {
        SCOPED_TRACE(state);
        Enter(state);
        EXPECT_NO_THROW(service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS));
        EXPECT_TRUE(told.empty());
        EXPECT_EQ(Messages(ERROR), Texts({"Invalid State", "exception : Invalid State"}));
    }
}

TEST_F(ServiceReports, OfAResultAreLostWhenTheEventFailsInAnotherWay)
{
    InstallParts();
    Request();
    parts.onEvent = [](LynFsmEvent, const EventArgPtr&) { throw std::runtime_error("something else"); };
    EXPECT_NO_THROW(service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS));
    EXPECT_TRUE(told.empty());
    EXPECT_EQ(Messages(ERROR), Texts({"exception : something else"}));
}

TEST_F(ServiceReports, OfAResultGoToTheLatestCallbackAlsoOfARefusedRequest)
{
    InstallPartsAndMachine();
    Request("first");
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { Request("second"); }), "Invalid State");
    told.clear();
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(told, Texts({"state 0", "second 0"}));
}

TEST_F(ServiceReports, OfAResultStayWithTheirCallbackWhenAnEmptyOneIsRefused)
{
    InstallPartsAndMachine();
    Request("first");
    EXPECT_THROW(service->RequestInitiating(nullptr, "id", ""), LynExceptionInvalidParam);
    told.clear();
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(told, Texts({"state 0", "first 0"}));
}

TEST_F(ServiceReports, OfAResultMayComeAsSoonAsTheCallThatStartsTheRequestHasDoneItsWork)
{
    InstallPartsAndMachine();
    parts.onRequest = [&] { EXPECT_EQ(parts.callEnds, 0); };
    parts.onCallEnd = [&] {
        EXPECT_EQ(told, Texts({"state 0", "state 2"}));
        service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    };
    Request();
    EXPECT_EQ(parts.callEnds, 1);
    EXPECT_EQ(told, Texts({"state 0", "state 2", "state 0", "result 0"}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(ServiceReports, OfAResultAreWaitedForNoLongerHoweverTheCallEnds)
{
    InstallPartsAndMachine();
    parts.requests = false;
    EXPECT_THROW(Request(), LynExceptionOperationFailed);
    EXPECT_EQ(parts.callEnds, 1);
    parts.onRequest = [] { throw 7; };
    EXPECT_THROW(Request(), int);
    EXPECT_EQ(parts.callEnds, 2);
    Enter(LYN_STATE_REQUESTING);
    EXPECT_THROW(Request(), LynExceptionInvalidState);
    EXPECT_EQ(parts.callEnds, 3);
}

TEST_F(ServiceReports, OfAResultOfAnEarlierRequestAreNone)
{
    InstallPartsAndMachine();
    Request();
    told.clear();
    simulator::ClearLog();
    parts.resultIsOfLatest = false;
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_TRUE(told.empty());
    EXPECT_TRUE(LogLines().empty());
    parts.resultIsOfLatest = true;
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_CONNECTED);
    EXPECT_EQ(told, Texts({"state 0", "result 6"}));
}

TEST_F(ServiceReports, OfAResultRaiseTheirEventForTheMovesFromBeforeItWasFoundToBeOfTheLatestRequest)
{
    InstallParts();
    Request();
    parts.moves = 17;
    parts.onIsResultOfLatest = [&] { parts.moves = 18; };
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(parts.movesGiven, 17U);
}

TEST_F(ServiceReports, OfAResultAreLostWhenTheMachineMovesAtTheLastMoment)
{
    InstallPartsAndMachine();
    Request();
    Enter(LYN_STATE_REQUESTING);
    // As when Bluetooth goes off and on, and a worker asks another phone.
    parts.onIsResultOfLatest = [&] {
        machine->TransitState(LYN_STATE_NOT_READY);
        machine->TransitState(LYN_STATE_REQUESTING);
    };
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(told, Texts({"state 3", "state 2"})) << "that request goes on";
    EXPECT_EQ(Messages(ERROR), Texts({"Invalid State", "exception : Invalid State"}));
}

TEST_F(ServiceReports, OfAStateAreToldAsTheyCome)
{
    for (const lyn_state_e state : kStates) {
        simulator::ClearLog();
        service->OnStateChanged(state);
        EXPECT_EQ(told.back(), "state " + std::to_string(state));
        EXPECT_TRUE(HasLogWith(INFO, std::to_string(state)));
    }
    EXPECT_EQ(told.size(), 4U);
}

TEST_F(ServiceReports, OfAStateWithoutACallbackAreLogged)
{
    CService deaf("deaf", nullptr);
    EXPECT_NO_THROW(deaf.OnStateChanged(LYN_STATE_SCANNING));
    EXPECT_EQ(Messages(ERROR), Texts({"m_StateChangeCb is null"}));
    EXPECT_TRUE(HasLogWith(INFO, "1"));
}

TEST_F(ServiceReports, OfAStateWithoutACallbackDoNotKeepTheMachineFromMoving)
{
    service = MakeService(nullptr);
    InstallPartsAndMachine();
    service->StartScan(KeepDevices());
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { service->StartScan(KeepDevices()); }), "Invalid State");
    service->StopScan();
    EXPECT_EQ(CountLog(ERROR, "m_StateChangeCb is null"), 2);
}

}  // namespace
}  // namespace lyn::test
