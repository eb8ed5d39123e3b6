// SPDX-License-Identifier: Apache-2.0
//
// Takes the place of the builder for the whole program: whatever name is asked for, the manager gets a
// FakeService, which does what a test says.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "Service/IService.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

using Texts = std::vector<std::string>;

class FakeService : public IService {
public:
    /// What all fake services share: the test sets it, and reads it when they are gone.
    struct Script {
        /// What was asked of builder and service, in order.
        Texts calls;
        /// Runs inside each forwarded operation.
        std::function<void()> onOperation;
        /// Runs inside the builder.
        std::function<void()> onBuild;
        /// Runs inside the release of a service.
        std::function<void()> onRelease;
        int opened = 0;
        int retired = 0;
        bool buildsNothing = false;
        int nodlinkType = 0;
        std::string errorText;
        // What was given last.
        StateChangedCb stateCb;
        DeviceFoundCb deviceCb;
        RequestInitiatingResultCb resultCb;
        FakeService* living = nullptr;
    };
    static Script& TheScript();
    static void Run(const std::function<void()>& work);

    FakeService();
    ~FakeService() override;

    void* GetHandle() override;
    lyn_error_e Init() override;
    lyn_error_e Deinit() override;
    void ProcessEvent(LynFsmEvent event, EventArgPtr arg) override;
    std::string GetServiceName() override;
    void StartScan(const DeviceFoundCb& cb) override;
    void StopScan() override;
    void RequestInitiating(const RequestInitiatingResultCb& cb, const std::string& deviceId,
                           const std::string& extraData) override;
    void StartAdvertisement(int interval) override;
    void StopAdvertisement() override;
    void SetNodlinkVersion(const std::string& version) override;
    std::string GetRequestIntiatingErrorString(lyn_request_initiating_result_e result) override;
    void OnStateChanged(lyn_state_e state) override;
    void OnRequestResult(lyn_request_initiating_result_e result) override;
    void OnDeviceFound(const lyn_device_info_t& info) override;
    int GetNodlinkType() override;
    void Open() override { ++TheScript().opened; }
    void Retire() override { ++TheScript().retired; }

private:
    static void Operate(const std::string& call);
};

/// Fixture: a new script for each test, and no service left at its end.
class FakeServiceTest : public SimulatedTv {
protected:
    FakeServiceTest();
    ~FakeServiceTest() override;

    /// The calls so far; the list begins anew.
    static Texts TakeCalls();

    FakeService::Script& script;
};

}  // namespace lyn::test
