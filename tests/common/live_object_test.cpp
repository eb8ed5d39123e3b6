// SPDX-License-Identifier: Apache-2.0
#include "Common/LiveObject.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <stdexcept>
#include <thread>

#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Thing : std::enable_shared_from_this<Thing> {
    int calls = 0;
    LiveObject<Thing> live{this};
};

class Live : public SimulatedTv {
protected:
    static Thing* Find(void* userData)
    {
        const auto lock = LockLiveObjects();
        return LiveObject<Thing>::Find(userData);
    }
};

TEST_F(Live, ObjectIsFoundByWhatItsCallbacksAreRegisteredWith)
{
    const Thing first;
    const Thing second;
    EXPECT_NE(first.live.UserData(), nullptr);
    EXPECT_NE(first.live.UserData(), second.live.UserData());
    EXPECT_EQ(Find(first.live.UserData()), &first);
    EXPECT_EQ(Find(second.live.UserData()), &second);
}

TEST_F(Live, ObjectThatIsGoneIsNotFoundEvenWhenAnotherOneTakesItsPlaceInMemory)
{
    alignas(Thing) unsigned char place[sizeof(Thing)];
    Thing* thing = new (place) Thing;
    void* const userData = thing->live.UserData();
    thing->~Thing();
    EXPECT_EQ(Find(userData), nullptr);

    Thing* const next = new (place) Thing;
    EXPECT_EQ(Find(userData), nullptr);
    EXPECT_EQ(Find(next->live.UserData()), next);
    next->~Thing();
}

TEST_F(Live, ObjectIsNotFoundByAnythingElse)
{
    const Thing thing;
    EXPECT_EQ(Find(nullptr), nullptr);
    EXPECT_EQ(Find(const_cast<Thing*>(&thing)), nullptr);
}

TEST_F(Live, CallReachesTheObjectAndNothingOnceItIsGone)
{
    auto thing = std::make_shared<Thing>();
    void* const userData = thing->live.UserData();
    int reached = 0;
    const auto work = [&](Thing& found) { reached += ++found.calls; };
    CallLocked<Thing>(userData, work);
    CallShared<Thing>(userData, work);
    EXPECT_EQ(reached, 1 + 2);
    thing.reset();
    CallLocked<Thing>(userData, work);
    CallShared<Thing>(userData, work);
    CallShared<Thing>(nullptr, work);
    EXPECT_EQ(reached, 1 + 2);
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(Live, SharedCallKeepsTheObjectThatIsReleasedInside)
{
    auto thing = std::make_shared<Thing>();
    const std::weak_ptr<Thing> weak = thing;
    CallShared<Thing>(thing->live.UserData(), [&](Thing& found) {
        thing.reset();
        EXPECT_FALSE(weak.expired());
        ++found.calls;
    });
    EXPECT_TRUE(weak.expired());
}

TEST_F(Live, SharedCallDoesNotReachAnObjectThatNobodyShares)
{
    Thing thing;
    CallShared<Thing>(thing.live.UserData(), [](Thing& found) { ++found.calls; });
    EXPECT_EQ(thing.calls, 0);
}

TEST_F(Live, CallLogsAndDropsWhateverIsThrown)
{
    const auto thing = std::make_shared<Thing>();
    const auto throwText = [](Thing&) { throw "1.0"; };
    const auto throwStandard = [](Thing&) { throw std::runtime_error("100 %s"); };
    CallLocked<Thing>(thing->live.UserData(), throwStandard);
    CallShared<Thing>(thing->live.UserData(), throwStandard);
    CallLocked<Thing>(thing->live.UserData(), throwText);
    CallShared<Thing>(thing->live.UserData(), throwText);
    const std::string other = "exception dropped : not a standard exception";
    EXPECT_THAT(Messages(ERROR),
                ElementsAre("exception dropped : 100 %s", "exception dropped : 100 %s", other, other));
}

TEST_F(Live, SharedCallsAndDestructionOnTwoThreadsLeaveEachOtherWhole)
{
    for (int round = 0; round < 100; ++round) {
        auto thing = std::make_shared<Thing>();
        void* const userData = thing->live.UserData();
        std::atomic<bool> started{false};
        std::thread caller([&] {
            for (int i = 0; i < 50; ++i) {
                CallShared<Thing>(userData, [](Thing& found) { ++found.calls; });
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
