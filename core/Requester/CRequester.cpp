// SPDX-License-Identifier: Apache-2.0
#include "Requester/CRequester.h"

#include <new>
#include <utility>

#include "Common/Failure.h"
#include "Common/PlatformCodes.h"
#include "Common/Util.h"
#include "Requester/ExchangeData/CExchangeData.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

constexpr unsigned int WANTED_MTU = 256;
constexpr const char* RESULT_GATT_FAIL = "GattFail";

}  // namespace

CRequester::CRequester(RequestResultCb requestResultCb, std::string serviceUuid, std::string characteristicUuid)
    : m_RequestResultCallback(std::move(requestResultCb)),
      m_GattFailDelivery(MakeDelivery(RESULT_GATT_FAIL)),
      m_ServiceUuid(std::move(serviceUuid)),
      m_CharacteristicUuid(std::move(characteristicUuid))
{
}

CRequester::~CRequester() = default;

void CRequester::GattClientDeleter::operator()(CGattClient* client) const
{
    LYN_LOGI("%s", "in custom deleter of m_GattClient");
    client->Deinit();
    delete client;
}

bool CRequester::RequestInitiating(const std::string& deviceAddress, const std::string& extraData)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const auto lock = LockLiveObjects();
    LYN_LOGI("device address : %s, extra data : %s", deviceAddress.c_str(), extraData.c_str());
    m_ExtraData = extraData;
    // What an exchange that never came to its result may have left behind.
    m_bRequestDone = false;
    m_NotifyResultFunc = nullptr;
    DisarmTimeout();
    m_GattClient.reset(new CGattClient);
    m_GattClient->Init(
        [this](int result, bool connected, const std::string& address) {
            OnConnectionStateChanged(result, connected, address);
        },
        [this](const char* value, int length) { OnCharateristicValueChangedCb(value, length); }, InitUuidMap());

    LynUtil::SetBtPerformanceBoost(true);
    if (Connect(deviceAddress)) {
        return true;
    }
    LynUtil::SetBtPerformanceBoost(false);
    LYN_LOGE("Fail to connect gatt %s", deviceAddress.c_str());
    m_GattClient.reset();
    return false;
}

// Want of memory is a refusal, too: nothing has been begun then.
bool CRequester::Connect(const std::string& deviceAddress)
{
    try {
        return m_GattClient->Connect(deviceAddress);
    } catch (const std::bad_alloc& e) {
        LYN_LOGE("exception : %s", e.what());
        return false;
    }
}

void CRequester::SetNodLinkVersion(const std::string& /*version*/)
{
    LogAndThrow<LynExceptionNotSupported>("Not supported api for this service");
}

int CRequester::GetNodlinkType()
{
    LogAndThrow<LynExceptionNotSupported>("Not supported api for this service");
}

void CRequester::OnConnectionStateChanged(int result, bool connected, const std::string& address)
{
    if (connected) {
        OnGattConnected(result, address);
    } else {
        OnGattDisConnected(result, address);
    }
}

void CRequester::OnGattConnected(int result, const std::string& /*address*/)
{
    if (result != PLATFORM_OK) {
        LYN_LOGE("%s", "connection fail");
        NotifyRequestResult(RESULT_GATT_FAIL);
        m_GattClient.reset();
        return;
    }
    m_bRequestDone = false;
    const bool requested = m_GattClient->RequestSetMtu(
        WANTED_MTU,
        [this](void* client, const bt_gatt_client_att_mtu_info_s* mtuInfo) { OnMtuChanged(client, mtuInfo); });
    if (!requested) {
        LYN_LOGE("%s", "fail to request set mtu as 256.");
    }
    ArmTimeout();  // Also after a failed request, which then ends by the time-out.
}

void CRequester::OnMtuChanged(bt_gatt_client_h /*client*/, const bt_gatt_client_att_mtu_info_s* /*mtuInfo*/)
{
    try {
        WriteControlData(BuildData());
    } catch (const std::exception& e) {
        LYN_LOGE("exception : %s", e.what());
        NotifyRequestResult(RESULT_GATT_FAIL);
        FinishAndDisconnect();
    }
}

void CRequester::WriteControlData(const std::string& data)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    m_GattClient->WriteData(m_ServiceUuid, m_CharacteristicUuid, data,
                            [this](int result) { OnWriteComplete(result); });
}

