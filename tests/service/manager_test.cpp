// SPDX-License-Identifier: Apache-2.0
//
// The manager creates, owns and releases the one service.
#include <stdexcept>
#include <type_traits>

#include "service/FakeService.h"
#include "service/Operations.h"
#include "support/LogOrder.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

class ServiceManager : public FakeServiceTest {
protected:
    lyn_service_h Create(const std::string& name = "any")
    {
        return Manager().CreateService(name, [this](lyn_state_e state) { m_states.push_back(state); });
    }

    std::vector<lyn_state_e> m_states;
};

TEST_F(ServiceManager, IsOneAndNotCopied)
{
    EXPECT_EQ(&CServiceManager::GetInstance(), &CServiceManager::GetInstance());
    static_assert(!std::is_copy_constructible_v<CServiceManager>);
    static_assert(!std::is_copy_assignable_v<CServiceManager>);
}

TEST_F(ServiceManager, BuildsByNameAndGivesTheHandleOfTheService)
{
    const lyn_service_h handle = Create("some name");
    EXPECT_EQ(handle, script.living->GetHandle());
    EXPECT_EQ(TakeCalls(), Texts({"build some name"})) << "the builder alone initialises";
    EXPECT_EQ(Messages(INFO), Texts({"create new sevice for some name"}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(ServiceManager, HandsTheStateCallbackToTheBuilder)
{
    Create();
    ASSERT_TRUE(script.stateCb);
    script.stateCb(LYN_STATE_SCANNING);
    EXPECT_EQ(m_states, std::vector({LYN_STATE_SCANNING}));
}

TEST_F(ServiceManager, RefusesASecondServiceOfWhateverName)
{
    const lyn_service_h handle = Create("dummy");
    for (const std::string name : {"dummy", "mirroring", "nodlink", "kov", "unknown", ""}) {
        SCOPED_TRACE(name);
        TakeCalls();
        simulator::ClearLog();
        EXPECT_EQ(ThrownBy<LynExceptionAlreadyDone>([&] { Create(name); }), "Already Done exception");
        EXPECT_TRUE(TakeCalls().empty());
        EXPECT_EQ(Messages(ERROR), Texts({"already service is running"}));
        EXPECT_TRUE(Messages(INFO).empty());
    }
    EXPECT_NO_THROW(Manager().StopScan(handle));
}

TEST_F(ServiceManager, ReleasesAServiceWithALineThenDeinitThenDelete)
{
    const lyn_service_h handle = Create();
    TakeCalls();
    simulator::ClearLog();
    Manager().DestroyService(handle);
    EXPECT_EQ(TakeCalls(), Texts({"deinit", "delete"}));
    EXPECT_EQ(Messages(INFO), Texts({"In custom deleter of IService"}));
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(ServiceManager, CreatesAgainAfterADestruction)
{
    for (int time = 0; time < 3; ++time) {
        const lyn_service_h handle = Create();
        ASSERT_NE(handle, nullptr);
        EXPECT_NO_THROW(Manager().StopScan(handle));
        Manager().DestroyService(handle);
    }
}

TEST_F(ServiceManager, FailsWhenNothingIsBuiltAndStaysEmpty)
{
    script.buildsNothing = true;
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { Create(); }), "fail to alloc service");
    EXPECT_EQ(Messages(ERROR), Texts({"fail to alloc service"}));
    EXPECT_FALSE(HasLog(INFO, "In custom deleter of IService"));
    script.buildsNothing = false;
    EXPECT_NE(Create(), nullptr);
}

TEST_F(ServiceManager, StaysEmptyWhenTheBuilderThrows)
{
    script.onBuild = [] { throw LynExceptionInternal("m_StateChangedCb is nullptr"); };
    EXPECT_EQ(ThrownBy<LynExceptionInternal>([&] { Create(); }), "m_StateChangedCb is nullptr");
    script.onBuild = [] { throw std::runtime_error("something else"); };
    EXPECT_EQ(ThrownBy<std::runtime_error>([&] { Create(); }), "something else");
    EXPECT_FALSE(HasLog(INFO, "In custom deleter of IService"));
    EXPECT_TRUE(Messages(ERROR).empty()) << "the manager has nothing to add";
    script.onBuild = nullptr;
    EXPECT_NE(Create(), nullptr);
}

TEST_F(ServiceManager, DestroysNothingForANullHandle)
{
    Create();
    EXPECT_EQ(ThrownBy<LynExceptionInvalidHandle>([] { Manager().DestroyService(nullptr); }), "service is NULL");
    EXPECT_EQ(Messages(ERROR), Texts({"service is NULL"}));
    EXPECT_NE(script.living, nullptr);
}

TEST_F(ServiceManager, DestroysNothingForANullHandleWithoutAService)
{
    EXPECT_EQ(ThrownBy<LynExceptionInvalidHandle>([] { Manager().DestroyService(nullptr); }), "service is NULL");
}

TEST_F(ServiceManager, DestroysNothingForAnotherHandleAndHasNoLineForIt)
{
    int other = 0;
    EXPECT_EQ(ThrownBy<LynExceptionInvalidHandle>([&] { Manager().DestroyService(&other); }),
              "not mached service");
    const lyn_service_h handle = Create();
    simulator::ClearLog();
    EXPECT_EQ(ThrownBy<LynExceptionInvalidHandle>([&] { Manager().DestroyService(&other); }),
              "not mached service");
    EXPECT_TRUE(Messages(ERROR).empty());
    EXPECT_TRUE(Messages(WARN).empty());
    EXPECT_NE(script.living, nullptr);
    Manager().DestroyService(handle);
    EXPECT_EQ(ThrownBy<LynExceptionInvalidHandle>([&] { Manager().DestroyService(handle); }),
              "not mached service");
}

}  // namespace
}  // namespace lyn::test
