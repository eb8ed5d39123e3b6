// SPDX-License-Identifier: Apache-2.0
//
// Every function from several threads at once, in any order, while the main loop delivers.
#include <random>

#include "lifetime/Crowd.h"
#include "lifetime/Lives.h"

namespace lyn::test {
namespace {

constexpr int kCalls = 400;
constexpr int kThreads = 3;

/// One function, chosen by number, on a service that other threads use too.
void Call(Client& client, unsigned number)
{
    nod_link_type type = 0;
    switch (number % 8) {
    case 0:
        client.StartScan();
        break;
    case 1:
        lyn_stop_scan(client.Handle());
        break;
    case 2:
        client.Request(kPhone);
        break;
    case 3:
        lyn_start_advertise(client.Handle(), LYN_ADV_INTERVAL_50);
        break;
    case 4:
        lyn_stop_advertise(client.Handle());
        break;
    case 5:
        lyn_set_nodlink_version(client.Handle(), number % 16 < 8 ? "2.0" : "3.0");
        break;
    case 6:
        lyn_get_nodlink_type(client.Handle(), &type);
        break;
    default:
        EXPECT_STREQ(
            lyn_get_request_initiating_error_string(client.Handle(), LYN_REQUEST_INITIATING_RESULT_NOT_TAP),
            "NotTap");
        break;
    }
}

class EveryFunction : public LivesOfEach {
protected:
    EveryFunction() { simulator::SetLogCapture(7); }

    static void CallInAnyOrder(Client& client, unsigned seed)
    {
        std::minstd_rand random(seed);
        for (int call = 0; call < kCalls; ++call) {
            Call(client, static_cast<unsigned>(random()) >> 3U);
        }
    }
};

TEST_P(EveryFunction, MayBeCalledFromAnyThread)
{
    Client client(GetParam());
    std::vector<Work> works;
    for (unsigned thread = 1; thread <= kThreads; ++thread) {
        works.push_back([&client, thread] { CallInAnyOrder(client, thread); });
    }
    RunBesideTheMainLoop(works);
    EXPECT_TRUE(RunUntilAtLast([&] { return client.Results() >= client.Accepted(); }));
    EXPECT_EQ(client.Results(), client.Accepted());

    EXPECT_EQ(lyn_stop_scan(client.Handle()), LYN_ERROR_NONE);
    EXPECT_EQ(client.State(), LYN_STATE_READY);
    EXPECT_FALSE(simulator::Alive().scanning);
    EXPECT_EQ(client.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(RunUntilAtLast([&] { return client.Results() >= client.Accepted(); }));
    EXPECT_EQ(client.Destroy(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

TEST_P(EveryFunction, MayBeCalledFromTheCallbacksAndAnotherThreadAtOnce)
{
    Client client(GetParam());
    std::minstd_rand random(7);
    const auto callSomething = [&] { Call(client, static_cast<unsigned>(random()) >> 3U); };
    // "dummy" reports its phone to the thread that starts the scan.
    client.onPhone = GetParam() == "dummy" ? Work() : Work(callSomething);
    client.onResult = callSomething;
    RunBesideTheMainLoop({[&] { CallInAnyOrder(client, 1); }, [&] { CallInAnyOrder(client, 2); }});
    client.onPhone = nullptr;
    client.onResult = nullptr;
    EXPECT_EQ(lyn_stop_scan(client.Handle()), LYN_ERROR_NONE);
    EXPECT_TRUE(RunUntilAtLast([&] { return client.Results() >= client.Accepted(); }));
    simulator::Settle();
    EXPECT_EQ(client.Results(), client.Accepted());
    EXPECT_EQ(client.Destroy(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

TEST_P(EveryFunction, MayRaceWithTheCreationAndDestructionOfServices)
{
    std::atomic<int> created{0};
    const Work work = [&] {
        for (int turn = 0; turn < 100; ++turn) {
            lyn_service_h service = nullptr;
            const lyn_error_e error = lyn_create_service(&service, GetParam().c_str(), nullptr, nullptr);
            if (error != LYN_ERROR_NONE) {
                EXPECT_EQ(error, LYN_ERROR_ALREADY_DONE);
                EXPECT_EQ(service, nullptr);
                continue;
            }
            ++created;
            lyn_request_initiating(service, kPhone, nullptr, nullptr);
            EXPECT_EQ(lyn_destroy_service(service), LYN_ERROR_NONE);
        }
    };
    RunBesideTheMainLoop({work, work, work});
    EXPECT_GT(created, 0);
    Client last(GetParam());
    EXPECT_EQ(last.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(RunUntilAtLast([&] { return last.Results() == 1; }));
    EXPECT_EQ(last.Destroy(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Each, EveryFunction, ::testing::ValuesIn(AllServices()), ServiceName);

}  // namespace
}  // namespace lyn::test
