// SPDX-License-Identifier: Apache-2.0
//
// What benchmarks and soak share: a simulated TV that keeps no records, its phones, and an application that
// counts what it is told.
#pragma once

#include <string>
#include <vector>

#include "lyn_service.h"
#include "lyn_simulator/simulator.h"

namespace lyn::bench {

inline constexpr const char* kPhone = "AA:BB:CC:DD:EE:01";

/// "mirroring", "nodlink", "kov", "dummy".
const std::vector<std::string>& AllServices();

/// Begins anew with a TV without phones, whose journal, log and kernel log keep nothing.
void PrepareTv();

/// The phone kPhone of a service; it answers "Success". A NodLink phone names its application first, where
/// `steps` is 2. "dummy" needs none, and gets one of "mirroring".
simulator::Phone PhoneFor(const std::string& service, int steps = 1);
/// The one characteristic of such a phone.
simulator::Characteristic& CharacteristicOf(simulator::Phone& phone);

/// An application with one service. Failures throw std::runtime_error.
class App {
public:
    explicit App(const std::string& serviceName);
    /// Destroys the service if it is still there.
    ~App();
    App(const App&) = delete;
    App& operator=(const App&) = delete;

    void Destroy();
    void StartScan();
    void StopScan() const;
    void Request();

    static void CountState(lyn_state_e state, void* app);
    static void CountPhone(const lyn_device_info_t* info, void* app);
    static void CountJson(const char* json, void* app);
    static void CountResult(lyn_request_initiating_result_e result, void* app);

    lyn_service_h handle = nullptr;
    long states = 0;
    long phones = 0;
    long results = 0;
    lyn_request_initiating_result_e lastResult = LYN_REQUEST_INITIATING_RESULT_RESERVED;
};

/// Throws std::runtime_error with the text when something is not so.
void Require(bool holds, const std::string& what);

}  // namespace lyn::bench