void CRequester::OnWriteComplete(int result)
{
    LYN_LOGI("result : %d", result);
    if (result == PLATFORM_OK) {
        return;
    }
    FinishAndDisconnect();
    NotifyRequestResult(RESULT_GATT_FAIL);
}

void CRequester::OnCharateristicValueChangedCb(const char* value, int length)
{
    if (value == nullptr || length < 1) {
        LYN_LOGE("%s", "wrong data");
        return;
    }
    LYN_LOGI("data : %s", value);
    const std::string answer = value;  // The value may go with the client.
    FinishAndDisconnect();
    NotifyRequestResult(answer);
}

void CRequester::DisconnectGattForcelyByTimeout()
{
    LYN_LOGE("%s", "Gatt is connected but no response from peer device");
    m_TimeoutSourceId = 0;
    NotifyRequestResult(RESULT_GATT_FAIL);
    FinishAndDisconnect();
}

void CRequester::FinishAndDisconnect()
{
    m_bRequestDone = true;
    if (m_GattClient) {
        m_GattClient->Disconnect();
    }
}

void CRequester::OnGattDisConnected(int result, const std::string& address)
{
    if (result != PLATFORM_OK && result != BT_ERROR_HCI_DISCONNECTION) {
        LYN_LOGE("%s", "disconnection fail");
        return;
    }
    if (result == BT_ERROR_HCI_DISCONNECTION) {
        LYN_LOGE("%s", "HCI_disconnection_complted, prompt 133 error");
    }
    LYN_LOGI("disconnected gatt [%s]", address.c_str());
    if (!m_bRequestDone) {
        LYN_LOGE("%s", "GATT disconnected before requesting is done");
        NotifyRequestResult(RESULT_GATT_FAIL);
    }
    m_bRequestDone = false;
    m_GattClient.reset();  // From inside the client's own callback, which touches nothing afterwards.
}

void CRequester::NotifyRequestResult(const std::string& result)
{
    const auto lock = LockLiveObjects();
    LynUtil::SetBtPerformanceBoost(false);
    DisarmTimeout();
    if (!m_RequestResultCallback) {
        LYN_LOGE("%s", "m_RequestResultCallback is NULL");
        return;
    }
    try {
        m_NotifyResultFunc = MakeDelivery(result);
    } catch (const std::bad_alloc& e) {
        LYN_LOGE("exception : %s", e.what());
        m_NotifyResultFunc = m_GattFailDelivery;
    }
    g_idle_add(DeliverResult, m_Live.UserData());
}

// Holds nothing of this requester: the application may destroy it from inside the callback.
CRequester::Delivery CRequester::MakeDelivery(const std::string& result) const
{
    return std::make_shared<const std::function<void()>>(
        [callback = m_RequestResultCallback, result] { callback(result); });
}

gboolean CRequester::DeliverResult(gpointer userData)
{
    Delivery delivery;
    CallLocked<CRequester>(userData, [&](CRequester& requester) { delivery = requester.m_NotifyResultFunc; });
    if (delivery) {
        RunGuarded(*delivery);
    }
    return G_SOURCE_REMOVE;
}

void CRequester::ArmTimeout()
{
    DisarmTimeout();
    m_TimeoutSourceId = g_timeout_add_seconds(m_TimeoutSec, OnTimeout, m_Live.UserData());
}

void CRequester::DisarmTimeout()
{
    if (m_TimeoutSourceId > 0) {
        g_source_remove(m_TimeoutSourceId);
        m_TimeoutSourceId = 0;
    }
}

gboolean CRequester::OnTimeout(gpointer userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "data is nullptr");
        return G_SOURCE_REMOVE;
    }
    CallLocked<CRequester>(userData, [](CRequester& requester) {
        if (requester.m_TimeoutSourceId > 0) {  // Else disarmed by another thread at the last moment.
            requester.DisconnectGattForcelyByTimeout();
        }
    });
    return G_SOURCE_REMOVE;
}

std::string CRequester::BuildData()
{
    CExchangeData exchangeData;
    return exchangeData.GetExchangeData("control");
}

std::string CRequester::GetExtraData() const
{
    LYN_LOGI("extra data : %s", m_ExtraData.c_str());
    return m_ExtraData;
}

GattUuidMap CRequester::InitUuidMap() const
{
    return {{m_ServiceUuid, {m_CharacteristicUuid}}};
}

}  // namespace lyn
