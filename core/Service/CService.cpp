// SPDX-License-Identifier: Apache-2.0
#include "Service/CService.h"

#include <utility>

#include "Common/Failure.h"
#include "Common/LiveObject.h"
#include "Common/Util.h"
#include "FSM/CServiceFSM.h"
#include "lyn_platform/bluetooth.h"

namespace lyn {
namespace {

void DeleteScanner(IScanner* scanner)
{
    LYN_LOGD("%s", "in custom deleter of IScanner");
    delete scanner;
}

void DeleteFsm(IServiceFSM* fsm)
{
    LYN_LOGD("%s", "in custom deleter of IServiceFSM");
    fsm->Deinit();
    delete fsm;
}

template <typename Action>
EventArgPtr MakeArg(Action action)
{
    return std::make_shared<EventArg>(std::move(action));
}

}  // namespace

// A requester may be at work on the main loop: the lock lets it finish its step, and then it is gone.
void CService::RequesterDeleter::operator()(IRequester* requester) const
{
    const auto lock = LockLiveObjects();
    LYN_LOGD("%s", "in custom deleter of IRequester");
    delete requester;
}

CService::CService(std::string serviceName, StateChangedCb stateChangeCb)
    : m_ServiceName(std::move(serviceName)),
      m_pReports(std::make_shared<CServiceReports>(std::move(stateChangeCb)))
{
    InitResultMap();
}

CService::~CService()
{
    auto fsm = m_pReports->Close();
    m_pScanner.reset();
    m_pRequester.reset();
    fsm.reset();
}

void CService::InitResultMap()
{
    m_ResultMap = std::make_shared<const RequestResultMap>(BuildRequestResultMap());
}

void* CService::GetHandle()
{
    return static_cast<IService*>(this);
}

std::string CService::GetServiceName()
{
    return m_ServiceName;
}

lyn_error_e CService::Init()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    return SetFsm(new CServiceFSM);
}

lyn_error_e CService::Deinit()
{
    return LYN_ERROR_NONE;
}

lyn_error_e CService::DeinitVariant()
{
    bt_product_deinit();
    return CService::Deinit();
}

lyn_error_e CService::SetFsm(IServiceFSM* pFsm)
{
    if (pFsm == nullptr) {
        LogAndThrow<LynExceptionInternal>("pFsm is NULL");
    }
    const std::shared_ptr<IServiceFSM> fsm(pFsm, DeleteFsm);
    m_pReports->SetFsm(fsm);
    return fsm->Init([weak = std::weak_ptr(m_pReports)](lyn_state_e state) {
        if (const auto reports = weak.lock()) {
            reports->ReportState(state);
        }
    });
}

void CService::SetRequester(IRequester* pRequester)
{
    if (pRequester == nullptr) {
        LogAndThrow<LynExceptionInternal>("pRequester is NULL");
    }
    m_pRequester.reset(pRequester);
}

void CService::SetScanner(IScanner* pScanner)
{
    if (pScanner == nullptr) {
        LogAndThrow<LynExceptionInternal>("pScanner is NULL");
    }
    m_pScanner = std::shared_ptr<IScanner>(pScanner, DeleteScanner);
}

void CService::ProcessEvent(LynFsmEvent event, EventArgPtr arg)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const auto fsm = m_pReports->GetFsm();
    if (!fsm) {
        LogAndThrow<LynExceptionInternal>("m_pFsm is NULL");
    }
    fsm->ProcessEvent(event, arg);
}

void CService::StartScan(const DeviceFoundCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (!cb) {
        LogAndThrow<LynExceptionInvalidParam>("DeviceFoundCb is NULL");
    }
    m_pReports->SetDeviceFoundCb(cb);
    ProcessEvent(LYN_FSM_EVENT_START_SCAN, MakeArg([this] { OnStartScan(); }));
}

void CService::StopScan()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, MakeArg([this] { OnStopScan(); }));
}

void CService::RequestInitiating(const RequestInitiatingResultCb& cb, const std::string& deviceId,
                                 const std::string& extraData)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    LYN_LOGI("%s, device address : %s, extra data : %s", LynUtil::GetCurTime().c_str(), deviceId.c_str(),
             extraData.c_str());
    if (!cb) {
        LogAndThrow<LynExceptionInvalidParam>("RequestInitiatingResultCb is NULL");
    }
    const CServiceReports::RequestCall call(m_pReports);
    m_pReports->SetRequestResultCb(cb);
    StopAdvertisementAndScan();
    ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING,
                 MakeArg([this, deviceId, extraData] { OnRequestInitiating(deviceId, extraData); }));
}

