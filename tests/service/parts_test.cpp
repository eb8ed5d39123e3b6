// SPDX-License-Identifier: Apache-2.0
//
// A service's name, handle and parts: how they are installed and replaced.
#include <algorithm>
#include <type_traits>

#include "Common/LynException.h"
#include "service/ServiceTest.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

using ServiceParts = ServiceTest;

TEST_F(ServiceParts, ComeWithANameAndAHandleThatIsTheAddress)
{
    EXPECT_EQ(service->GetServiceName(), "some service");
    EXPECT_EQ(service->GetHandle(), static_cast<void*>(static_cast<IService*>(service.get())));
    EXPECT_EQ(service->GetHandle(), static_cast<void*>(service.get()));
}

TEST_F(ServiceParts, BelongToAnObjectThatIsNotCopied)
{
    static_assert(!std::is_copy_constructible_v<CService>);
    static_assert(!std::is_copy_assignable_v<CService>);
    static_assert(std::has_virtual_destructor_v<IService>);
}

TEST_F(ServiceParts, AreNeverNull)
{
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->SetFsm(nullptr); }), "pFsm is NULL");
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->SetRequester(nullptr); }), "pRequester is NULL");
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { service->SetScanner(nullptr); }), "pScanner is NULL");
    EXPECT_EQ(Messages(ERROR), Texts({"pFsm is NULL", "pRequester is NULL", "pScanner is NULL"}));
}

TEST_F(ServiceParts, StayWhenNullIsGiven)
{
    InstallParts();
    EXPECT_THROW(service->SetFsm(nullptr), LynExceptionInternal);
    EXPECT_THROW(service->SetRequester(nullptr), LynExceptionInternal);
    EXPECT_THROW(service->SetScanner(nullptr), LynExceptionInternal);
    EXPECT_TRUE(TakeCalls().empty());
    service->StopScan();
    EXPECT_EQ(TakeCalls(), Texts({"event 1", "stop scan"}));
}

TEST_F(ServiceParts, AreInitialisedOnlyWhereTheyAreAStateMachine)
{
    service->SetScanner(new FakeScanner(parts));
    service->SetRequester(new FakeRequester(parts));
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_EQ(service->SetFsm(new FakeFsm(parts)), LYN_ERROR_NONE);
    EXPECT_EQ(TakeCalls(), Texts({"init fsm"}));
    EXPECT_TRUE(told.empty());
}

TEST_F(ServiceParts, ReportTheStateThroughTheCallbackOfTheirInit)
{
    InstallParts();
    ASSERT_TRUE(fsm->report);
    for (const int state : {0, 1, 2, 3}) {
        fsm->report(static_cast<lyn_state_e>(state));
    }
    EXPECT_EQ(told, Texts({"state 0", "state 1", "state 2", "state 3"}));
}

TEST_F(ServiceParts, AreDeletedOnceWhenTheyAreReplaced)
{
    InstallParts();
    service->SetScanner(new FakeScanner(parts, "second scanner"));
    EXPECT_EQ(TakeCalls(), Texts({"delete scanner"}));
    service->SetRequester(new FakeRequester(parts, "second requester"));
    EXPECT_EQ(TakeCalls(), Texts({"delete requester"}));
    service->SetFsm(new FakeFsm(parts, "second fsm"));
    const Texts calls = TakeCalls();
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "deinit fsm"), 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "delete fsm"), 1);
    EXPECT_EQ(std::count(calls.begin(), calls.end(), "init second fsm"), 1);
}

TEST_F(ServiceParts, GetAPlainStateMachineFromInit)
{
    InstallParts();
    EXPECT_EQ(service->Init(), LYN_ERROR_NONE);
    EXPECT_EQ(TakeCalls(), Texts({"deinit fsm", "delete fsm"}));
    EXPECT_TRUE(told.empty());
    service->StartScan(KeepDevices());
    EXPECT_EQ(TakeCalls(), Texts({"start scan"}));
    EXPECT_EQ(told, Texts({"state 1"}));
    EXPECT_EQ(service->Init(), LYN_ERROR_NONE);
    service->StartScan(KeepDevices());
    EXPECT_EQ(told, Texts({"state 1", "state 1"})) << "the second machine begins in READY, too";
}

TEST_F(ServiceParts, StayThroughDeinit)
{
    InstallParts();
    EXPECT_EQ(service->Deinit(), LYN_ERROR_NONE);
    EXPECT_TRUE(TakeCalls().empty());
    EXPECT_TRUE(simulator::JournalText().empty());
    service->StopScan();
    EXPECT_EQ(TakeCalls(), Texts({"event 1", "stop scan"}));
}

}  // namespace
}  // namespace lyn::test
