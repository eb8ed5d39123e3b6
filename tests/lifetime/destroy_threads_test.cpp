// SPDX-License-Identifier: Apache-2.0
//
// Services destroyed on one thread while the main loop has something to deliver to them.
#include <memory>
#include <thread>

#include "lifetime/Crowd.h"
#include "lifetime/Lives.h"
#include "support/Clock.h"

namespace lyn::test {
namespace {

constexpr int kTurns = 1000;

/// Some time passes, a little more each turn, so that every step of what is under way is met.
void Dawdle(int turn)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(turn % 100 * 5);
    while (std::chrono::steady_clock::now() < end) {
        std::this_thread::yield();
    }
}

class DestroyingOnAnotherThread : public LivesOfEach {
protected:
    DestroyingOnAnotherThread() { simulator::SetLogCapture(7); }

    ~DestroyingOnAnotherThread() override
    {
        m_clients.clear();
        while (ElapseTimeout()) {
            simulator::Settle();
        }
    }

    /// A new life; reports of it may be under way when the service is gone, so it stays until the end.
    Client& BeginClient() { return *m_clients.emplace_back(std::make_unique<Client>(GetParam())); }

    /// Lives a short life as often as there are turns, on another thread, each to its destruction.
    void LiveAndDestroy(const std::function<void(Client&, int turn)>& live)
    {
        RunBesideTheMainLoop({[&] {
            for (int turn = 0; turn < kTurns; ++turn) {
                simulator::ClearJournal();
                Client& client = BeginClient();
                live(client, turn);
                EXPECT_EQ(client.Destroy(), LYN_ERROR_NONE);
            }
        }});
    }

    void ExpectTheNextToServe()
    {
        simulator::SetAdapterState(BT_ADAPTER_ENABLED);
        simulator::Settle();
        simulator::AddPhone(PhoneFor(GetParam()));
        Client& next = BeginClient();
        EXPECT_EQ(next.Request(kPhone), LYN_ERROR_NONE);
        EXPECT_TRUE(RunUntilAtLast([&] { return next.Results() == 1; }));
        EXPECT_EQ(next.Destroy(), LYN_ERROR_NONE);
        ExpectNothingLeft();
    }

private:
    std::vector<std::unique_ptr<Client>> m_clients;
};

TEST_P(DestroyingOnAnotherThread, RacesWithFoundPhones)
{
    LiveAndDestroy([](Client& client, int turn) {
        EXPECT_EQ(client.StartScan(), LYN_ERROR_NONE);
        Dawdle(turn);
        if (turn % 2 == 0) {
            EXPECT_EQ(lyn_stop_scan(client.Handle()), LYN_ERROR_NONE);
        }
    });
    simulator::DeliverAdvertisement(kPhone, -50, std::nullopt, std::nullopt);
    Client& last = BeginClient();
    EXPECT_EQ(lyn_stop_scan(last.Handle()), LYN_ERROR_NONE);
    EXPECT_EQ(last.Destroy(), LYN_ERROR_NONE);
    ExpectTheNextToServe();
}

TEST_P(DestroyingOnAnotherThread, RacesWithEveryStepOfARequest)
{
    LiveAndDestroy([](Client& client, int turn) {
        EXPECT_EQ(client.Request(kPhone), LYN_ERROR_NONE);
        Dawdle(turn);
    });
    ExpectTheNextToServe();
}

TEST_P(DestroyingOnAnotherThread, RacesWithResults)
{
    LiveAndDestroy([](Client& client, int turn) {
        EXPECT_EQ(client.Request(kPhone), LYN_ERROR_NONE);
        while (client.Results() == 0 && (turn % 2 == 0 || client.State() == LYN_STATE_REQUESTING)) {
            std::this_thread::yield();
        }
    });
    ExpectTheNextToServe();
}

TEST_P(DestroyingOnAnotherThread, RacesWithTimeOuts)
{
    simulator::Phone phone = PhoneFor(GetParam());
    CharacteristicOf(phone).answers.clear();
    simulator::AddPhone(phone);
    LiveAndDestroy([](Client& client, int turn) {
        EXPECT_EQ(client.Request(kPhone), LYN_ERROR_NONE);
        while (ArmedTimeouts().empty() && client.Results() == 0) {
            std::this_thread::yield();
        }
        ElapseTimeout();
        Dawdle(turn);
    });
    ExpectTheNextToServe();
}

TEST_P(DestroyingOnAnotherThread, RacesWithReportsOfTheDevice)
{
    std::atomic<bool> done{false};
    const Work device = [&] {
        while (!done) {
            simulator::AmbientPowerOff();
            simulator::SetAdapterState(BT_ADAPTER_ENABLED);
            simulator::PowerOff(0x40000000);
            std::this_thread::sleep_for(std::chrono::microseconds(50));
        }
    };
    RunBesideTheMainLoop({[&] {
                              for (int turn = 0; turn < kTurns; ++turn) {
                                  Client& client = BeginClient();
                                  client.StartScan();
                                  Dawdle(turn);
                                  lyn_stop_scan(client.Handle());
                                  EXPECT_EQ(client.Destroy(), LYN_ERROR_NONE);
                              }
                              done = true;
                          },
                          device});
    ExpectTheNextToServe();
}

TEST_P(DestroyingOnAnotherThread, RacesWithCallsOfTheSameHandle)
{
    std::atomic<lyn_service_h> handle{nullptr};
    std::atomic<bool> done{false};
    const Work use = [&] {
        while (!done) {
            const lyn_service_h service = handle;
            lyn_start_scan(service, nullptr, nullptr);
            lyn_request_initiating(service, kPhone, nullptr, nullptr);
            lyn_start_advertise(service, LYN_ADV_INTERVAL_100);
            lyn_stop_scan(service);
            lyn_stop_advertise(service);
            lyn_get_request_initiating_error_string(service, LYN_REQUEST_INITIATING_RESULT_SUCCESS);
        }
    };
    RunBesideTheMainLoop({[&] {
                              for (int turn = 0; turn < kTurns; ++turn) {
                                  Client& client = BeginClient();
                                  handle = client.Handle();
                                  Dawdle(turn);
                                  EXPECT_EQ(client.Destroy(), LYN_ERROR_NONE);
                              }
                              done = true;
                          },
                          use});
    Client& last = BeginClient();
    EXPECT_EQ(lyn_stop_scan(last.Handle()), LYN_ERROR_NONE);
    EXPECT_EQ(last.Destroy(), LYN_ERROR_NONE);
    ExpectTheNextToServe();
}

INSTANTIATE_TEST_SUITE_P(Each, DestroyingOnAnotherThread, ::testing::ValuesIn(AllServices()), ServiceName);

/// Each report of a phone's link, met from shortly before to shortly after its delivery.
class DestroyingDuringAReport : public DestroyingOnAnotherThread {
protected:
    using Phone = simulator::Phone;

