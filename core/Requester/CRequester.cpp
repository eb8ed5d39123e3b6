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

std::atomic<std::uintptr_t> s_LastNumber{0};

void DeleteClient(CGattClient* client)
{
    LYN_LOGI("%s", "in custom deleter of m_GattClient");
    client->Deinit();
    delete client;
}

// Want of memory is a refusal, too: nothing has been begun then.
bool Connect(CGattClient& client, const std::string& deviceAddress)
{
    try {
        return client.Connect(deviceAddress);
    } catch (const std::bad_alloc& e) {
        LYN_LOGE("exception : %s", e.what());
        return false;
    }
}

}  // namespace

CRequester::CRequester(RequestResultCb requestResultCb, std::string serviceUuid, std::string characteristicUuid)
    : m_RequestResultCallback(std::move(requestResultCb)),
      m_ServiceUuid(std::move(serviceUuid)),
      m_CharacteristicUuid(std::move(characteristicUuid)),
      m_Number(++s_LastNumber)
{
}

CRequester::~CRequester() = default;

// ---- Which exchange ----------------------------------------------------------------------------------

std::shared_ptr<Exchange> CRequester::BeginExchange(const std::string& extraData)
{
    auto exchange =
        std::make_shared<Exchange>(std::static_pointer_cast<CRequester>(weak_from_this().lock()), extraData);
    std::shared_ptr<Exchange> replaced = exchange;
    {
        const std::lock_guard lock(m_Mutex);
        if (m_bRetired) {
            return nullptr;
        }
        m_Exchange.swap(replaced);
    }
    return exchange;
}

std::shared_ptr<Exchange> CRequester::Latest() const
{
    const std::lock_guard lock(m_Mutex);
    return m_Exchange;
}

bool CRequester::IsLatest(const Exchange& exchange) const
{
    const std::lock_guard lock(m_Mutex);
    return !m_bRetired && m_Exchange.get() == &exchange;
}

void CRequester::Retire()
{
    const std::lock_guard lock(m_Mutex);
    m_bRetired = true;
}

// ---- Its beginning -----------------------------------------------------------------------------------

bool CRequester::RequestInitiating(const std::string& deviceAddress, const std::string& extraData)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    LYN_LOGI("device address : %s, extra data : %s", deviceAddress.c_str(), extraData.c_str());
    const auto exchange = BeginExchange(extraData);
    if (!exchange) {
        return false;
    }
    auto client = MakeClient(*exchange);  // The main loop may release the exchange's before Connect() returns.
    LynUtil::SetBtPerformanceBoost(true);
    if (Connect(*client, deviceAddress)) {
        return true;
    }
    LynUtil::SetBtPerformanceBoost(false);
    LYN_LOGE("Fail to connect gatt %s", deviceAddress.c_str());
    exchange->m_GattClient.reset();
    client.reset();
    return false;
}

std::shared_ptr<CGattClient> CRequester::MakeClient(Exchange& exchange) const
{
    exchange.m_GattClient = std::shared_ptr<CGattClient>(new CGattClient(m_Number), DeleteClient);
    exchange.m_GattClient->Init(
        [number = exchange.Number()](int result, bool connected, const std::string& address) {
            Exchange::Step(number, [&](CRequester& self, Exchange& own) {
                self.OnConnectionStateChanged(own, result, connected, address);
            });
        },
        [number = exchange.Number()](const char* value, int length) {
            Exchange::Step(number, [&](CRequester& self, Exchange& own) {
                self.OnCharateristicValueChangedCb(own, value, length);
            });
        },
        InitUuidMap());
    return exchange.m_GattClient;
}

GattUuidMap CRequester::InitUuidMap() const
{
    return {{m_ServiceUuid, {m_CharacteristicUuid}}};
}

// ---- Its steps ---------------------------------------------------------------------------------------

void CRequester::OnConnectionStateChanged(Exchange& exchange, int result, bool connected,
                                          const std::string& address)
{
    if (connected) {
        OnGattConnected(exchange, result, address);
    } else {
        OnGattDisConnected(exchange, result, address);
    }
}

void CRequester::OnGattConnected(Exchange& exchange, int result, const std::string& /*address*/)
{
    if (result != PLATFORM_OK) {
        LYN_LOGE("%s", "connection fail");
        NotifyRequestResult(exchange, RESULT_GATT_FAIL);
        exchange.m_GattClient.reset();
        return;
    }
    exchange.m_bRequestDone = false;
    const bool requested = exchange.m_GattClient->RequestSetMtu(
        WANTED_MTU, [number = exchange.Number()](void* client, const bt_gatt_client_att_mtu_info_s* info) {
            Exchange::Step(number, [&](CRequester& self, Exchange& own) { self.OnMtuChanged(own, client, info); });
        });
    if (!requested) {
        LYN_LOGE("%s", "fail to request set mtu as 256.");
    }
    exchange.ArmTimeout(m_TimeoutSec);  // Also after a failed request, which then ends by the time-out.
}

void CRequester::OnMtuChanged(Exchange& exchange, bt_gatt_client_h /*client*/,
                              const bt_gatt_client_att_mtu_info_s* /*mtuInfo*/)
{
    try {
        WriteControlData(exchange, BuildData(exchange));
    } catch (const std::exception& e) {
        Fail(exchange, e);
    }
}

std::string CRequester::BuildData(const Exchange& /*exchange*/)
{
    CExchangeData exchangeData;
    return exchangeData.GetExchangeData("control");
}

