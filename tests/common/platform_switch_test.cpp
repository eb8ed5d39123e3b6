// SPDX-License-Identifier: Apache-2.0
//
// A switch of the platform that several threads set: the last wish is what the platform is told last, and nobody
// waits for the one who tells.
#include "Common/PlatformSwitch.h"

#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <thread>
#include <utility>
#include <vector>

namespace lyn::test {
namespace {

using Values = std::vector<int>;

class Switch : public ::testing::Test {
protected:
    /// Tells the platform, which accepts unless the test says otherwise.
    std::function<bool(int)> Tell()
    {
        return [this](int value) {
            told.push_back(value);
            const bool accepted = accepts;
            if (const auto work = std::exchange(whileTelling, nullptr)) {
                work();
            }
            return accepted;
        };
    }

    bool Wish(int value) { return theSwitch.Wish(value, Tell()); }
    bool Replace(int value, int by) { return theSwitch.Replace(value, by, Tell()); }

    /// For a thread that has nothing to tell, because another one does.
    static bool TellNothing(int value)
    {
        ADD_FAILURE() << "told " << value << " beside the thread that tells";
        return true;
    }

    /// Holds another thread still in the telling of `value`, does the work, and lets it go on.
    void WhileAnotherThreadTells(int value, const std::function<void()>& work)
    {
        std::promise<void> telling;
        std::promise<void> goOn;
        whileTelling = [&] {
            telling.set_value();
            goOn.get_future().wait();
        };
        std::thread other([&] { EXPECT_TRUE(Wish(value)); });
        telling.get_future().wait();
        work();
        goOn.set_value();
        other.join();
    }

    PlatformSwitch<int> theSwitch;
    Values told;
    bool accepts = true;
    std::function<void()> whileTelling;  ///< Runs inside the next telling.
};

TEST_F(Switch, HasNothingToTellOfWhatThePlatformHasFromTheStart)
{
    EXPECT_FALSE(Wish(0));
    EXPECT_EQ(told, Values());
}

TEST_F(Switch, TellsAWishOnce)
{
    EXPECT_TRUE(Wish(1));
    EXPECT_FALSE(Wish(1));
    EXPECT_EQ(told, Values({1}));
    EXPECT_TRUE(Wish(2));
    EXPECT_TRUE(Wish(0));
    EXPECT_FALSE(Wish(0));
    EXPECT_EQ(told, Values({1, 2, 0}));
}

TEST_F(Switch, ForgetsAWishThatIsRefused)
{
    accepts = false;
    EXPECT_TRUE(Wish(1)) << "the platform was told";
    EXPECT_FALSE(Wish(0)) << "it is as it was";
    EXPECT_EQ(told, Values({1})) << "not told again by itself";
    accepts = true;
    EXPECT_TRUE(Wish(1));
    EXPECT_FALSE(Wish(1));
    EXPECT_EQ(told, Values({1, 1}));
}

TEST_F(Switch, GoesBackToWhatWasAcceptedBeforeARefusal)
{
    Wish(1);
    accepts = false;
    EXPECT_TRUE(Wish(2));
    EXPECT_FALSE(Wish(1));
    EXPECT_EQ(told, Values({1, 2}));
}

TEST_F(Switch, TellsAWishThatCameFromInsideTheTelling)
{
    whileTelling = [&] { EXPECT_TRUE(theSwitch.Wish(2, TellNothing)); };
    EXPECT_TRUE(Wish(1));
    EXPECT_EQ(told, Values({1, 2}));
}

TEST_F(Switch, LeavesAWishToTheThreadThatIsTelling)
{
    WhileAnotherThreadTells(1, [&] {
        EXPECT_TRUE(theSwitch.Wish(2, TellNothing));
        EXPECT_EQ(told, Values({1})) << "one after the other";
    });
    EXPECT_EQ(told, Values({1, 2}));
    EXPECT_FALSE(Wish(2));
}

TEST_F(Switch, TellsOnlyTheLastOfTheWishesThatCameMeanwhile)
{
    WhileAnotherThreadTells(1, [&] {
        for (const int value : {2, 3, 0, 4}) {
            theSwitch.Wish(value, TellNothing);
        }
    });
    EXPECT_EQ(told, Values({1, 4}));
}

TEST_F(Switch, TellsAgainWhatWasBeforeWhenThatIsWishedMeanwhile)
{
    WhileAnotherThreadTells(1, [&] { EXPECT_TRUE(theSwitch.Wish(0, TellNothing)); });
    EXPECT_EQ(told, Values({1, 0}));
}

TEST_F(Switch, TellsNothingMoreWhenTheSameIsWishedMeanwhile)
{
    WhileAnotherThreadTells(1, [&] { EXPECT_TRUE(theSwitch.Wish(1, TellNothing)); });
    EXPECT_EQ(told, Values({1}));
    EXPECT_FALSE(Wish(1));
}

TEST_F(Switch, TellsTheWishOfMeanwhileAlsoAfterARefusal)
{
    accepts = false;
    WhileAnotherThreadTells(1, [&] {
        EXPECT_TRUE(theSwitch.Wish(2, TellNothing));
        accepts = true;
    });
    EXPECT_EQ(told, Values({1, 2}));
    EXPECT_FALSE(Wish(2));
}

TEST_F(Switch, HasNothingToTellWhenTheWishOfMeanwhileIsWhatARefusalLeft)
{
    accepts = false;
    WhileAnotherThreadTells(1, [&] { EXPECT_TRUE(theSwitch.Wish(0, TellNothing)); });
    EXPECT_EQ(told, Values({1}));
}

TEST_F(Switch, ReplacesWhatIsWished)
{
    Wish(1);
    EXPECT_TRUE(Replace(1, 0));
    EXPECT_EQ(told, Values({1, 0}));
    EXPECT_FALSE(Replace(0, 0)) << "there is nothing to tell";
    EXPECT_EQ(told, Values({1, 0}));
}

TEST_F(Switch, DoesNotReplaceWhatAnotherOneWishes)
{
    Wish(1);
    Wish(2);
    EXPECT_FALSE(Replace(1, 0));
    EXPECT_EQ(told, Values({1, 2}));
    EXPECT_FALSE(Wish(2)) << "and it is still wished";
}

TEST_F(Switch, ReplacesWhatIsBeingTold)
{
    WhileAnotherThreadTells(1, [&] { EXPECT_TRUE(theSwitch.Replace(1, 0, TellNothing)); });
    EXPECT_EQ(told, Values({1, 0}));
}

TEST_F(Switch, DoesNotReplaceAWishThatHasOvertakenWhatIsBeingTold)
{
    WhileAnotherThreadTells(1, [&] {
        EXPECT_TRUE(theSwitch.Wish(2, TellNothing));
        EXPECT_FALSE(theSwitch.Replace(1, 0, TellNothing));
    });
    EXPECT_EQ(told, Values({1, 2}));
}

TEST_F(Switch, IsInTheEndAsItIsWishedInTheEndWhateverThreadsDid)
{
    constexpr int threadCount = 4;
    constexpr int rounds = 200;
    int inForce = 0;
    int inside = 0;
    int unordered = 0;
    // Without a lock of its own: one thread tells at a time.
    const auto tell = [&](int value) {
        unordered += inside++ == 0 && value != inForce ? 0 : 1;
        inForce = value;
        --inside;
        return true;
    };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < threadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (int round = 0; round < rounds; ++round) {
                theSwitch.Wish((thread + round) % 3, tell);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(unordered, 0);
    theSwitch.Wish(2, tell);
    EXPECT_EQ(inForce, 2);
}

}  // namespace
}  // namespace lyn::test
