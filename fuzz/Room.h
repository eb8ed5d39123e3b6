// SPDX-License-Identifier: Apache-2.0
//
// What the fuzzers share: a fresh simulated TV for each input, an application over the C interface, and
// Require(), which ends the process when a promise is broken.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "lyn_service.h"
#include "lyn_simulator/simulator.h"

namespace lyn::fuzz {

/// Ends the process, as a crash would, with the text when the promise does not hold.
void Require(bool holds, const char* promise);

/// The bytes of an input, taken from the front. Nothing is left to take: zeros and empty texts.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : m_data(data), m_left(size) {}

    bool IsEmpty() const { return m_left == 0; }
    std::uint8_t TakeByte();
    /// As many bytes as the next byte says, or as are left.
    std::string TakeText();
    simulator::Bytes TakeBytes();
    std::string TakeRest();

private:
    const std::uint8_t* m_data;
    std::size_t m_left;
};

/// Resets the TV and gives it what every message needs.
void PrepareTv();

/// An application with one service, whose reports are counted.
class App {
public:
    explicit App(const char* serviceName);
    ~App();
    App(const App&) = delete;
    App& operator=(const App&) = delete;

    /// Requests, and requires exactly one result and the state READY at its end.
    void RequestAndRequireOneResult(const std::string& address, const std::string& extraData);

    lyn_service_h handle = nullptr;
    int phones = 0;
    int results = 0;
    lyn_state_e state = LYN_STATE_READY;

private:
    static void StateCb(lyn_state_e state, void* userData);
    static void ResultCb(lyn_request_initiating_result_e result, void* userData);
};

}  // namespace lyn::fuzz