std::string CRequester::GetExtraData(const Exchange& exchange) const
{
    LYN_LOGI("extra data : %s", exchange.m_ExtraData.c_str());
    return exchange.m_ExtraData;
}

void CRequester::WriteControlData(Exchange& exchange, const std::string& data)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (!exchange.m_GattClient || !IsLatest(exchange)) {  // It may have been ended while the data was built.
        return;
    }
    exchange.m_GattClient->WriteData(
        m_ServiceUuid, m_CharacteristicUuid, data, [number = exchange.Number()](int result) {
            Exchange::Step(number, [&](CRequester& self, Exchange& own) { self.OnWriteComplete(own, result); });
        });
}

void CRequester::OnWriteComplete(Exchange& exchange, int result)
{
    LYN_LOGI("result : %d", result);
    if (result == PLATFORM_OK) {
        return;
    }
    FinishAndDisconnect(exchange);
    NotifyRequestResult(exchange, RESULT_GATT_FAIL);
}

void CRequester::OnCharateristicValueChangedCb(Exchange& exchange, const char* value, int length)
{
    if (value == nullptr || length < 1) {
        LYN_LOGE("%s", "wrong data");
        return;
    }
    LYN_LOGI("data : %s", value);
    const std::string answer = value;  // The value may go with the client.
    FinishAndDisconnect(exchange);
    NotifyRequestResult(exchange, answer);
}

void CRequester::DisconnectGattForcelyByTimeout(Exchange& exchange)
{
    LYN_LOGE("%s", "Gatt is connected but no response from peer device");
    NotifyRequestResult(exchange, RESULT_GATT_FAIL);
    FinishAndDisconnect(exchange);
}

void CRequester::OnGattDisConnected(Exchange& exchange, int result, const std::string& address)
{
    if (result != PLATFORM_OK && result != BT_ERROR_HCI_DISCONNECTION) {
        LYN_LOGE("%s", "disconnection fail");
        return;
    }
    if (result == BT_ERROR_HCI_DISCONNECTION) {
        LYN_LOGE("%s", "HCI_disconnection_complted, prompt 133 error");
    }
    LYN_LOGI("disconnected gatt [%s]", address.c_str());
    if (!exchange.m_bRequestDone) {
        LYN_LOGE("%s", "GATT disconnected before requesting is done");
        NotifyRequestResult(exchange, RESULT_GATT_FAIL);
    }
    exchange.m_bRequestDone = false;
    exchange.m_GattClient.reset();
}

// ---- Its end -----------------------------------------------------------------------------------------

void CRequester::FinishAndDisconnect(Exchange& exchange) const
{
    exchange.m_bRequestDone = true;
    if (exchange.m_GattClient && IsLatest(exchange)) {
        exchange.m_GattClient->Disconnect();
    }
}

void CRequester::Fail(Exchange& exchange, const std::exception& why, const char* function)
{
    if (!IsLatest(exchange)) {
        return;
    }
    LYN_LOGE_AS(function, "exception : %s", why.what());
    NotifyRequestResult(exchange, RESULT_GATT_FAIL);
    FinishAndDisconnect(exchange);
}

void CRequester::NotifyRequestResult(Exchange& exchange, const std::string& result)
{
    if (!IsLatest(exchange)) {
        return;
    }
    LynUtil::SetBtPerformanceBoost(false);
    exchange.DisarmTimeout();
    if (!m_RequestResultCallback) {
        LYN_LOGE("%s", "m_RequestResultCallback is NULL");
        return;
    }
    try {
        exchange.m_Result = result;
    } catch (const std::bad_alloc& e) {
        LYN_LOGE("exception : %s", e.what());
        exchange.m_Result = RESULT_GATT_FAIL;  // Short enough to need no memory.
    }
    g_idle_add(DeliverResult, exchange.UserData());
}

gboolean CRequester::DeliverResult(gpointer userData)
{
    RunGuarded([&] {
        Exchange::Step(reinterpret_cast<std::uintptr_t>(userData),
                       [](CRequester& self, Exchange& own) { self.Deliver(own); });
    });
    return G_SOURCE_REMOVE;
}

void CRequester::Deliver(Exchange& exchange)
{
    {
        const std::lock_guard lock(m_Mutex);
        if (!exchange.m_bCallEnded) {
            exchange.m_bResultWaits = true;
            return;
        }
        m_pDelivered = &exchange;
    }
    m_RequestResultCallback(exchange.m_Result);
}

bool CRequester::IsResultOfLatest() const
{
    const std::lock_guard lock(m_Mutex);
    return !m_bRetired && m_pDelivered == m_Exchange.get();
}

void CRequester::EndRequestCall()
{
    const auto exchange = Latest();
    if (!exchange) {
        return;
    }
    bool waits = false;
    {
        const std::lock_guard lock(m_Mutex);
        exchange->m_bCallEnded = true;
        waits = std::exchange(exchange->m_bResultWaits, false);
    }
    if (waits) {
        g_idle_add(DeliverResult, exchange->UserData());
    }
}

// ---- NodLink's ---------------------------------------------------------------------------------------

void CRequester::SetNodLinkVersion(const std::string& /*version*/)
{
    LogAndThrow<LynExceptionNotSupported>("Not supported api for this service");
}

int CRequester::GetNodlinkType()
{
    LogAndThrow<LynExceptionNotSupported>("Not supported api for this service");
}

}  // namespace lyn
