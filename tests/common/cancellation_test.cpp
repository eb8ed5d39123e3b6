// SPDX-License-Identifier: Apache-2.0
//
// A thread that is cancelled in a callback of the application, which the library calls: it ends, and what was
// on its way is released.
#include <gmock/gmock.h>
#include <pthread.h>

#include <atomic>
#include <stdexcept>

#include "Common/RunGuarded.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

class GuardedWork : public SimulatedTv {};

struct Progress {
    std::atomic<bool> isInside{false};
    std::atomic<bool> isReleased{false};
    std::atomic<bool> hasReturned{false};
};

struct Releaser {
    std::atomic<bool>& isReleased;
    ~Releaser() { isReleased = true; }
};

void* WaitForTheEnd(void* data)
{
    auto& progress = *static_cast<Progress*>(data);
    RunGuarded([&] {
        const Releaser releaser{progress.isReleased};
        progress.isInside = true;
        while (true) {
            pthread_testcancel();
        }
    });
    progress.hasReturned = true;
    return nullptr;
}

TEST_F(GuardedWork, LetsTheEndOfItsThreadPass)
{
    Progress progress;
    pthread_t thread{};
    ASSERT_EQ(pthread_create(&thread, nullptr, WaitForTheEnd, &progress), 0);
    while (!progress.isInside) {
        sched_yield();
    }
    ASSERT_EQ(pthread_cancel(thread), 0);
    void* result = nullptr;
    ASSERT_EQ(pthread_join(thread, &result), 0);
    EXPECT_EQ(result, PTHREAD_CANCELED);
    EXPECT_TRUE(progress.isReleased);
    EXPECT_FALSE(progress.hasReturned);
    EXPECT_TRUE(LogLines().empty());
}

TEST_F(GuardedWork, LosesEveryOtherException)
{
    RunGuarded([] { throw std::runtime_error("trouble"); });
    RunGuarded([] { throw 7; });
    EXPECT_THAT(Messages(ERROR), testing::ElementsAre("exception dropped : trouble",
                                                      "exception dropped : not a standard exception"));
}

}  // namespace
}  // namespace lyn::test
