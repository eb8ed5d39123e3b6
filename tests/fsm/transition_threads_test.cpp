// SPDX-License-Identifier: Apache-2.0
//
// Transitions of many threads: the state and its report go together, one after the other.
#include <atomic>
#include <thread>

#include "fsm/Machine.h"

namespace lyn::test {
namespace {

constexpr int kThreads = 4;
constexpr int kTransitions = 500;

class TransitionsOfManyThreads : public MachineTest {};

TEST_F(TransitionsOfManyThreads, ReportOneAfterTheOther)
{
    simulator::SetLogCapture(7);
    std::atomic<int> inside = 0;
    int unordered = 0;
    machine->Init([&](lyn_state_e state) {
        unordered += ++inside == 1 && State() == state ? 0 : 1;
        reports.push_back(state);
        --inside;
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&, state = kStates[static_cast<std::size_t>(i)]] {
            for (int time = 0; time < kTransitions; ++time) {
                machine->TransitState(state);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(unordered, 0);
    ASSERT_EQ(reports.size(), static_cast<std::size_t>(kThreads * kTransitions));
    EXPECT_EQ(State(), reports.back());
}

TEST_F(TransitionsOfManyThreads, DoNotHoldUpTheLookUpOfAnEvent)
{
    machine->Init([&](lyn_state_e state) {
        reports.push_back(state);
        if (state == LYN_STATE_REQUESTING) {
            // In the middle of a transition another thread's event finds the state without waiting.
            std::thread([&] { machine->ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, Work()); }).join();
        }
    });
    machine->ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING, Work());
    EXPECT_EQ(worked, 2);
    EXPECT_EQ(reports, States({LYN_STATE_REQUESTING}));
}

}  // namespace
}  // namespace lyn::test
