// SPDX-License-Identifier: Apache-2.0
//
// The helpers from several threads at once.
#include <gmock/gmock.h>

#include <functional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "Common/Util.h"
#include "lyn_service_log.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

constexpr int THREADS = 4;
constexpr int ROUNDS = 100;

class FromManyThreads : public SimulatedTv {
protected:
    static void Run(const std::function<void(int thread, int round)>& work)
    {
        std::vector<std::thread> threads;
        for (int thread = 0; thread < THREADS; ++thread) {
            threads.emplace_back([&work, thread] {
                for (int round = 0; round < ROUNDS; ++round) {
                    work(thread, round);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
};

TEST_F(FromManyThreads, LogLinesComeWhole)
{
    Run([](int thread, int round) {
        const ApiTracker tracker("work", thread);
        LYN_LOGI("thread %d round %d", thread, round);
    });
    const std::vector<std::string> messages = Messages(INFO);
    const std::set<std::string> different(messages.begin(), messages.end());
    EXPECT_EQ(messages.size(), std::size_t{THREADS * ROUNDS});
    EXPECT_EQ(different.size(), messages.size());
    EXPECT_EQ(different.count("thread 3 round 99"), 1U);
    EXPECT_EQ(Messages(DEBUG).size(), std::size_t{2 * THREADS * ROUNDS});
}

TEST_F(FromManyThreads, KernelLogLinesComeWhole)
{
    Run([](int thread, int round) { KmsgPrint("", "Run", "thread %d round %d", thread, round); });
    const std::vector<std::string> lines = simulator::KernelLog();
    const std::set<std::string> different(lines.begin(), lines.end());
    EXPECT_EQ(lines.size(), std::size_t{THREADS * ROUNDS});
    EXPECT_EQ(different.size(), lines.size());
    EXPECT_EQ(different.count("[LYN_SERVICE][Run]thread 3 round 99"), 1U);
}

TEST_F(FromManyThreads, BoostCanBeSwitchedAfterwardsWhateverTheOrderWas)
{
    Run([](int thread, int round) { LynUtil::SetBtPerformanceBoost((thread + round) % 2 == 0); });
    LynUtil::SetBtPerformanceBoost(true);
    LynUtil::SetBtPerformanceBoost(false);
    EXPECT_FALSE(simulator::Alive().boosted);
}

TEST_F(FromManyThreads, TextsAreIndependent)
{
    Run([](int thread, int round) {
        Json::Value value;
        value["thread"] = thread;
        value["round"] = round;
        EXPECT_EQ(LynUtil::StringToJson(LynUtil::JsonToString(value)), value);
        EXPECT_EQ(LynUtil::GetCurTime().rfind("Current time : ", 0), 0U);
    });
}

}  // namespace
}  // namespace lyn::test
