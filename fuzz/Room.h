// SPDX-License-Identifier: Apache-2.0
//
// What the fuzzers share: a fresh simulated TV for each input, an application over the C interface, and
// Require(), which ends the process when a promise is broken.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "lyn_service.h"
#include "lyn_simulator/simulator.h"

namespace lyn::fuzz {

constexpr const char* ADDRESS = "AA:BB:CC:DD:EE:01";
constexpr const char* UNIQUE_ID = "0123456789abcdefghijkl";

/// Ends the process, as a crash would, with a text.
[[noreturn]] void Break(const std::string& promise);
/// The same when the promise does not hold.
inline void Require(bool holds, const std::string& promise)
{
    if (!holds) {
        Break(promise);
    }
}

/// A text as C sees it: up to the first zero byte.
std::string UpToZero(const std::string& text);

/// Whether a text is one line of ASCII: no control character, but DEL, which JSON lets pass.
bool IsAsciiLine(const std::string& text);

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

/// A TV that has what every message needs, for one input. Its end leaves nothing in memory: an input that
/// does would be searched for leaks by the fuzzer, which takes longer than the input.
class Tv {
public:
    Tv();
    ~Tv();
    Tv(const Tv&) = delete;
    Tv& operator=(const Tv&) = delete;
};

/// An application with one service, whose reports are counted. Its end destroys the service and requires
/// that nothing of it is left.
class App {
public:
    explicit App(const char* serviceName);
    ~App();
    App(const App&) = delete;
    App& operator=(const App&) = delete;

    /// Requests, and requires exactly one result and the states that are documented for a request.
    lyn_request_initiating_result_e Request(const std::string& address, const std::string& extraData = "");

    lyn_service_h handle = nullptr;

private:
    static void StateCb(lyn_state_e state, void* userData);
    static void ResultCb(lyn_request_initiating_result_e result, void* userData);

    std::vector<lyn_state_e> m_states;
    std::vector<lyn_request_initiating_result_e> m_results;
};

}  // namespace lyn::fuzz
