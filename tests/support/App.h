// SPDX-License-Identifier: Apache-2.0
//
// A TV application for tests: one service through the C interface, everything it reports kept. Main loop
// thread, unless a test says otherwise.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "lyn_service.h"

namespace lyn::test {

struct FoundPhone {
    bool hasName = false;
    std::string name;
    std::string address;
    std::string uniqueId;
    std::string extraData;
    int rssi = 0;

    bool operator==(const FoundPhone&) const = default;
};

class App {
public:
    App() = default;
    /// Creates the service; fails the test when that fails.
    explicit App(const std::string& serviceName);
    /// Destroys the service if it is still there.
    ~App();
    App(const App&) = delete;
    App& operator=(const App&) = delete;

    lyn_error_e Create(const std::string& serviceName);
    lyn_error_e Destroy();
    lyn_error_e StartScan();
    lyn_error_e StartScanWithSerialization();
    lyn_error_e StopScan();
    lyn_error_e Request(const std::string& address);
    lyn_error_e Request(const std::string& address, const std::string& extraData);
    /// Runs the main loop until a further result has come. False when none comes.
    bool WaitForResult();

    lyn_service_h handle = nullptr;
    std::vector<lyn_state_e> states;
    std::vector<FoundPhone> phones;
    std::vector<std::string> jsons;
    std::vector<lyn_request_initiating_result_e> results;
    /// "state 1", "phone AA:..", "result 0" in the order of their coming.
    std::vector<std::string> events;
    /// Reports that came while this application had no service: after Destroy() there must be none.
    int lateReports = 0;

    // Called after the report has been kept.
    std::function<void(lyn_state_e)> onState;
    std::function<void(const FoundPhone&)> onPhone;
    std::function<void(lyn_request_initiating_result_e)> onResult;

private:
    void NoteLate();
    static void StateCb(lyn_state_e state, void* userData);
    static void PhoneCb(const lyn_device_info_t* info, void* userData);
    static void JsonCb(const char* json, void* userData);
    static void ResultCb(lyn_request_initiating_result_e result, void* userData);
};

}  // namespace lyn::test
