// SPDX-License-Identifier: Apache-2.0
//
// Starting, stopping and requesting take turns, and none of them begins inside a report that it would move.
#include <future>
#include <thread>

#include "Common/LynException.h"
#include "service/ServiceTest.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

constexpr const char* kTooEarly = "Invalid State: the state callback has not returned, use g_idle_add()";

class Turns : public ServiceTest {
protected:
    void Request(const std::string& mark = "result") { service->RequestInitiating(KeepResults(mark), "id", ""); }
};

TEST_F(Turns, AreRefusedWhenTheMachineSaysThatItIsTooEarly)
{
    InstallParts();
    parts.tooEarly = true;
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { service->StartScan(KeepDevices()); }), kTooEarly);
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { service->StopScan(); }), kTooEarly);
    EXPECT_EQ(ThrownBy<LynExceptionInvalidState>([&] { Request(); }), kTooEarly);
    EXPECT_EQ(parts.askedTooEarly,
              std::vector({LYN_FSM_EVENT_START_SCAN, LYN_FSM_EVENT_STOP_SCAN, LYN_FSM_EVENT_REQUEST_INITIATING}));
    EXPECT_EQ(TakeCalls(), Texts());
    EXPECT_EQ(parts.callEnds, 0) << "no request has begun";
    EXPECT_TRUE(Messages(ERROR).empty()) << "the C interface says it, once";
}

TEST_F(Turns, AreNotAskedForByAnAdvertisement)
{
    InstallParts();
    parts.tooEarly = true;
    service->StartAdvertisement(50);
    service->StopAdvertisement();
    EXPECT_TRUE(parts.askedTooEarly.empty());
    EXPECT_EQ(TakeCalls(), Texts({"event 5", "start advertise 50", "event 6", "stop advertise"}));
}

TEST_F(Turns, ThatAreRefusedStoreNoCallback)
{
    InstallParts();
    service->StartScan(KeepDevices("first"));
    Request("first");
    parts.tooEarly = true;
    EXPECT_THROW(service->StartScan(KeepDevices("second")), LynExceptionInvalidState);
    EXPECT_THROW(Request("second"), LynExceptionInvalidState);
    lyn_device_info_t info{};
    info.address = "AA";
    service->OnDeviceFound(info);
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(told, Texts({"first AA", "first 0"}));
}

TEST_F(Turns, LookAtTheirArgumentsFirst)
{
    InstallParts();
    parts.tooEarly = true;
    EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { service->StartScan(nullptr); }), "DeviceFoundCb is NULL");
    EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { service->RequestInitiating(nullptr, "id", ""); }),
              "RequestInitiatingResultCb is NULL");
}

TEST_F(Turns, NestOnTheirOwnThread)
{
    InstallParts();
    parts.onEvent = [&](LynFsmEvent, const EventArgPtr& arg) {
        parts.onEvent = nullptr;
        service->StopScan();
        Request();
        arg->m_Action();
    };
    service->StartScan(KeepDevices());
    EXPECT_EQ(TakeCalls(), Texts({"event 0", "event 1", "stop scan", "event 6", "stop advertise", "event 1",
                                  "stop scan", "event 3", "request 'id' ''", "start scan"}));
}

TEST_F(Turns, OfTwoThreadsComeOneAfterTheOther)
{
    InstallParts();
    std::thread other;
    std::promise<void> onItsWay;
    parts.onRequest = [&] {
        other = std::thread([&] {
            onItsWay.set_value();
            service->StartScan(KeepDevices());
        });
        onItsWay.get_future().wait();
        for (int chance = 0; chance < 1000; ++chance) {
            std::this_thread::yield();
        }
        parts.Add("end of the request");
    };
    parts.onCallEnd = [&] { parts.Add("end of the call"); };
    Request();
    other.join();
    EXPECT_EQ(TakeCalls(),
              Texts({"event 6", "stop advertise", "event 1", "stop scan", "event 3", "request 'id' ''",
                     "end of the request", "end of the call", "event 0", "start scan"}));
}

TEST_F(Turns, AreNotTakenByAdvertisementsReportsVersionTypeAndRetirement)
{
    InstallParts();
    service->StartScan(KeepDevices());
    TakeCalls();
    parts.onRequest = [&] {
        std::thread([&] {
            service->StartAdvertisement(50);
            service->StopAdvertisement();
            service->SetNodlinkVersion("3.0");
            service->GetNodlinkType();
            service->GetRequestIntiatingErrorString(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
            lyn_device_info_t info{};
            info.address = "AA";
            service->OnDeviceFound(info);
            service->OnScanStateChangedCallback(SCAN_STATE_STOPPED);
            service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
            service->Retire();
        }).join();
    };
    Request();
    EXPECT_EQ(TakeCalls(),
              Texts({"event 6", "stop advertise", "event 1", "stop scan", "event 3", "request 'id' ''", "event 5",
                     "start advertise 50", "event 6", "stop advertise", "version 3.0", "event 2", "event 4"}));
    EXPECT_EQ(told, Texts({"found AA", "result 0"}));
    EXPECT_EQ(parts.retirements, 1);
}

}  // namespace
}  // namespace lyn::test
