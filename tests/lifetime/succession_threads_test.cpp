// SPDX-License-Identifier: Apache-2.0
//
// Callbacks that destroy their service, create the next one and request with it, while other threads call the
// functions of whichever service lives.
#include <memory>
#include <mutex>
#include <ostream>
#include <thread>
#include <tuple>

#include "lifetime/Crowd.h"
#include "lifetime/Lives.h"

namespace lyn::test {
namespace {

constexpr int kSuccessions = 500;
constexpr int kCallingThreads = 2;

struct Life {
    // A handle is an address: a call for the service before may reach this one before it is known to be there.
    std::atomic<bool> hasBegun{false};
    std::atomic_flag isOver;
    bool hasRequested = false;  // Guarded by the library: states are reported one at a time.
    std::unique_ptr<Client> client;
};

/// One service after the other. All lives stay to the end, for what may still be reported to them.
class Dynasty {
public:
    using Prepare = void (*)(Dynasty& dynasty, Life& life, Client& client);

    Dynasty(std::string service, Prepare prepare) : m_service(std::move(service)), m_prepare(prepare) { Begin(); }

    Client& Current() const { return *m_current.load()->client; }
    bool IsLast() const { return m_successions >= kSuccessions; }

    /// From inside a callback of the life: destroys its service, and the next one requests.
    void Succeed(Life& life)
    {
        if (IsLast() || !life.hasBegun || life.isOver.test_and_set()) {
            return;
        }
        EXPECT_EQ(life.client->Destroy(), LYN_ERROR_NONE);
        ++m_successions;
        Begin().Request(kPhone);  // Refused when another thread's request was faster.
    }

private:
    Client& Begin()
    {
        auto life = std::make_unique<Life>();
        const auto prepare = [&](Client& client) { m_prepare(*this, *life, client); };
        life->client = std::make_unique<Client>(m_service, prepare);
        life->hasBegun = true;
        const std::lock_guard lock(m_mutex);
        m_current = m_lives.emplace_back(std::move(life)).get();
        return Current();
    }

    const std::string m_service;
    const Prepare m_prepare;
    std::mutex m_mutex;
    std::vector<std::unique_ptr<Life>> m_lives;
    std::atomic<Life*> m_current{nullptr};
    std::atomic<int> m_successions{0};
};

struct Callback {
    const char* name;
    Dynasty::Prepare prepare;

    friend void PrintTo(const Callback& callback, std::ostream* out) { *out << callback.name; }
};

void SucceedInAState(Dynasty& dynasty, Life& life, lyn_state_e state)
{
    // One state that a call reports and one that the main loop reports; none of those that a request of the
    // successor reports from inside.
    const bool isEndOfRequest = state == LYN_STATE_READY && life.hasRequested;
    life.hasRequested = state == LYN_STATE_REQUESTING;
    if (isEndOfRequest || state == LYN_STATE_SCANNING) {
        dynasty.Succeed(life);
    }
}

void InDevice(Dynasty& dynasty, Life& life, Client& client)
{
    client.onPhone = [&] { dynasty.Succeed(life); };
}

void InState(Dynasty& dynasty, Life& life, Client& client)
{
    client.onState = [&](lyn_state_e state) { SucceedInAState(dynasty, life, state); };
}

void InResult(Dynasty& dynasty, Life& life, Client& client)
{
    client.onResult = [&] { dynasty.Succeed(life); };
}

const std::vector<Callback>& Callbacks()
{
    static const std::vector<Callback> callbacks = {
        {"Device", InDevice}, {"State", InState}, {"Result", InResult}};
    return callbacks;
}

using Case = std::tuple<std::string, Callback>;

std::string CaseName(const ::testing::TestParamInfo<Case>& info)
{
    return std::get<0>(info.param) + std::get<1>(info.param).name;
}

class ASuccessionInsideACallback : public Lives, public ::testing::WithParamInterface<Case> {
protected:
    ASuccessionInsideACallback()
    {
        simulator::SetLogCapture(7);
        simulator::SetJournal(false);
        simulator::AddPhone(PhoneFor(Service()));
    }

    static const std::string& Service() { return std::get<0>(GetParam()); }

    static void CallTheLivingOne(const Dynasty& dynasty)
    {
        for (int turn = 0; !dynasty.IsLast(); ++turn) {
            dynasty.Current().StartScan();
            lyn_start_advertise(dynasty.Current().Handle(), LYN_ADV_INTERVAL_50);
            lyn_get_request_initiating_error_string(dynasty.Current().Handle(),
                                                    LYN_REQUEST_INITIATING_RESULT_SUCCESS);
            if (turn % 8 == 0) {  // Seldom, so that phones are found.
                lyn_stop_scan(dynasty.Current().Handle());
                dynasty.Current().Request(kPhone);
            }
            std::this_thread::yield();
        }
    }
};

TEST_P(ASuccessionInsideACallback, GoesOnWhileOtherThreadsCall)
{
    Dynasty dynasty(Service(), std::get<1>(GetParam()).prepare);
    RunBesideTheMainLoop(std::vector<Work>(kCallingThreads, [&] { CallTheLivingOne(dynasty); }));
    EXPECT_TRUE(dynasty.IsLast());

    Client& last = dynasty.Current();
    EXPECT_TRUE(RunUntilAtLast([&] { return last.Request(kPhone) == LYN_ERROR_NONE; }));
    const std::size_t had = last.Results();
    EXPECT_TRUE(RunUntilAtLast([&] { return last.Results() == had + 1; }));
    EXPECT_EQ(last.Destroy(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Each, ASuccessionInsideACallback,
                         ::testing::Combine(::testing::ValuesIn(AllServices()), ::testing::ValuesIn(Callbacks())),
                         CaseName);

}  // namespace
}  // namespace lyn::test
