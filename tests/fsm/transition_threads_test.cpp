// SPDX-License-Identifier: Apache-2.0
//
// Transitions of many threads: the state and its report go together, one after the other.
#include <atomic>
#include <future>
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

TEST_F(TransitionsOfManyThreads, WaitForTheReportThatAnotherOneMakes)
{
    Texts order;
    std::thread other;
    std::promise<void> onItsWay;
    machine->Init([&](lyn_state_e state) {
        order.push_back("begin " + std::to_string(state));
        if (state == LYN_STATE_SCANNING) {
            other = std::thread([&] {
                onItsWay.set_value();
                machine->TransitState(LYN_STATE_NOT_READY);
            });
            onItsWay.get_future().wait();
            for (int chance = 0; chance < 1000; ++chance) {
                std::this_thread::yield();
            }
            EXPECT_EQ(State(), LYN_STATE_SCANNING);
        }
        order.push_back("end " + std::to_string(state));
    });
    machine->TransitState(LYN_STATE_SCANNING);
    other.join();
    EXPECT_EQ(order, Texts({"begin 1", "end 1", "begin 3", "end 3"}));
    EXPECT_EQ(State(), LYN_STATE_NOT_READY);
}

TEST_F(TransitionsOfManyThreads, AreTooEarlyForTheThreadThatReportsAlone)
{
    int calls = 0;
    machine->Init([&](lyn_state_e) {
        ++calls;
        EXPECT_TRUE(machine->IsTooEarly(LYN_FSM_EVENT_START_SCAN));
        std::thread([&] { EXPECT_FALSE(machine->IsTooEarly(LYN_FSM_EVENT_START_SCAN)); }).join();
    });
    machine->TransitState(LYN_STATE_READY);
    EXPECT_EQ(calls, 1);
}

TEST_F(TransitionsOfManyThreads, OvertakeTheWorkOfAScan)
{
    machine->Init(KeepReports());
    const auto work = [&] { std::thread([&] { machine->TransitState(LYN_STATE_NOT_READY); }).join(); };
    EXPECT_NO_THROW(machine->ProcessEvent(LYN_FSM_EVENT_START_SCAN, std::make_shared<EventArg>(work)));
    EXPECT_EQ(reports, States({LYN_STATE_NOT_READY}));
    EXPECT_EQ(State(), LYN_STATE_NOT_READY);
}

}  // namespace
}  // namespace lyn::test
