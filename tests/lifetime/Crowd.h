// SPDX-License-Identifier: Apache-2.0
//
// What the tests with several threads share: threads beside the main loop, and an application whose callbacks
// and calls may come on any of them.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "lyn_service.h"

namespace lyn::test {

using Work = std::function<void()>;

/// Runs each piece of work on a thread of its own, and the main loop on this one, until all are done.
void RunBesideTheMainLoop(const std::vector<Work>& works);

/// Runs the main loop until the condition holds; a generous limit, after which it says false.
bool RunUntilAtLast(const std::function<bool()>& done);

/// One service and counts of what it reports. The counters order nothing between threads, so that they hide
/// no race of the library's.
class Client {
public:
    /// @param prepare sets the callbacks below, before there is a service
    explicit Client(const std::string& service, const std::function<void(Client&)>& prepare = {});
    ~Client();
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    lyn_service_h Handle() const { return m_handle; }
    lyn_error_e Destroy() { return lyn_destroy_service(m_handle); }
    lyn_error_e StartScan() { return lyn_start_scan(m_handle, PhoneCb, this); }
    /// Counted when accepted.
    lyn_error_e Request(const char* address);
    /// Tries until a request is accepted.
    void RequestAtLast(const char* address);

    std::size_t Accepted() const { return m_accepted.load(std::memory_order_relaxed); }
    std::size_t Results() const { return m_results.load(std::memory_order_relaxed); }
    std::size_t Phones() const { return m_phones.load(std::memory_order_relaxed); }
    lyn_state_e State() const { return m_state.load(std::memory_order_relaxed); }

    /// Called after the state has been counted. Set before the first operation.
    std::function<void(lyn_state_e)> onState;
    std::function<void()> onResult;
    std::function<void()> onPhone;

private:
    static void StateCb(lyn_state_e state, void* userData);
    static void PhoneCb(const lyn_device_info_t* info, void* userData);
    static void ResultCb(lyn_request_initiating_result_e result, void* userData);

    lyn_service_h m_handle = nullptr;
    std::atomic<std::size_t> m_accepted{0};
    std::atomic<std::size_t> m_results{0};
    std::atomic<std::size_t> m_phones{0};
    std::atomic<lyn_state_e> m_state{LYN_STATE_READY};
};

}  // namespace lyn::test
