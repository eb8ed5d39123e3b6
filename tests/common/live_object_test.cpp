// SPDX-License-Identifier: Apache-2.0
#include "Common/LiveObject.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>

#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Thing : std::enable_shared_from_this<Thing> {
    std::shared_ptr<void> Keep() { return weak_from_this().lock(); }

    int calls = 0;
    LiveObject<Thing> live{*this};
};

struct OtherThing : std::enable_shared_from_this<OtherThing> {
    std::shared_ptr<void> Keep() { return weak_from_this().lock(); }

    LiveObject<OtherThing> live{*this};
};

/// What another object owns and keeps.
struct Member {
    std::shared_ptr<void> Keep() { return owner.lock(); }

    std::weak_ptr<void> owner;
    LiveObject<Member> live{*this};
};

class Live : public SimulatedTv {
protected:
    static Thing* Find(void* userData) { return LiveObject<Thing>::Find(userData).get(); }
};

TEST_F(Live, ObjectIsFoundByWhatItsCallbacksAreRegisteredWith)
{
    const auto first = std::make_shared<Thing>();
    const auto second = std::make_shared<Thing>();
    EXPECT_NE(first->live.UserData(), nullptr);
    EXPECT_NE(first->live.UserData(), second->live.UserData());
    EXPECT_EQ(Find(first->live.UserData()), first.get());
    EXPECT_EQ(Find(second->live.UserData()), second.get());
}

TEST_F(Live, ObjectIsFoundByItsNumber)
{
    const auto first = std::make_shared<Thing>();
    const auto second = std::make_shared<Thing>();
    EXPECT_EQ(LiveObject<Thing>::Find(first->live.Number()), first);
    EXPECT_EQ(LiveObject<Thing>::UserData(first->live.Number()), first->live.UserData());
    EXPECT_LT(first->live.Number(), second->live.Number()) << "the later one has the greater number";
}

TEST_F(Live, ObjectThatIsGoneIsNotFoundEvenWhenAnotherOneTakesItsPlaceInMemory)
{
    alignas(Thing) unsigned char place[sizeof(Thing)];
    const auto make = [&] {
        return std::shared_ptr<Thing>(new (place) Thing, [](Thing* thing) { thing->~Thing(); });
    };
    auto thing = make();
    void* const userData = thing->live.UserData();
    thing.reset();
    EXPECT_EQ(Find(userData), nullptr);

    const auto next = make();
    EXPECT_EQ(Find(userData), nullptr);
    EXPECT_EQ(Find(next->live.UserData()), next.get());
}

TEST_F(Live, ObjectIsNotFoundByAnythingElse)
{
    const auto thing = std::make_shared<Thing>();
    EXPECT_EQ(Find(nullptr), nullptr);
    EXPECT_EQ(Find(thing.get()), nullptr);
}

TEST_F(Live, ObjectIsNotFoundAmongThoseOfAnotherType)
{
    const auto other = std::make_shared<OtherThing>();
    auto thing = std::make_shared<Thing>();
    while (thing->live.Number() < other->live.Number()) {
        thing = std::make_shared<Thing>();
    }
    thing.reset();
    EXPECT_EQ(LiveObject<OtherThing>::Find(other->live.UserData()), other);
    EXPECT_EQ(Find(other->live.UserData()), nullptr);
}

TEST_F(Live, ObjectIsNotFoundWhenNobodyCanKeepIt)
{
    Thing thing;
    EXPECT_EQ(Find(thing.live.UserData()), nullptr);
    CallLive<Thing>(thing.live.UserData(), [](Thing& found) { ++found.calls; });
    EXPECT_EQ(thing.calls, 0);
}

TEST_F(Live, ObjectIsNotFoundFromItsDestructionOn)
{
    void* userData = nullptr;
    Thing* found = nullptr;
    std::shared_ptr<Thing> thing(new Thing, [&](Thing* doomed) {
        found = Find(userData);
        delete doomed;
    });
    userData = thing->live.UserData();
    ASSERT_EQ(Find(userData), thing.get());
    thing.reset();
    EXPECT_EQ(found, nullptr);
}

TEST_F(Live, CallReachesTheObjectAndNothingOnceItIsGone)
{
    auto thing = std::make_shared<Thing>();
    void* const userData = thing->live.UserData();
    int reached = 0;
    const auto work = [&](Thing& found) { reached += ++found.calls; };
    CallLive<Thing>(userData, work);
    CallLive<Thing>(userData, work);
    EXPECT_EQ(reached, 1 + 2);
    thing.reset();
    CallLive<Thing>(userData, work);
    CallLive<Thing>(nullptr, work);
    EXPECT_EQ(reached, 1 + 2);
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(Live, CallKeepsTheObjectThatIsReleasedInside)
{
    auto thing = std::make_shared<Thing>();
    const std::weak_ptr<Thing> weak = thing;
    CallLive<Thing>(thing->live.UserData(), [&](Thing& found) {
        thing.reset();
        EXPECT_FALSE(weak.expired());
        ++found.calls;
    });
    EXPECT_TRUE(weak.expired());
}

TEST_F(Live, CallKeepsTheOwnerOfAnObjectThatIsPartOfIt)
{
    auto owner = std::make_shared<Member>();
    owner->owner = owner;
    const std::weak_ptr<void> weak = owner;
    int reached = 0;
    void* const userData = owner->live.UserData();
    CallLive<Member>(userData, [&](Member&) {
        owner.reset();
        EXPECT_FALSE(weak.expired());
        ++reached;
    });
    EXPECT_EQ(reached, 1);
    EXPECT_TRUE(weak.expired());

    Member orphan;
    CallLive<Member>(orphan.live.UserData(), [&](Member&) { ++reached; });
    EXPECT_EQ(reached, 1) << "its owner is on its way out";
}

TEST_F(Live, CallHoldsNothingThatOthersNeed)
{
    const auto thing = std::make_shared<Thing>();
    void* const userData = thing->live.UserData();
    CallLive<Thing>(userData, [&](Thing& outer) {
        std::thread([&] {
            const auto other = std::make_shared<Thing>();
            CallLive<Thing>(userData, [](Thing& inner) { ++inner.calls; });
        }).join();
        ++outer.calls;
    });
    EXPECT_EQ(thing->calls, 2);
}

TEST_F(Live, CallLogsAndDropsWhateverIsThrown)
{
    const auto thing = std::make_shared<Thing>();
    CallLive<Thing>(thing->live.UserData(), [](Thing&) { throw std::runtime_error("100 %s"); });
    CallLive<Thing>(thing->live.UserData(), [](Thing&) { throw "1.0"; });
    EXPECT_THAT(Messages(ERROR),
                ElementsAre("exception dropped : 100 %s", "exception dropped : not a standard exception"));
}

TEST_F(Live, CallsAndDestructionOnTwoThreadsLeaveEachOtherWhole)
{
    for (int round = 0; round < 100; ++round) {
        auto thing = std::make_shared<Thing>();
        void* const userData = thing->live.UserData();
        std::atomic<bool> started{false};
        std::thread caller([&] {
            for (int i = 0; i < 50; ++i) {
                CallLive<Thing>(userData, [](Thing& found) { ++found.calls; });
                started = true;
            }
        });
        while (!started) {
            std::this_thread::yield();
        }
        thing.reset();
        caller.join();
        EXPECT_EQ(Find(userData), nullptr);
    }
}

}  // namespace
}  // namespace lyn::test
