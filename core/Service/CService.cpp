// SPDX-License-Identifier: Apache-2.0
#include "Service/CService.h"

#include <algorithm>
#include <utility>

#include "Common/Failure.h"
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

void DeleteRequester(IRequester* requester)
{
    LYN_LOGD("%s", "in custom deleter of IRequester");
    delete requester;
}

void DeleteFsm(IServiceFSM* fsm)
{
    LYN_LOGD("%s", "in custom deleter of IServiceFSM");
    fsm->Deinit();
    delete fsm;
}

// However the call ends, its result waits no longer.
struct RequestCallEnd {
    IRequester* requester;
    ~RequestCallEnd()
    {
        if (requester != nullptr) {
            requester->EndRequestCall();
        }
    }
};

template <typename Action>
EventArgPtr MakeArg(Action action)
{
    return std::make_shared<EventArg>(std::move(action));
}

}  // namespace

class CService::Keeper {
public:
    explicit Keeper(const Self& self)
        : m_pService(self.isOpen ? self.service.lock() : nullptr),
          m_pOuter(s_pInnermost)
    {
        s_pInnermost = this;
    }
    ~Keeper() { s_pInnermost = m_pOuter; }
    Keeper(const Keeper&) = delete;
    Keeper& operator=(const Keeper&) = delete;

    CService* Get() const { return m_pService.get(); }

    /// Lets go of a service that a report of this thread keeps. Its members are out of bounds from here on.
    static void Release(const CService* service)
    {
        if (s_pInnermost != nullptr && s_pInnermost->Get() == service) {
            s_pInnermost->m_pService.reset();
        }
    }

private:
    static inline thread_local Keeper* s_pInnermost = nullptr;

    std::shared_ptr<CService> m_pService;
    Keeper* const m_pOuter;
};

CService::CService(std::string serviceName, StateChangedCb stateChangeCb)
    : m_ServiceName(std::move(serviceName)),
      m_StateChangeCb(std::move(stateChangeCb))
{
    InitResultMap();
}

CService::~CService()
{
    m_pScanner.reset();
    m_pRequester.reset();
    m_pFsm.reset();
}

void* CService::GetHandle()
{
    return static_cast<IService*>(this);
}

std::string CService::GetServiceName()
{
    return m_ServiceName;
}

// ---- Its parts ---------------------------------------------------------------------------------------

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

void CService::Open()
{
    m_pSelf->service = std::static_pointer_cast<CService>(shared_from_this());
    m_pSelf->isOpen = true;
    if (m_pFsm) {
        m_pFsm->Start();
    }
}

void CService::Retire()
{
    m_pSelf->isRetired = true;
    if (m_pRequester) {
        m_pRequester->Retire();
    }
}

lyn_error_e CService::SetFsm(IServiceFSM* pFsm)
{
    if (pFsm == nullptr) {
        LogAndThrow<LynExceptionInternal>("pFsm is NULL");
    }
    m_pFsm = std::shared_ptr<IServiceFSM>(pFsm, DeleteFsm);
    return m_pFsm->Init([self = m_pSelf](lyn_state_e state) {
        const Keeper keeper(*self);
        if (auto* const service = keeper.Get()) {
            service->OnStateChanged(state);
        }
    });
}

void CService::SetRequester(IRequester* pRequester)
{
    if (pRequester == nullptr) {
        LogAndThrow<LynExceptionInternal>("pRequester is NULL");
    }
    m_pRequester = std::shared_ptr<IRequester>(pRequester, DeleteRequester);
}

void CService::SetScanner(IScanner* pScanner)
{
    if (pScanner == nullptr) {
        LogAndThrow<LynExceptionInternal>("pScanner is NULL");
    }
    m_pScanner = std::shared_ptr<IScanner>(pScanner, DeleteScanner);
}

DeviceFoundCb CService::DeviceFoundReport() const
{
    return [self = m_pSelf](const lyn_device_info_t& info) {
        const Keeper keeper(*self);
        if (auto* const service = keeper.Get()) {
            service->OnDeviceFound(info);
        }
    };
}

RequestResultCb CService::RequestResultReport() const
{
    return [self = m_pSelf](const std::string& text) {
        const Keeper keeper(*self);
        if (auto* const service = keeper.Get()) {
            service->OnRequestResult(service->ConvertResultToErrCode(text));
        }
    };
}

