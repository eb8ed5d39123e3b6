// SPDX-License-Identifier: Apache-2.0
#include "Common/PlatformSlot.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

namespace lyn::test {
namespace {

// Users, the later with the greater number.
constexpr PlatformSlot::User OLD = {3, 9};
constexpr PlatformSlot::User NEW = {4, 5};
constexpr int DONE = 0;

int Do()
{
    return DONE;
}

/// Holds another thread still inside its call, does the work, and lets it go on.
template <typename Work>
void WhileInUse(PlatformSlot& slot, PlatformSlot::User user, const Work& work)
{
    std::promise<void> inside;
    std::promise<void> goOn;
    std::thread other([&] {
        slot.Use(user, [&] {
            inside.set_value();
            goOn.get_future().wait();
            return DONE;
        });
    });
    inside.get_future().wait();
    work();
    goOn.set_value();
    other.join();
}

/// Begins to use it on a thread of its own, which gets every chance to come back before it must not.
std::future<std::optional<int>> BeginToUse(PlatformSlot& slot, PlatformSlot::User user, std::atomic<bool>& called)
{
    std::promise<void> onItsWay;
    auto begun = onItsWay.get_future();
    auto result = std::async(std::launch::async, [&slot, &called, &onItsWay, user] {
        onItsWay.set_value();
        return slot.Use(user, [&called] {
            called = true;
            return DONE;
        });
    });
    begun.wait();
    for (int chance = 0; chance < 1000; ++chance) {
        std::this_thread::yield();
    }
    return result;
}

TEST(Slot, GivesTheResultOfTheCall)
{
    PlatformSlot slot;
    EXPECT_EQ(slot.Use(OLD, Do), DONE);
    EXPECT_EQ(slot.Use(OLD, [] { return -7; }), -7);
    EXPECT_EQ(slot.UseAtOnce(OLD, [] { return 3; }), 3);
}

TEST(Slot, IsTakenOverByANewerUserAndLostForTheOlderOne)
{
    PlatformSlot slot;
    EXPECT_EQ(slot.Use(OLD, Do), DONE);
    EXPECT_EQ(slot.Use(NEW, Do), DONE);
    bool called = false;
    const auto call = [&called] {
        called = true;
        return DONE;
    };
    EXPECT_EQ(slot.Use(OLD, call), std::nullopt);
    EXPECT_EQ(slot.UseAtOnce(OLD, call), std::nullopt);
    EXPECT_FALSE(called);
}

TEST(Slot, MakesAUserWaitForTheCallOfAnother)
{
    PlatformSlot slot;
    std::atomic<bool> called{false};
    std::future<std::optional<int>> newer;
    WhileInUse(slot, OLD, [&] {
        newer = BeginToUse(slot, NEW, called);
        EXPECT_FALSE(called);
    });
    EXPECT_EQ(newer.get(), DONE);
    EXPECT_TRUE(called);
}

TEST(Slot, IsRefusedToAnOlderUserThatHasWaitedForANewerOne)
{
    PlatformSlot slot;
    std::atomic<bool> called{false};
    std::future<std::optional<int>> older;
    WhileInUse(slot, NEW, [&] { older = BeginToUse(slot, OLD, called); });
    EXPECT_EQ(older.get(), std::nullopt);
    EXPECT_FALSE(called);
}

TEST(Slot, IsLeftAloneAtOnceWhileAnotherThreadUsesIt)
{
    PlatformSlot slot;
    WhileInUse(slot, OLD, [&] { EXPECT_EQ(slot.UseAtOnce(NEW, Do), std::nullopt); });
    EXPECT_EQ(slot.UseAtOnce(NEW, Do), DONE);
}

// A report of the platform may come before the call that has caused it returns.
TEST(Slot, IsUsedAtOnceByTheUserWhoseCallIsMadeOnAnotherThread)
{
    PlatformSlot slot;
    WhileInUse(slot, OLD, [&] { EXPECT_EQ(slot.UseAtOnce(OLD, Do), DONE); });
    EXPECT_EQ(slot.Use(NEW, Do), DONE);
}

}  // namespace
}  // namespace lyn::test
