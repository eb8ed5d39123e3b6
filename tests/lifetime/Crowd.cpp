// SPDX-License-Identifier: Apache-2.0
#include "lifetime/Crowd.h"

#include <gtest/gtest.h>

#include <thread>

#include "lyn_simulator/simulator.h"

namespace lyn::test {
namespace {

constexpr int kLongMs = 100000;

}  // namespace

bool RunUntilAtLast(const std::function<bool()>& done)
{
    return simulator::RunUntil(done, kLongMs);
}

void RunBesideTheMainLoop(const std::vector<Work>& works)
{
    std::atomic<std::size_t> ended{0};
    std::vector<std::thread> threads;
    for (const Work& work : works) {
        threads.emplace_back([&ended, &work] {
            work();
            ++ended;
        });
    }
    EXPECT_TRUE(RunUntilAtLast([&] { return ended == works.size(); })) << "a thread is stuck";
    for (std::thread& thread : threads) {
        thread.join();
    }
}

Client::Client(const std::string& service, const std::function<void(Client&)>& prepare)
{
    if (prepare) {
        prepare(*this);
    }
    EXPECT_EQ(lyn_create_service(&m_handle, service.c_str(), StateCb, this), LYN_ERROR_NONE);
}

Client::~Client()
{
    lyn_destroy_service(m_handle);  // May have been destroyed before.
}

lyn_error_e Client::Request(const char* address)
{
    const lyn_error_e error = lyn_request_initiating(m_handle, address, ResultCb, this);
    if (error == LYN_ERROR_NONE) {
        m_accepted.fetch_add(1, std::memory_order_relaxed);
    }
    return error;
}

void Client::RequestAtLast(const char* address)
{
    while (Request(address) != LYN_ERROR_NONE) {
        std::this_thread::yield();
    }
}

void Client::StateCb(lyn_state_e state, void* userData)
{
    auto& client = *static_cast<Client*>(userData);
    client.m_state.store(state, std::memory_order_relaxed);
    if (client.onState) {
        client.onState(state);
    }
}

void Client::PhoneCb(const lyn_device_info_t* /*info*/, void* userData)
{
    auto& client = *static_cast<Client*>(userData);
    client.m_phones.fetch_add(1, std::memory_order_relaxed);
    if (client.onPhone) {
        client.onPhone();
    }
}

void Client::ResultCb(lyn_request_initiating_result_e /*result*/, void* userData)
{
    auto& client = *static_cast<Client*>(userData);
    client.m_results.fetch_add(1, std::memory_order_relaxed);
    if (client.onResult) {
        client.onResult();
    }
}

}  // namespace lyn::test