ScanStateChangedCb CService::ScanStateReport() const
{
    return [self = m_pSelf](ScanState state) {
        const Keeper keeper(*self);
        if (auto* const service = keeper.Get()) {
            service->OnScanStateChangedCallback(state);
        }
    };
}

// ---- Operations --------------------------------------------------------------------------------------

std::shared_ptr<IServiceFSM> CService::GetFsm() const
{
    constexpr const char* operation = "ProcessEvent";
    if (m_pSelf->isRetired) {
        LogAndThrow<LynExceptionInvalidState>("Invalid State", __FILE__, operation);
    }
    if (!m_pFsm) {
        LogAndThrow<LynExceptionInternal>("m_pFsm is NULL", __FILE__, operation);
    }
    return m_pFsm;
}

void CService::ProcessEvent(LynFsmEvent event, EventArgPtr arg)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    GetFsm()->ProcessEvent(event, arg);
}

std::unique_lock<std::recursive_mutex> CService::TakeTurn(LynFsmEvent event)
{
    if (m_pFsm && m_pFsm->IsTooEarly(event)) {
        throw LynExceptionInvalidState("Invalid State: the state callback has not returned, use g_idle_add()");
    }
    return std::unique_lock(m_TurnMutex);
}

void CService::StartScan(const DeviceFoundCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (!cb) {
        LogAndThrow<LynExceptionInvalidParam>("DeviceFoundCb is NULL");
    }
    const auto turn = TakeTurn(LYN_FSM_EVENT_START_SCAN);
    Store(m_DeviceFoundCb, cb);
    ProcessEvent(LYN_FSM_EVENT_START_SCAN, MakeArg([this] { OnStartScan(); }));
}

void CService::StopScan()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const auto turn = TakeTurn(LYN_FSM_EVENT_STOP_SCAN);
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
    const auto turn = TakeTurn(LYN_FSM_EVENT_REQUEST_INITIATING);
    const RequestCallEnd end{m_pRequester.get()};
    StopAdvertisementAndScan();
    try {
        ProcessEvent(LYN_FSM_EVENT_REQUEST_INITIATING, MakeArg([&] {
                         Store(m_RequestResultCb, cb);  // Not before: the result of the last request may be due.
                         OnRequestInitiating(deviceId, extraData);
                     }));
    } catch (...) {
        Store(m_RequestResultCb, cb);  // Kept: also a refused call gives the callback of the running request.
        throw;
    }
}

