// SPDX-License-Identifier: Apache-2.0
//
// The manager among threads: a forwarded call holds nothing up, and nothing is destroyed under it.
#include <algorithm>
#include <atomic>
#include <thread>

#include "service/FakeService.h"
#include "service/Operations.h"

namespace lyn::test {
namespace {

using ManagerThreads = FakeServiceTest;

TEST_F(ManagerThreads, CreateAndDestroyWhileACallIsInProgress)
{
    const lyn_service_h handle = Manager().CreateService("first", nullptr);
    script.onOperation = [&] {
        script.onOperation = nullptr;
        std::thread([&] {
            Manager().DestroyService(handle);
            EXPECT_TRUE(std::find(script.calls.begin(), script.calls.end(), "delete") == script.calls.end());
            EXPECT_NE(Manager().CreateService("second", nullptr), nullptr);
        }).join();
    };
    Manager().StopScan(handle);
    EXPECT_EQ(TakeCalls(), Texts({"build first", "stop scan", "build second", "deinit", "delete"}));
    EXPECT_THROW(Manager().CreateService("third", nullptr), LynExceptionAlreadyDone);
}

TEST_F(ManagerThreads, AreNotHeldUpByAServiceThatIsBeingBuilt)
{
    int other = 0;
    script.onBuild = [&] {
        script.onBuild = nullptr;
        std::thread([&] {
            EXPECT_THROW(Manager().CreateService("second", nullptr), LynExceptionAlreadyDone);
            EXPECT_THROW(Manager().DestroyService(&other), LynExceptionInvalidHandle);
            for (const Forwarding& forwarding : Forwardings()) {
                EXPECT_THROW(forwarding.call(&other), LynExceptionInvalidParam) << forwarding.name;
            }
        }).join();
    };
    const lyn_service_h handle = Manager().CreateService("first", nullptr);
    EXPECT_EQ(TakeCalls(), Texts({"build first"}));
    EXPECT_NO_THROW(Manager().StopScan(handle));
}

TEST_F(ManagerThreads, AreNotHeldUpByAServiceThatIsBeingReleased)
{
    const lyn_service_h handle = Manager().CreateService("first", nullptr);
    lyn_service_h next = nullptr;
    script.onRelease = [&] {
        script.onRelease = nullptr;
        std::thread([&] {
            EXPECT_THROW(Manager().StopScan(handle), LynExceptionInvalidParam);
            EXPECT_THROW(Manager().DestroyService(handle), LynExceptionInvalidHandle);
            next = Manager().CreateService("second", nullptr);
            EXPECT_NO_THROW(Manager().StopScan(next));
        }).join();
    };
    Manager().DestroyService(handle);
    EXPECT_EQ(TakeCalls(), Texts({"build first", "deinit", "build second", "stop scan", "delete"}));
    EXPECT_NO_THROW(Manager().StopScan(next));
}

TEST_F(ManagerThreads, OpenAServiceOnceItIsHeldAndRetireItAtOnce)
{
    script.onBuild = [&] { EXPECT_EQ(script.opened, 0); };
    const lyn_service_h handle = Manager().CreateService("first", nullptr);
    EXPECT_EQ(script.opened, 1);
    script.onOperation = [&] {
        script.onOperation = nullptr;
        EXPECT_EQ(script.retired, 0);
        std::thread([&] { Manager().DestroyService(handle); }).join();
        EXPECT_EQ(script.retired, 1) << "although a call still holds it";
        EXPECT_EQ(script.living, handle);
    };
    Manager().StopScan(handle);
    EXPECT_EQ(script.living, nullptr);
}

TEST_F(ManagerThreads, GiveTheOneServiceToOneCreator)
{
    constexpr int threadCount = 8;
    std::atomic<int> created = 0;
    std::atomic<int> refused = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&] {
            try {
                Manager().CreateService("any", nullptr);
                ++created;
            } catch (const LynExceptionAlreadyDone&) {
                ++refused;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(created, 1);
    EXPECT_EQ(refused, threadCount - 1);
}

TEST_F(ManagerThreads, GiveTheOneDestructionToOneDestroyer)
{
    constexpr int threadCount = 8;
    const lyn_service_h handle = Manager().CreateService("any", nullptr);
    std::atomic<int> destroyed = 0;
    std::atomic<int> refused = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < threadCount; ++i) {
        threads.emplace_back([&] {
            try {
                Manager().DestroyService(handle);
                ++destroyed;
            } catch (const LynExceptionInvalidHandle&) {
                ++refused;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(refused, threadCount - 1);
    EXPECT_EQ(TakeCalls(), Texts({"build any", "deinit", "delete"}));
}

}  // namespace
}  // namespace lyn::test
