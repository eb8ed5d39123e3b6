// SPDX-License-Identifier: Apache-2.0
//
// Fixture: a bare service with a scanner, a requester and a state machine of the test's own. They keep what
// they are asked in one list, in the order of its coming.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "FSM/CServiceFSM.h"
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
    /// Of the calls that begin a request, how many have ended.
    int callEnds = 0;
    std::function<void()> onCallEnd;
    bool resultIsOfLatest = true;
    std::function<void()> onIsResultOfLatest;
    int retirements = 0;
    /// What a FakeFsm says of its moves, and what it was given with its last event that had to know of them.
    unsigned int moves = 0;
    unsigned int movesGiven = 0;
    bool tooEarly = false;
    std::vector<LynFsmEvent> askedTooEarly;
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
    void EndRequestCall() override;
    bool IsResultOfLatest() const override;
    void Retire() override { ++m_parts.retirements; }
    void SetNodLinkVersion(const std::string& version) override { m_parts.Add("version " + version); }
    int GetNodlinkType() override { return m_parts.nodlinkType; }

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
    unsigned int GetMoves() const override { return m_parts.moves; }
    void ProcessEventSince(unsigned int moves, LynFsmEvent event, const EventArgPtr& arg) override;
    bool IsTooEarly(LynFsmEvent event) const override;

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

    /// A service held as its manager holds it.
    static std::shared_ptr<CService> MakeService(const StateChangedCb& cb);

    DeviceFoundCb KeepDevices(const std::string& mark = "found");
    RequestInitiatingResultCb KeepResults(const std::string& mark = "result");

    Parts parts;
    /// What the application is told, in order: "state 1", "found AA:..", "result 0".
    Texts told;
    std::function<void(lyn_state_e)> onState;  ///< Called after the state has been kept.
    std::shared_ptr<CService> service;
    FakeFsm* fsm = nullptr;
    CServiceFSM* machine = nullptr;  ///< That of Enter().
};

}  // namespace lyn::test
