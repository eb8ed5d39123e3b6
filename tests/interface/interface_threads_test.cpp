// SPDX-License-Identifier: Apache-2.0
//
// The functions from other threads than the main loop's.
#include <functional>
#include <thread>

#include "support/App.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

void OnAnotherThread(const std::function<void()>& work)
{
    std::thread(work).join();
}

using InterfaceThreads = SimulatedTv;

TEST_F(InterfaceThreads, ReportAStateOnTheThreadOfTheCall)
{
    App app("dummy");
    std::vector<std::thread::id> threads;
    app.onState = [&](lyn_state_e) { threads.push_back(std::this_thread::get_id()); };
    std::thread::id other;
    OnAnotherThread([&] {
        other = std::this_thread::get_id();
        EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
        EXPECT_EQ(app.states.size(), 1U) << "reported before the call returns";
    });
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    const std::thread::id own = std::this_thread::get_id();
    EXPECT_EQ(threads, std::vector({other, own, own}));
}

TEST_F(InterfaceThreads, DeliverAResultOnTheMainLoop)
{
    App app("dummy");
    std::thread::id thread;
    app.onResult = [&](lyn_request_initiating_result_e) { thread = std::this_thread::get_id(); };
    OnAnotherThread([&] { EXPECT_EQ(app.Request("id"), LYN_ERROR_NONE); });
    EXPECT_TRUE(app.results.empty());
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(thread, std::this_thread::get_id());
}

TEST_F(InterfaceThreads, LendTheNameOfAResultToEachThreadApart)
{
    App app("dummy");
    const char* mine =
        lyn_get_request_initiating_error_string(app.handle, LYN_REQUEST_INITIATING_RESULT_CONNECTED);
    OnAnotherThread([&] {
        const char* other =
            lyn_get_request_initiating_error_string(app.handle, LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        EXPECT_STREQ(other, "GattFail");
    });
    EXPECT_STREQ(mine, "Connected");
}

TEST_F(InterfaceThreads, NameResultsAllAtOnce)
{
    App app("dummy");
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (std::size_t i = 0; i < wrong.size(); ++i) {
        threads.emplace_back([&, i] {
            const bool even = i % 2 == 0;
            const auto result =
                even ? LYN_REQUEST_INITIATING_RESULT_SUCCESS : LYN_REQUEST_INITIATING_RESULT_NOT_TAP;
            for (int time = 0; time < 200; ++time) {
                const std::string text = lyn_get_request_initiating_error_string(app.handle, result);
                wrong[i] += text == (even ? "Success" : "NotTap") ? 0 : 1;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

TEST_F(InterfaceThreads, CreateOneServiceAmongAll)
{
    simulator::SetLogCapture(7);
    std::vector<std::thread> threads;
    std::vector<void*> handles(8, nullptr);
    std::vector<lyn_error_e> errors(handles.size(), LYN_ERROR_INTERNAL);
    for (std::size_t i = 0; i < handles.size(); ++i) {
        threads.emplace_back(
            [&, i] { errors[i] = lyn_create_service(&handles[i], "mirroring", nullptr, nullptr); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    int created = 0;
    for (std::size_t i = 0; i < handles.size(); ++i) {
        EXPECT_EQ(handles[i] != nullptr, errors[i] == LYN_ERROR_NONE);
        EXPECT_TRUE(errors[i] == LYN_ERROR_NONE || errors[i] == LYN_ERROR_ALREADY_DONE) << errors[i];
        created += errors[i] == LYN_ERROR_NONE ? 1 : 0;
        if (handles[i] != nullptr) {
            EXPECT_EQ(lyn_destroy_service(handles[i]), LYN_ERROR_NONE);
        }
    }
    EXPECT_EQ(created, 1);
    EXPECT_EQ(CountCalls("bt_product_init"), 1);
}

}  // namespace
}  // namespace lyn::test
