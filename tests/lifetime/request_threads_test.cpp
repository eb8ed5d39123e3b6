// SPDX-License-Identifier: Apache-2.0
//
// Requests from other threads than the main loop's: whatever comes first, the end of the call or the phone's
// answer, every accepted request has one result.
#include <glib.h>

#include <thread>

#include "lifetime/Crowd.h"
#include "lifetime/Lives.h"

namespace lyn::test {
namespace {

/// The dummy's result is posted before its service is in the state of requesting: most turns go to it.
std::size_t TurnsOf(const std::string& service)
{
    return service == "dummy" ? 1500 : 150;
}

class ARequestFromAnotherThread : public LivesOfEach {
protected:
    ARequestFromAnotherThread() { simulator::SetLogCapture(7); }

    static std::size_t Turns() { return TurnsOf(GetParam()); }

    static void ExpectAllResults(const Client& client)
    {
        EXPECT_TRUE(RunUntilAtLast([&] { return client.Results() >= client.Accepted(); }));
        simulator::Settle();
        EXPECT_EQ(client.Results(), client.Accepted());
        EXPECT_EQ(client.State(), LYN_STATE_READY);
    }

    /// The service goes on working, from this thread.
    static void ExpectToServe(Client& client)
    {
        EXPECT_EQ(client.Request(kPhone), LYN_ERROR_NONE);
        ExpectAllResults(client);
    }
};

TEST_P(ARequestFromAnotherThread, HasOneResult)
{
    Client client(GetParam());
    RunBesideTheMainLoop({[&] {
        for (std::size_t turn = 0; turn < Turns(); ++turn) {
            client.RequestAtLast(kPhone);
        }
    }});
    EXPECT_EQ(client.Accepted(), Turns());
    ExpectAllResults(client);
    ExpectToServe(client);
}

TEST_P(ARequestFromAnotherThread, HasOneResultWhileOthersRequestToo)
{
    Client client(GetParam());
    const Work work = [&] {
        for (std::size_t turn = 0; turn < Turns() / 2; ++turn) {
            client.RequestAtLast(kPhone);
        }
    };
    RunBesideTheMainLoop({work, work, work});
    ExpectAllResults(client);
    ExpectToServe(client);
}

TEST_P(ARequestFromAnotherThread, HasOneResultWhileTheResultCallbackRequestsToo)
{
    Client client(GetParam());
    std::size_t fromTheCallback = 0;
    client.onResult = [&] {
        if (fromTheCallback < Turns() && client.Request(kPhone) == LYN_ERROR_NONE) {
            ++fromTheCallback;
        }
    };
    RunBesideTheMainLoop({[&] {
        for (std::size_t turn = 0; turn < Turns() / 3; ++turn) {
            client.RequestAtLast(kPhone);
        }
    }});
    ExpectAllResults(client);
    ExpectToServe(client);
}

TEST_P(ARequestFromAnotherThread, HasOneResultWhileOthersStartAndStopScans)
{
    Client client(GetParam());
    std::atomic<bool> done{false};
    const Work scan = [&] {
        while (!done) {
            client.StartScan();
            lyn_stop_scan(client.Handle());
        }
    };
    RunBesideTheMainLoop({[&] {
                              for (std::size_t turn = 0; turn < Turns(); ++turn) {
                                  client.RequestAtLast(kPhone);
                              }
                              done = true;
                          },
                          scan});
    EXPECT_TRUE(RunUntilAtLast([&] { return client.Results() >= client.Accepted(); }));
    EXPECT_EQ(lyn_stop_scan(client.Handle()), LYN_ERROR_NONE);
    ExpectAllResults(client);
    ExpectToServe(client);
}

TEST_P(ARequestFromAnotherThread, HasOneResultWhenTheConnectionFailsAtOnce)
{
    simulator::Phone phone = PhoneFor(GetParam());
    phone.connects = {{static_cast<int>(0xC0000001), 0}};
    simulator::AddPhone(phone);
    Client client(GetParam());
    RunBesideTheMainLoop({[&] {
        for (std::size_t turn = 0; turn < Turns(); ++turn) {
            client.RequestAtLast(kPhone);
        }
    }});
    ExpectAllResults(client);
}

TEST_P(ARequestFromAnotherThread, LetsTheMainLoopGoOnWhileItsStateIsReported)
{
    Client client(GetParam());
    std::atomic<bool> hasGoneOn{false};
    client.onState = [&](lyn_state_e state) {
        if (state != LYN_STATE_REQUESTING) {
            return;
        }
        // Behind everything that the request may have posted.
        g_idle_add_full(
            G_PRIORITY_LOW,
            [](gpointer data) -> gboolean {
                static_cast<std::atomic<bool>*>(data)->store(true);
                return G_SOURCE_REMOVE;
            },
            &hasGoneOn, nullptr);
        while (!hasGoneOn) {
            std::this_thread::yield();
        }
        hasGoneOn = false;
        EXPECT_EQ(client.Results() + 1, client.Accepted() + 1);
    };
    RunBesideTheMainLoop({[&] {
        for (int turn = 0; turn < 20; ++turn) {
            client.RequestAtLast(kPhone);
        }
    }});
    EXPECT_EQ(client.Accepted(), 20U);
    ExpectAllResults(client);
}

INSTANTIATE_TEST_SUITE_P(Each, ARequestFromAnotherThread, ::testing::ValuesIn(AllServices()), ServiceName);

}  // namespace
}  // namespace lyn::test