// A refusal, of a failed step too, does not keep the request from being tried.
void CService::StopAdvertisementAndScan()
{
    try {
        ProcessEvent(LYN_FSM_EVENT_STOP_ADVERTISE, MakeArg([this] { OnStopAdvertisement(); }));
        ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, MakeArg([this] { OnStopScan(); }));
    } catch (const std::exception&) {
        LYN_LOGE("%s, Already stoppted", LynUtil::GetCurTime().c_str());
    }
}

void CService::StartAdvertisement(int interval)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    ProcessEvent(LYN_FSM_EVENT_START_ADVERTISE, MakeArg([this, interval] { OnStartAdvertisement(interval); }));
}

void CService::StopAdvertisement()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    ProcessEvent(LYN_FSM_EVENT_STOP_ADVERTISE, MakeArg([this] { OnStopAdvertisement(); }));
}

void CService::SetNodlinkVersion(const std::string& version)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (!m_pRequester) {
        LogAndThrow<LynExceptionInternal>("m_pRequester == nullptr");
    }
    LYN_LOGI("version : %s", version.c_str());
    m_pRequester->SetNodLinkVersion(version);
}

int CService::GetNodlinkType()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (!m_pRequester) {
        LogAndThrow<LynExceptionInternal>("m_pRequester is NULL");
    }
    return m_pRequester->GetNodlinkType();
}

std::string CService::GetRequestIntiatingErrorString(lyn_request_initiating_result_e result)
{
    return ToResultText(*m_ResultMap, result);
}

lyn_request_initiating_result_e CService::ConvertResultToErrCode(const std::string& text)
{
    return ToRequestResult(*m_ResultMap, text);
}

IScanner& CService::GetScanner() const
{
    if (!m_pScanner) {
        LogAndThrow<LynExceptionInternal>("m_pScanner is NULL");
    }
    return *m_pScanner;
}

void CService::OnStartScan()
{
    if (!GetScanner().StartScan()) {
        LogAndThrow<LynExceptionOperationFailed>("fail to start scan");
    }
}

void CService::OnStopScan()
{
    if (!GetScanner().StopScan()) {
        LogAndThrow<LynExceptionOperationFailed>("fail to stop scan");
    }
}

void CService::OnRequestInitiating(const std::string& deviceId, const std::string& extraData)
{
    if (!m_pRequester) {
        LogAndThrow<LynExceptionInternal>("m_pRequester is NULL");
    }
    // A request of a destroyed service would take the slot for links from the one that has come after it.
    const auto lock = LockLiveObjects();
    if (m_bRetired) {
        LogAndThrow<LynExceptionInvalidState>("Invalid State");
    }
    if (!m_pRequester->RequestInitiating(deviceId, extraData)) {
        LogAndThrow<LynExceptionOperationFailed>("fail to RequestInitiating");
    }
}

void CService::OnStartAdvertisement(int interval)
{
    GetScanner().StartAdvertisement(interval);
}

void CService::OnStopAdvertisement()
{
    GetScanner().StopAdvertisement();
}

void CService::OnDeviceFound(const lyn_device_info_t& info)
{
    const auto reports = m_pReports;
    reports->ReportDeviceFound(info);
}

void CService::StopReports()
{
    const auto lock = LockLiveObjects();
    m_bRetired = true;
    m_pReports->Stop();
}

void CService::OnStateChanged(lyn_state_e state)
{
    const auto reports = m_pReports;
    reports->ReportState(state);
}

void CService::OnRequestResult(lyn_request_initiating_result_e result)
{
    const auto reports = m_pReports;
    reports->ReportRequestResult(result);
}

void CService::OnScanStateChangedCallback(ScanState state)
{
    if (state != SCAN_STATE_STOPPED) {
        return;
    }
    try {
        ProcessEvent(LYN_FSM_EVENT_SCAN_STOPPED, std::make_shared<EventArg>());
    } catch (const std::exception& e) {
        LYN_LOGE("exception : %s", e.what());
    }
}

DeviceFoundCb CService::DeviceFoundReport() const
{
    return [reports = m_pReports](const lyn_device_info_t& info) { reports->ReportDeviceFound(info); };
}

RequestResultCb CService::RequestResultReport() const
{
    return [reports = m_pReports, results = m_ResultMap](const std::string& text) {
        reports->ReportRequestResult(ToRequestResult(*results, text));
    };
}

ScanStateChangedCb CService::ScanStateReport()
{
    return [this](ScanState state) { OnScanStateChangedCallback(state); };
}

}  // namespace lyn
