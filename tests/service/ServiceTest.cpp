// SPDX-License-Identifier: Apache-2.0
#include "service/ServiceTest.h"

namespace lyn::test {

bool FakeScanner::StartScan()
{
    m_parts.Add("start scan");
    return m_parts.scans;
}

bool FakeScanner::StopScan()
{
    m_parts.Add("stop scan");
    return m_parts.stops;
}

bool FakeRequester::RequestInitiating(const std::string& deviceAddress, const std::string& extraData)
{
    m_parts.Add("request '" + deviceAddress + "' '" + extraData + "'");
    if (m_parts.onRequest) {
        m_parts.onRequest();
    }
    return m_parts.requests;
}

void FakeRequester::EndRequestCall()
{
    ++m_parts.callEnds;
    if (m_parts.onCallEnd) {
        m_parts.onCallEnd();
    }
}

bool FakeRequester::IsResultOfLatest() const
{
    if (m_parts.onIsResultOfLatest) {
        m_parts.onIsResultOfLatest();
    }
    return m_parts.resultIsOfLatest;
}

lyn_error_e FakeFsm::Init(StateChangedCb stateChangedCb)
{
    m_parts.Add("init " + m_name);
    report = std::move(stateChangedCb);
    return LYN_ERROR_NONE;
}

lyn_error_e FakeFsm::Deinit()
{
    m_parts.Add("deinit " + m_name);
    report = nullptr;
    return LYN_ERROR_NONE;
}

void FakeFsm::ProcessEvent(LynFsmEvent event, const EventArgPtr& arg)
{
    m_parts.Add("event " + std::to_string(event));
    if (m_parts.onEvent) {
        m_parts.onEvent(event, arg);
    } else if (arg && arg->m_Action) {
        arg->m_Action();
    }
}

void FakeFsm::ProcessEventSince(unsigned int moves, LynFsmEvent event, const EventArgPtr& arg)
{
    m_parts.movesGiven = moves;
    ProcessEvent(event, arg);
}

bool FakeFsm::IsTooEarly(LynFsmEvent event) const
{
    m_parts.askedTooEarly.push_back(event);
    return m_parts.tooEarly;
}

ServiceTest::ServiceTest()
    : service(MakeService([this](lyn_state_e state) {
          told.push_back("state " + std::to_string(state));
          if (onState) {
              onState(state);
          }
      }))
{
}

ServiceTest::~ServiceTest()
{
    service.reset();  // Before the parts' list.
}

std::shared_ptr<CService> ServiceTest::MakeService(const StateChangedCb& cb)
{
    auto made = std::make_shared<CService>("some service", cb);
    made->Open();
    return made;
}

void ServiceTest::InstallParts()
{
    service->SetScanner(new FakeScanner(parts));
    service->SetRequester(new FakeRequester(parts));
    fsm = new FakeFsm(parts);
    service->SetFsm(fsm);
    parts.calls.clear();
    simulator::ClearLog();
}

void ServiceTest::InstallPartsAndMachine(lyn_state_e state)
{
    service->SetScanner(new FakeScanner(parts));
    service->SetRequester(new FakeRequester(parts));
    service->Init();
    Enter(state);
}

void ServiceTest::Enter(lyn_state_e state)
{
    class Machine : public CServiceFSM {
    public:
        explicit Machine(lyn_state_e first) { m_CurrentState = Position{first, 0}; }
    };
    machine = new Machine(state);
    service->SetFsm(machine);
    parts.calls.clear();
    told.clear();
    simulator::ClearLog();
}

Texts ServiceTest::TakeCalls()
{
    Texts taken;
    taken.swap(parts.calls);
    return taken;
}

DeviceFoundCb ServiceTest::KeepDevices(const std::string& mark)
{
    return [this, mark](const lyn_device_info_t& info) { told.push_back(mark + " " + info.address); };
}

RequestInitiatingResultCb ServiceTest::KeepResults(const std::string& mark)
{
    return [this, mark](lyn_request_initiating_result_e result) {
        told.push_back(mark + " " + std::to_string(result));
    };
}

}  // namespace lyn::test
