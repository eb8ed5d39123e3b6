// SPDX-License-Identifier: Apache-2.0
#include "service/FakeService.h"

#include "Service/ServiceBuilder.h"
#include "Service/ServiceManager.h"

namespace lyn {

IService* CServiceBuilder::BuildService(const std::string& name, const StateChangedCb& cb)
{
    auto& script = test::FakeService::TheScript();
    script.calls.push_back("build " + name);
    script.stateCb = cb;
    test::FakeService::Run(script.onBuild);
    return script.buildsNothing ? nullptr : new test::FakeService;
}

}  // namespace lyn

namespace lyn::test {

FakeService::Script& FakeService::TheScript()
{
    static Script script;
    return script;
}

void FakeService::Run(const std::function<void()>& work)
{
    if (const std::function<void()> copy = work) {  // The work may replace itself.
        copy();
    }
}

FakeService::FakeService()
{
    TheScript().living = this;
}

FakeService::~FakeService()
{
    Script& script = TheScript();
    script.calls.emplace_back("delete");
    script.living = script.living == this ? nullptr : script.living;
}

void FakeService::Operate(const std::string& call)
{
    TheScript().calls.push_back(call);
    Run(TheScript().onOperation);
}

void* FakeService::GetHandle()
{
    return static_cast<IService*>(this);
}

lyn_error_e FakeService::Init()
{
    TheScript().calls.emplace_back("init");
    return LYN_ERROR_NONE;
}

lyn_error_e FakeService::Deinit()
{
    TheScript().calls.emplace_back("deinit");
    Run(TheScript().onRelease);
    return LYN_ERROR_NONE;
}

void FakeService::ProcessEvent(LynFsmEvent event, EventArgPtr /*arg*/)
{
    Operate("event " + std::to_string(event));
}

std::string FakeService::GetServiceName()
{
    return "fake";
}

void FakeService::StartScan(const DeviceFoundCb& cb)
{
    TheScript().deviceCb = cb;
    Operate("start scan");
}

void FakeService::StopScan()
{
    Operate("stop scan");
}

void FakeService::RequestInitiating(const RequestInitiatingResultCb& cb, const std::string& deviceId,
                                    const std::string& extraData)
{
    TheScript().resultCb = cb;
    Operate("request '" + deviceId + "' '" + extraData + "'");
}

void FakeService::StartAdvertisement(int interval)
{
    Operate("start advertise " + std::to_string(interval));
}

void FakeService::StopAdvertisement()
{
    Operate("stop advertise");
}

void FakeService::SetNodlinkVersion(const std::string& version)
{
    Operate("version '" + version + "'");
}

std::string FakeService::GetRequestIntiatingErrorString(lyn_request_initiating_result_e result)
{
    Operate("error string " + std::to_string(result));
    return TheScript().errorText;
}

void FakeService::OnStateChanged(lyn_state_e state)
{
    Operate("state " + std::to_string(state));
}

void FakeService::OnRequestResult(lyn_request_initiating_result_e result)
{
    Operate("result " + std::to_string(result));
}

void FakeService::OnDeviceFound(const lyn_device_info_t& /*info*/)
{
    Operate("device");
}

int FakeService::GetNodlinkType()
{
    Operate("nodlink type");
    return TheScript().nodlinkType;
}

FakeServiceTest::FakeServiceTest() : script(FakeService::TheScript())
{
    script = {};
}

FakeServiceTest::~FakeServiceTest()
{
    script.onOperation = nullptr;
    script.onRelease = nullptr;
    if (script.living != nullptr) {
        CServiceManager::GetInstance().DestroyService(script.living->GetHandle());
    }
}

Texts FakeServiceTest::TakeCalls()
{
    Texts taken;
    taken.swap(FakeService::TheScript().calls);
    return taken;
}

}  // namespace lyn::test
