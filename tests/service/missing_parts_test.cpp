// SPDX-License-Identifier: Apache-2.0
//
// A service that has not got its parts yet, or has parts that say no.
#include "Common/LynException.h"
#include "service/ServiceTest.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

class MissingParts : public ServiceTest {
protected:
    // Fails the test unless the work throws this, logged last with the same text.
    template <typename E>
    static void ExpectFailure(const std::string& message, const std::function<void()>& work)
    {
        SCOPED_TRACE(message);
        simulator::ClearLog();
        EXPECT_EQ(ThrownBy<E>(work), message);
        ASSERT_FALSE(Messages(ERROR).empty());
        EXPECT_EQ(Messages(ERROR).back(), message);
        EXPECT_EQ(CountLog(ERROR, message), 1);
    }

    lyn_device_info_t m_info{};
};

TEST_F(MissingParts, RefuseEveryOperationWithoutAStateMachine)
{
    ExpectFailure<LynExceptionInternal>("m_pFsm is NULL", [&] { service->StartScan(KeepDevices()); });
    ExpectFailure<LynExceptionInternal>("m_pFsm is NULL", [&] { service->StopScan(); });
    ExpectFailure<LynExceptionInternal>("m_pFsm is NULL", [&] { service->StartAdvertisement(50); });
    ExpectFailure<LynExceptionInternal>("m_pFsm is NULL", [&] { service->StopAdvertisement(); });
    ExpectFailure<LynExceptionInternal>(
        "m_pFsm is NULL", [&] { service->ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, std::make_shared<EventArg>()); });
}

TEST_F(MissingParts, RefuseARequestWithoutAStateMachineAfterItsPreparation)
{
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->RequestInitiating(KeepResults(), "id", ""); }),
              "m_pFsm is NULL");
    const Texts errors = Messages(ERROR);
    ASSERT_EQ(errors.size(), 3U);
    EXPECT_EQ(errors[0], "m_pFsm is NULL");
    EXPECT_TRUE(errors[1].ends_with(", Already stoppted")) << errors[1];
    EXPECT_EQ(errors[2], "m_pFsm is NULL");
}

TEST_F(MissingParts, RefuseTheWorkOfAScanWithoutAScanner)
{
    ExpectFailure<LynExceptionInternal>("m_pScanner is NULL", [&] { service->OnStartScan(); });
    ExpectFailure<LynExceptionInternal>("m_pScanner is NULL", [&] { service->OnStopScan(); });
    ExpectFailure<LynExceptionInternal>("m_pScanner is NULL", [&] { service->OnStartAdvertisement(50); });
    ExpectFailure<LynExceptionInternal>("m_pScanner is NULL", [&] { service->OnStopAdvertisement(); });
}

TEST_F(MissingParts, RefuseTheWorkOfARequestWithoutARequester)
{
    ExpectFailure<LynExceptionInternal>("m_pRequester is NULL", [&] { service->OnRequestInitiating("id", ""); });
    ExpectFailure<LynExceptionInternal>("m_pRequester == nullptr", [&] { service->SetNodlinkVersion("2.0"); });
    ExpectFailure<LynExceptionInternal>("m_pRequester is NULL", [&] { service->GetNodlinkType(); });
}

TEST_F(MissingParts, LeaveTheStateAsItIs)
{
    service->Init();
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->StartScan(KeepDevices()); }), "m_pScanner is NULL");
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->RequestInitiating(KeepResults(), "id", ""); }),
              "m_pRequester is NULL");
    EXPECT_TRUE(told.empty());
}

TEST_F(MissingParts, DropReportsOfAScanThatHasStopped)
{
    EXPECT_NO_THROW(service->OnScanStateChangedCallback(SCAN_STATE_STOPPED));
    EXPECT_TRUE(HasLogWith(ERROR, "m_pFsm is NULL"));
}

TEST_F(MissingParts, DropTheResultOfARequest)
{
    EXPECT_NO_THROW(service->OnRequestResult(LYN_REQUEST_INITIATING_RESULT_SUCCESS));
    EXPECT_TRUE(HasLog(ERROR, "exception : m_pFsm is NULL"));
}

TEST_F(MissingParts, AreNotNeededForAFoundPhone)
{
    EXPECT_THROW(service->StartScan(KeepDevices()), LynExceptionInternal);
    m_info.address = "AA";
    service->OnDeviceFound(m_info);
    EXPECT_EQ(told, Texts({"found AA"}));
}

TEST_F(MissingParts, ThatSayNoFailTheOperation)
{
    parts.scans = parts.stops = parts.requests = false;
    InstallParts();
    ExpectFailure<LynExceptionOperationFailed>("fail to start scan", [&] { service->OnStartScan(); });
    ExpectFailure<LynExceptionOperationFailed>("fail to stop scan", [&] { service->OnStopScan(); });
    ExpectFailure<LynExceptionOperationFailed>("fail to RequestInitiating",
                                               [&] { service->OnRequestInitiating("id", ""); });
    EXPECT_EQ(TakeCalls(), Texts({"start scan", "stop scan", "request 'id' ''"})) << "each is asked once";
}

TEST_F(MissingParts, ThatSayNoKeepTheState)
{
    parts.scans = parts.stops = parts.requests = false;
    InstallPartsAndMachine();
    ExpectFailure<LynExceptionOperationFailed>("fail to start scan", [&] { service->StartScan(KeepDevices()); });
    ExpectFailure<LynExceptionOperationFailed>("fail to stop scan", [&] { service->StopScan(); });
    ExpectFailure<LynExceptionOperationFailed>("fail to RequestInitiating",
                                               [&] { service->RequestInitiating(KeepResults(), "id", ""); });
    EXPECT_TRUE(told.empty());
}

}  // namespace
}  // namespace lyn::test
