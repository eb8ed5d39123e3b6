// SPDX-License-Identifier: Apache-2.0
//
// A service that the application has destroyed and that a call still holds: it refuses everything and tells
// nothing.
#include "Common/LynException.h"
#include "service/ServiceTest.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

class RetiredService : public ServiceTest {
protected:
    void Request() { service->RequestInitiating(KeepResults(), "AA:BB:CC:DD:EE:01", ""); }

    // Fails the test unless the work is refused in an invalid state, with that as the last line.
    template <typename Work>
    static void ExpectRefused(const Work& work)
    {
        simulator::ClearLog();
        EXPECT_EQ(ThrownBy<LynExceptionInvalidState>(work), "Invalid State");
        ASSERT_FALSE(Messages(ERROR).empty());
        EXPECT_EQ(Messages(ERROR).back(), "Invalid State");
    }
};

TEST_F(RetiredService, RefusesEveryEvent)
{
    InstallParts();
    service->Retire();
    ExpectRefused([&] { service->StartScan(KeepDevices()); });
    ExpectRefused([&] { service->StopScan(); });
    ExpectRefused([&] { Request(); });
    ExpectRefused([&] { service->StartAdvertisement(50); });
    ExpectRefused([&] { service->StopAdvertisement(); });
    ExpectRefused([&] { service->ProcessEvent(LYN_FSM_EVENT_SCAN_STOPPED, std::make_shared<EventArg>()); });
    EXPECT_EQ(TakeCalls(), Texts());
}

TEST_F(RetiredService, RefusesEveryEventInAnInvalidStateAlsoWithoutParts)
{
    service->Retire();
    ExpectRefused([&] { service->StopScan(); });
    ExpectRefused([&] { service->StartAdvertisement(50); });
    EXPECT_FALSE(HasLogWith(ERROR, "m_pFsm"));
}

TEST_F(RetiredService, RetiresItsRequester)
{
    InstallParts();
    service->Retire();
    EXPECT_EQ(parts.retirements, 1);
}

TEST_F(RetiredService, FailsTheWorkThatItHasOvertakenInAnInvalidState)
{
    InstallParts();
    service->Retire();
    parts.scans = parts.stops = parts.requests = false;  // As parts say no to a service that is gone.
    ExpectRefused([&] { service->OnStartScan(); });
    ExpectRefused([&] { service->OnStopScan(); });
    ExpectRefused([&] { service->OnRequestInitiating("AA:BB:CC:DD:EE:01", ""); });
}

TEST_F(RetiredService, EndsARequestThatItOvertakesInAnInvalidState)
{
    InstallPartsAndMachine();
    parts.onRequest = [&] {
        service->Retire();
        parts.requests = false;
    };
    ExpectRefused([&] { Request(); });
    EXPECT_EQ(told, Texts({"state 0"})) << "from before";
    EXPECT_EQ(parts.callEnds, 1);
}

TEST_F(RetiredService, SaysNothingOfAStartThatItOvertakes)
{
    InstallPartsAndMachine();
    class Overtaken : public FakeScanner {
    public:
        Overtaken(Parts& parts, CService& service) : FakeScanner(parts), m_service(service) {}
        bool StartScan() override
        {
            m_service.Retire();
            return true;
        }

    private:
        CService& m_service;
    };
    service->SetScanner(new Overtaken(parts, *service));
    EXPECT_NO_THROW(service->StartScan(KeepDevices()));
    EXPECT_TRUE(told.empty());
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(RetiredService, TellsNothing)
{
    InstallParts();
    service->StartScan(KeepDevices());
    Request();
    TakeCalls();
    service->Retire();
    simulator::ClearLog();
    for (const lyn_state_e state :
         {LYN_STATE_READY, LYN_STATE_SCANNING, LYN_STATE_REQUESTING, LYN_STATE_NOT_READY}) {
        fsm->report(state);
        service->OnStateChanged(state);
    }
    lyn_device_info_t info{};
    info.address = "AA:BB:CC:DD:EE:01";
    service->OnDeviceFound(info);
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(told, Texts());
    EXPECT_EQ(TakeCalls(), Texts());
    EXPECT_TRUE(LogLines().empty());
    EXPECT_NO_THROW(service->OnScanStateChangedCallback(SCAN_STATE_STOPPED));
    EXPECT_EQ(TakeCalls(), Texts());
}

TEST_F(RetiredService, TellsNoResultWhenItGoesAtReady)
{
    InstallPartsAndMachine();
    Request();
    told.clear();
    onState = [&](lyn_state_e) { service->Retire(); };
    service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(told, Texts({"state 0"}));
}

TEST_F(RetiredService, TellsNoResultWhenItIsReleasedAtReady)
{
    InstallPartsAndMachine();
    Request();
    told.clear();
    onState = [&](lyn_state_e) {
        service->Retire();
        service.reset();
    };
    const std::shared_ptr<CService> caller = service;
    caller->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(told, Texts({"state 0"}));
}

TEST_F(RetiredService, LetsItsPartsGoWithTheLastWhoHoldsIt)
{
    InstallParts();
    std::shared_ptr<CService> caller = service;
    service->Retire();
    service.reset();
    EXPECT_EQ(TakeCalls(), Texts());
    caller.reset();
    EXPECT_EQ(TakeCalls(), Texts({"delete scanner", "delete requester", "deinit fsm", "delete fsm"}));
}

TEST_F(RetiredService, MayBeRetiredAgain)
{
    InstallParts();
    service->Retire();
    EXPECT_NO_THROW(service->Retire());
    ExpectRefused([&] { service->StopScan(); });
}

}  // namespace
}  // namespace lyn::test
