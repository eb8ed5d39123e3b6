// SPDX-License-Identifier: Apache-2.0
//
// A TV application that goes through a story step by step and writes down what it hears. Each step becomes
// one line: what the C function returned, and what was reported meanwhile.
//
//   create   0
//   scan     0 SCANNING
//   phone    phone
//   request  0 READY REQUESTING
//   result   READY result 0          or, after the time-out:   (10 s) READY result 1
//   destroy  0
//
// When memory was short in a call, and the call failed, the application calls again, with memory.
#pragma once

#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

#include "lyn_service.h"

namespace lyn::test {

struct Line {
    std::string step;
    std::string said;
    std::string refused = {};  ///< what the first of two calls said

    bool operator==(const Line&) const = default;
};
using Lines = std::vector<Line>;

class Application {
public:
    explicit Application(std::string service) : m_service(std::move(service)) {}
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    // The C functions.
    void Create();
    void Scan();
    void ScanForJson();
    void StopScan();
    void Advertise();
    void EndAdvertise();
    void Request();
    void RequestWith(const std::string& extraData);
    void SetVersion(const std::string& version);
    void AskType();
    void AskName();

    // The main loop runs.
    /// Until a phone has been reported: at its first advertisement, else at its second.
    void Phone();
    /// Until nothing more happens by itself; without a result, ten seconds more.
    void Result();
    void TurnBluetooth(const char* step, bool isOn);
    /// Up to a moment in the middle of a request, or until nothing more happens by itself.
    void UntilConnected();
    void UntilWritten();

    /// What the last agreed NodLink session left in the settings.
    void ReadStoredMode();

    /// The service is destroyed inside the callback that reports this ("phone", "REQUESTING", "result").
    void DestroyInside(const std::string& report) { m_destroyInside = report; }
    /// The end of every story: destroys the service, if it is still there, and lets come what comes too late.
    void End();

    /// Called after each step.
    std::function<void()> afterStep;

    const Lines& Told() const { return m_lines; }
    /// Every phone as it was reported, and every message that the phone has got.
    const std::vector<std::string>& Phones() const { return m_phones; }
    const std::vector<std::string>& Messages() const { return m_messages; }
    /// Reports that came without a service.
    int LateReports() const { return m_lateReports; }

private:
    using Work = std::function<std::string()>;

    void Do(const char* step, const Work& work);
    void Call(const char* step, const std::function<lyn_error_e()>& function);
    void PumpUntil(const std::function<bool()>& isThere);
    lyn_error_e Destroy();
    void Hear(const char* report);
    void HearPhone(std::initializer_list<const char*> texts);

    static void StateCb(lyn_state_e state, void* userData);
    static void PhoneCb(const lyn_device_info_t* info, void* userData);
    static void JsonCb(const char* json, void* userData);
    static void ResultCb(lyn_request_initiating_result_e result, void* userData);

    std::string m_service;
    lyn_service_h m_handle = nullptr;
    std::string m_heard;
    std::string m_destroyInside;
    bool m_isDestroyed = false;
    int m_lateReports = 0;
    Lines m_lines;
    std::vector<std::string> m_phones;
    std::vector<std::string> m_messages;
};

}  // namespace lyn::test