// A refusal, of a failed step too, does not keep the request from being tried.
void CService::StopAdvertisementAndScan()
{
    try {
        ProcessEvent(LYN_FSM_EVENT_STOP_ADVERTISE, MakeArg([this] { OnStopAdvertisement(); }));
        ProcessEvent(LYN_FSM_EVENT_STOP_SCAN, MakeArg([this] { OnStopScan(); }));
    } catch (const std::exception&) {
        LYN_LOGE_AS("RequestInitiating", "%s, Already stoppted", LynUtil::GetCurTime().c_str());
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

// ---- The work of the events --------------------------------------------------------------------------

IScanner& CService::GetScanner(const char* function) const
{
    if (!m_pScanner) {
        LogAndThrow<LynExceptionInternal>("m_pScanner is NULL", __FILE__, function);
    }
    return *m_pScanner;
}

void CService::FailOperation(const char* text, const char* function) const
{
    if (m_pSelf->isRetired) {
        LogAndThrow<LynExceptionInvalidState>("Invalid State", __FILE__, function);
    }
    LogAndThrow<LynExceptionOperationFailed>(text, __FILE__, function);
}

void CService::OnStartScan()
{
    if (!GetScanner().StartScan()) {
        FailOperation("fail to start scan");
    }
}

void CService::OnStopScan()
{
    if (!GetScanner().StopScan()) {
        FailOperation("fail to stop scan");
    }
}

void CService::OnRequestInitiating(const std::string& deviceId, const std::string& extraData)
{
    if (!m_pRequester) {
        LogAndThrow<LynExceptionInternal>("m_pRequester is NULL");
    }
    if (!m_pRequester->RequestInitiating(deviceId, extraData)) {
        FailOperation("fail to RequestInitiating");
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

// ---- Reports of the parts ----------------------------------------------------------------------------

template <typename Cb>
void CService::Store(Cb& member, Cb cb)
{
    const std::lock_guard lock(m_CallbackMutex);
    member.swap(cb);
}

template <typename Cb>
Cb CService::Stored(const Cb& member) const
{
    const std::lock_guard lock(m_CallbackMutex);
    return member;
}

void CService::OnStateChanged(lyn_state_e state)
{
    if (m_pSelf->isRetired) {
        return;
    }
    LYN_LOGI("state : %d", state);
    const StateChangedCb callback = m_StateChangeCb;
    if (!callback) {
        LYN_LOGE("%s", "m_StateChangeCb is null");
        return;
    }
    Keeper::Release(this);
    callback(state);
}

void CService::OnDeviceFound(const lyn_device_info_t& info)
{
    if (m_pSelf->isRetired) {
        return;
    }
    const DeviceFoundCb callback = Stored(m_DeviceFoundCb);
    if (!callback) {
        LYN_LOGE("%s", "m_DeviceFoundCb is NULL");
        return;
    }
    Keeper::Release(this);
    callback(info);
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

void CService::OnRequestResult(lyn_request_initiating_result_e result)
{
    if (m_pSelf->isRetired) {
        return;
    }
    // Before the machine is READY: the next request brings its own.
    const RequestInitiatingResultCb callback = Stored(m_RequestResultCb);
    const auto self = m_pSelf;
    try {
        const auto fsm = GetFsm();
        const unsigned int moves = fsm->GetMoves();
        if (m_pRequester && !m_pRequester->IsResultOfLatest()) {
            return;
        }
        Keeper::Release(this);
        fsm->ProcessEventSince(moves, LYN_FSM_EVENT_REQUEST_INITIATING_RESULT, nullptr);  // It has no work.
    } catch (const std::exception& e) {
        LYN_LOGE("exception : %s", e.what());
        return;
    }
    if (self->isRetired) {
        return;  // By the state callback.
    }
    if (!callback) {
        LYN_LOGE("%s", "m_RequestResultCb is NULL");
        return;
    }
    callback(result);
}

// ---- Names of results --------------------------------------------------------------------------------

void CService::InitResultMap()
{
    m_ResultMap = {
        {"Success", LYN_REQUEST_INITIATING_RESULT_SUCCESS},
        {"GattFail", LYN_REQUEST_INITIATING_RESULT_GATT_FAIL},
        {"NotRegisteredDevice", LYN_REQUEST_INITIATING_RESULT_NOT_REGISTERED_DEVICE},
        {"UnknownErr", LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR},
        {"CommandErr", LYN_REQUEST_INITIATING_RESULT_COMMAND_ERR},
        {"NotSupported", LYN_REQUEST_INITIATING_RESULT_NOT_SUPPORTED},
        {"Connected", LYN_REQUEST_INITIATING_RESULT_CONNECTED},
        {"NotTap", LYN_REQUEST_INITIATING_RESULT_NOT_TAP},
        {"NotStartedKov", LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_KOV},
        {"NotStartedMirroring", LYN_REQUEST_INITIATING_RESULT_NOT_STARTED_MIRRORING},
        {"GattDisconnected", LYN_REQUEST_INITIATING_RESULT_GATT_DISCONNECTED},
    };
}

lyn_request_initiating_result_e CService::ConvertResultToErrCode(const std::string& text)
{
    const auto found = m_ResultMap.find(text);
    if (found == m_ResultMap.end()) {
        LYN_LOGE("%s", "Not defined error code. Return Unknown.");
        return LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR;
    }
    LYN_LOGI("result : %s", text.c_str());
    return found->second;
}

std::string CService::GetRequestIntiatingErrorString(lyn_request_initiating_result_e result)
{
    const auto found = std::find_if(m_ResultMap.begin(), m_ResultMap.end(),
                                    [&](const auto& entry) { return entry.second == result; });
    if (found == m_ResultMap.end()) {
        LogAndThrow<LynExceptionInvalidParam>("Not mached errorCode");
    }
    return found->first;
}

}  // namespace lyn