    /// Destroys soon after the platform has been called for what the report is about.
    void RaceWithWhatFollows(const std::string& call, const std::function<void(Phone&)>& arrange = {})
    {
        Phone phone = PhoneFor(GetParam());
        if (arrange) {
            arrange(phone);
        }
        simulator::AddPhone(phone);
        LiveAndDestroy([&](Client& client, int turn) {
            EXPECT_EQ(client.Request(kPhone), LYN_ERROR_NONE);
            // A late answer to the service before, over the same link, may end the request earlier.
            while (CountCalls(call) == 0 && client.Results() == 0) {
                std::this_thread::yield();
            }
            Dawdle(turn);
        });
        ExpectTheNextToServe();
    }
};

TEST_P(DestroyingDuringAReport, OfAConnection)
{
    RaceWithWhatFollows("bt_gatt_connect");
}

TEST_P(DestroyingDuringAReport, OfAFailedConnection)
{
    RaceWithWhatFollows("bt_gatt_connect", [](Phone& phone) {
        phone.connects = {{static_cast<int>(0xC0000001), 0}};
    });
}

TEST_P(DestroyingDuringAReport, OfAFailedConnectionThatIsTriedAgain)
{
    RaceWithWhatFollows("bt_gatt_connect", [](Phone& phone) { phone.connects = {{133, 0}}; });
}

TEST_P(DestroyingDuringAReport, OfTheMtu)
{
    RaceWithWhatFollows("bt_gatt_client_request_att_mtu_change");
}

TEST_P(DestroyingDuringAReport, OfAWriteAndTheAnswer)
{
    RaceWithWhatFollows("bt_gatt_client_write_value");
}

TEST_P(DestroyingDuringAReport, OfAFailedWrite)
{
    RaceWithWhatFollows("bt_gatt_client_write_value", [](Phone& phone) {
        CharacteristicOf(phone).answers[0] = {.kind = simulator::Answer::Kind::writeError, .text = {}, .code = 5};
    });
}

TEST_P(DestroyingDuringAReport, OfALostLink)
{
    RaceWithWhatFollows("bt_gatt_client_write_value", [](Phone& phone) {
        CharacteristicOf(phone).answers[0] = {.kind = simulator::Answer::Kind::disconnect, .text = {}};
    });
}

TEST_P(DestroyingDuringAReport, OfADisconnection)
{
    RaceWithWhatFollows("bt_gatt_disconnect");
}

INSTANTIATE_TEST_SUITE_P(Each, DestroyingDuringAReport, ::testing::ValuesIn(RadioServices()), ServiceName);

}  // namespace
}  // namespace lyn::test
