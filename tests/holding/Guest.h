// SPDX-License-Identifier: Apache-2.0
//
// An application with one service, all of whose functions and callbacks may come on any thread. What it hears
// is counted.
#pragma once

#include <atomic>
#include <functional>
#include <string>

#include "lyn_service.h"

namespace lyn::test {

class Guest {
public:
    explicit Guest(std::string service) : m_service(std::move(service)) {}
    Guest(const Guest&) = delete;
    Guest& operator=(const Guest&) = delete;

    // The twelve functions. Without a living service they are given a handle of nobody.
    lyn_error_e Create();
    lyn_error_e Destroy();
    lyn_error_e StartScan();
    lyn_error_e StartScanForJson();
    lyn_error_e StopScan();
    lyn_error_e Request(const char* address);
    lyn_error_e RequestWith(const char* address, const char* extraData);
    lyn_error_e Advertise();
    lyn_error_e EndAdvertise();
    lyn_error_e SetVersion();
    lyn_error_e AskType();
    std::string AskName();

    /// What this application does, once, inside the callback that reports this: "state READY", "phone", "json",
    /// "result". Set before the service is created.
    void Inside(const std::string& report, std::function<void(Guest&)> work);
    /// From now on it does not do so any more.
    void OnlyListen() { m_isWorkDone.test_and_set(); }

    const std::string& Service() const { return m_service; }
    bool IsAlive() const { return m_handle != nullptr && !m_isDestroyed; }
    lyn_service_h Handle() const { return m_handle; }
    lyn_state_e LastState() const { return m_lastState; }
    int Phones() const { return m_phones; }
    int Results() const { return m_results; }
    lyn_request_initiating_result_e LastResult() const { return m_lastResult; }
    /// Reports that came when the service had been destroyed.
    int LateReports() const { return m_lateReports; }

private:
    lyn_service_h Target() const;
    void Hear(const std::string& report);

    static void StateCb(lyn_state_e state, void* userData);
    static void PhoneCb(const lyn_device_info_t* info, void* userData);
    static void JsonCb(const char* json, void* userData);
    static void ResultCb(lyn_request_initiating_result_e result, void* userData);

    std::string m_service;
    std::atomic<lyn_service_h> m_handle{nullptr};
    std::atomic<bool> m_isDestroyed{false};
    std::atomic<lyn_state_e> m_lastState{LYN_STATE_READY};
    std::atomic<int> m_phones{0};
    std::atomic<int> m_results{0};
    std::atomic<lyn_request_initiating_result_e> m_lastResult{LYN_REQUEST_INITIATING_RESULT_RESERVED};
    std::atomic<int> m_lateReports{0};
    std::string m_workPlace;
    std::function<void(Guest&)> m_work;
    std::atomic_flag m_isWorkDone;
};

}  // namespace lyn::test
