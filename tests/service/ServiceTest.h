// SPDX-License-Identifier: Apache-2.0
//
// Fixture: a bare service with a scanner, a requester and a state machine of the test's own. They keep what
// they are asked in one list, in the order of its coming.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Service/CService.h"
#include "support/LogOrder.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

using Texts = std::vector<std::string>;

/// What the parts are asked, and what they answer.
struct Parts {
    Texts calls;
    bool scans = true;
    bool stops = true;
    bool requests = true;
    int nodlinkType = 0;
    std::function<void()> onRequest;
    /// Called with every event of a FakeFsm; runs the event's work when it is empty.
    std::function<void(LynFsmEvent, const EventArgPtr&)> onEvent;

    void Add(const std::string& call) { calls.push_back(call); }
};

class FakeScanner : public IScanner {
public:
    explicit FakeScanner(Parts& parts, std::string name = "scanner") : m_parts(parts), m_name(std::move(name)) {}
    ~FakeScanner() override { m_parts.Add("delete " + m_name); }

    bool StartScan() override;
    bool StopScan() override;
    void StartAdvertisement(int interval) override { m_parts.Add("start advertise " + std::to_string(interval)); }
    void StopAdvertisement() override { m_parts.Add("stop advertise"); }
    void NotifyDeviceFound(const std::string&, const std::string&, const std::string&, int,
                           const std::string&) override
    {
    }
    void NotifyScanStateChanged(ScanState) override {}

private:
    Parts& m_parts;
    std::string m_name;
};

class FakeRequester : public IRequester {
public:
    explicit FakeRequester(Parts& parts, std::string name = "requester") : m_parts(parts), m_name(std::move(name))
    {
    }
    ~FakeRequester() override { m_parts.Add("delete " + m_name); }

    bool RequestInitiating(const std::string& deviceAddress, const std::string& extraData) override;
    void SetNodLinkVersion(const std::string& version) override { m_parts.Add("version " + version); }
    int GetNodlinkType() override { return m_parts.nodlinkType; }
    void NotifyRequestResult(const std::string&) override {}
    void WriteControlData(const std::string&) override {}
    void OnConnectionStateChanged(int, bool, const std::string&) override {}
    void OnCharateristicValueChangedCb(const char*, int) override {}
    void OnWriteComplete(int) override {}
    void OnMtuChanged(bt_gatt_client_h, const bt_gatt_client_att_mtu_info_s*) override {}
    void OnGattConnected(int, const std::string&) override {}
    void OnGattDisConnected(int, const std::string&) override {}
    std::string BuildData() override { return ""; }

private:
    Parts& m_parts;
    std::string m_name;
};

class FakeFsm : public IServiceFSM {
public:
    explicit FakeFsm(Parts& parts, std::string name = "fsm") : m_parts(parts), m_name(std::move(name)) {}
    ~FakeFsm() override { m_parts.Add("delete " + m_name); }

    lyn_error_e Init(StateChangedCb stateChangedCb) override;
    lyn_error_e Deinit() override;
    void ProcessEvent(LynFsmEvent event, const EventArgPtr& arg) override;

    StateChangedCb report;

private:
    Parts& m_parts;
    std::string m_name;
};

class ServiceTest : public SimulatedTv {
protected:
    ServiceTest();
    ~ServiceTest() override;

    /// Gives the service all three parts; the state machine is a FakeFsm.
    void InstallParts();
    /// Gives the service scanner and requester, and its own state machine in this state.
    void InstallPartsAndMachine(lyn_state_e state = LYN_STATE_READY);
    void Enter(lyn_state_e state);
    /// The calls so far; the list begins anew.
    Texts TakeCalls();

    DeviceFoundCb KeepDevices(const std::string& mark = "found");
    RequestInitiatingResultCb KeepResults(const std::string& mark = "result");

    Parts parts;
    /// What the application is told, in order: "state 1", "found AA:..", "result 0".
    Texts told;
    std::unique_ptr<CService> service;
    FakeFsm* fsm = nullptr;
};

}  // namespace lyn::test
