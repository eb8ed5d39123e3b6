// SPDX-License-Identifier: Apache-2.0
#include "Common/GattClient/CGattClient.h"

#include <new>
#include <utility>

#include "Common/Failure.h"
#include "Common/PlatformCodes.h"
#include "Common/PlatformSlot.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

// Reports about links. The platform gives a report to the registration that is in force when the connect is
// accepted, so both are one use: a client that connects waits for that of another thread, and connects under its
// own registration or not at all. Nobody else waits. Never destroyed: the service that lives at process exit still
// needs it.
PlatformSlot& LinkReports()
{
    static auto* const slot = new PlatformSlot;
    return *slot;
}

void DeleteService(CGattService* service)
{
    service->Deinit();
    delete service;
}

}  // namespace

CGattClient::~CGattClient() = default;

bool CGattClient::Init(ConnectionStateChangedCb connectionStateChangedCb,
                       CharacteristicValueChangedCb valueChangedCb, const GattUuidMap& uuidMap)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    m_ConnectionStateChangedCb = std::move(connectionStateChangedCb);
    m_CharacteristicValueChangedCb = std::move(valueChangedCb);
    m_GattUuidMap = uuidMap;
    return true;
}

bool CGattClient::Deinit()
{
    UnregisterLinkReports();
    m_ConnectionStateChangedCb = nullptr;
    m_CharacteristicValueChangedCb = nullptr;
    m_GattUuidMap.clear();
    if (m_hClient != nullptr) {
        UnRegisterGattSevices();
        DestroyPlatformClient();
    }
    return true;
}

void CGattClient::UnregisterLinkReports()
{
    LinkReports().UseAtOnce(SlotUser(), [] { return bt_gatt_unset_connection_state_changed_cb(); });
}

void CGattClient::DestroyPlatformClient()
{
    if (m_hClient != nullptr) {
        bt_gatt_client_destroy(m_hClient);
        m_hClient = nullptr;
    }
}

bool CGattClient::Connect(const std::string& address)
{
    m_ConnectAddress = std::make_shared<const std::string>(address);
    m_GattRetryCount = 0;
    // Before the attempt is begun: its end may be reported on another thread before this call ends.
    m_RemoteAddress = address;
    const auto result = LinkReports().Use(SlotUser(), [&] { return RegisterAndConnect(address.c_str()); });
    if (result != PLATFORM_OK) {
        m_RemoteAddress.clear();
    }
    return result == PLATFORM_OK;
}

int CGattClient::RegisterAndConnect(const char* address)
{
    constexpr const char* operation = "Connect";
    int result = bt_gatt_set_connection_state_changed_cb(ConnectionStateTrampoline, m_Live.UserData());
    if (result != PLATFORM_OK) {
        LYN_LOGE_AS(operation, "%s", "fail to bt_gatt_set_connection_state_changed_cb");
        return result;
    }
    result = bt_gatt_connect(address, false);
    if (result != PLATFORM_OK) {
        bt_gatt_unset_connection_state_changed_cb();
        LYN_LOGE_AS(operation, "fail to bt_gatt_connect to %s", address);
    }
    return result;
}

bool CGattClient::RetryConnect(const std::string& address)
{
    if (m_GattRetryCount < m_MaxGattRetryCount) {
        ++m_GattRetryCount;
        const auto connect = [&] { return bt_gatt_connect(address.c_str(), false); };
        if (LinkReports().UseAtOnce(SlotUser(), connect) == PLATFORM_OK) {
            LYN_LOGE("133 error, try again, m_GattRetryCount : %d, address : %s ", m_GattRetryCount,
                     address.c_str());
            return true;
        }
    }
    m_GattRetryCount = 0;
    return false;
}

bool CGattClient::Disconnect()
{
    if (m_RemoteAddress.empty()) {
        LYN_LOGE("%s", "remote address is empty");
        return false;
    }
    UnRegisterGattSevices();
    DestroyPlatformClient();
    // Not when a later service has a link to the phone by now.
    LinkReports().UseAtOnce(SlotUser(), [this] { return bt_gatt_disconnect(m_RemoteAddress.c_str()); });
    return true;
}

bool CGattClient::RequestSetMtu(unsigned int mtu, MtuChangedCb cb)
{
    if (m_hClient == nullptr) {
        LYN_LOGE("%s", "client handle is nullptr");
        return false;
    }
    if (!cb) {
        LYN_LOGE("%s", "mtuChangedCb handle is nullptr");
        return false;
    }
    m_MtuChangedCb = std::move(cb);
    bt_gatt_client_set_att_mtu_changed_cb(m_hClient, MtuTrampoline, m_Live.UserData());
    bt_gatt_client_request_att_mtu_change(m_hClient, mtu);
    return true;
}

void CGattClient::OnMtuChanged(void* client, const bt_gatt_client_att_mtu_info_s* info)
{
    if (client == nullptr || info == nullptr) {
        LYN_LOGE("%s", "client handle is nullptr");
        return;
    }
    if (client != m_hClient) {
        LYN_LOGE("%s", "mtu changed for other client");
        return;
    }
    const MtuChangedCb callback = m_MtuChangedCb;
    callback(client, info);
    if (m_hClient != nullptr) {  // Null when the callback has disconnected.
        bt_gatt_client_unset_att_mtu_changed_cb(m_hClient);
    }
    m_MtuChangedCb = nullptr;
}

void CGattClient::WriteData(const std::string& serviceUuid, const std::string& characteristicUuid,
                            const std::string& data, CharacteristicWriteCompletedCb cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    const auto found = m_GattServices.find(serviceUuid);
    if (found == m_GattServices.end()) {
        LYN_LOGE("No service for %s", serviceUuid.c_str());
        throw LynExceptionInvalidParam("No Service");
    }
    found->second->GetCharacteristic(characteristicUuid)->write(data, std::move(cb));
}

bool CGattClient::RegisterGattServices()
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    for (const auto& [serviceUuid, characteristicUuids] : m_GattUuidMap) {
        const std::shared_ptr<CGattService> service(new CGattService(serviceUuid, weak_from_this()),
                                                    DeleteService);
        if (!service->Init(m_hClient, characteristicUuids, m_CharacteristicValueChangedCb)) {
            UnRegisterGattSevices();
            throw LynExceptionOperationFailed("fail to register gatt service");
        }
        m_GattServices.emplace(serviceUuid, service);
    }
    return true;
}

bool CGattClient::UnRegisterGattSevices()
{
    m_GattServices.clear();
    return true;
}

void CGattClient::OnConnectionStateChanged(int result, bool connected, const std::string& address)
{
    if (address != m_RemoteAddress) {
        LYN_LOGE("%s", "other device");
        return;
    }
    const int adjusted = result == BT_ERROR_REPORTED_AS_SUCCESS ? PLATFORM_OK : result;
    if (!UpdateConnection(adjusted, connected, address)) {
        return;
    }
    const ConnectionStateChangedCb callback = m_ConnectionStateChangedCb;
    if (callback) {
        LYN_LOGI("%s", "forward callback to user");
        callback(adjusted, connected, address);
    }
}

bool CGattClient::UpdateConnection(int result, bool connected, const std::string& address)
{
    try {
        if (connected) {
            OnGattConnected(result, address);
        } else {
            OnGattDisconnected(result, address);
        }
    } catch (const LynExceptionRetry& e) {
        LYN_LOGE("%s", e.what());
        return false;
    } catch (const LynException& e) {
        LYN_LOGE("%s", e.what());
    } catch (const std::bad_alloc& e) {
        LYN_LOGE("%s", e.what());  // Passed on all the same: the exchange ends by an error or its time-out.
    }
    return true;
}

void CGattClient::OnGattConnected(int result, const std::string& address)
{
    if (result == BT_ERROR_CONNECTION_TIMEOUT) {
        LogAndThrow<LynExceptionOperationFailed>("connection timeout");
    }
    if (result != PLATFORM_OK) {
        // Made before: want of memory must not look like the end of an attempt that has been begun.
        const LynExceptionRetry retry("133 error, try again");
        if (RetryConnect(address)) {
            throw retry;
        }
        throw LynExceptionOperationFailed("Connection Error");
    }
    LYN_LOGI("%s is connected", address.c_str());
    if (m_hClient != nullptr) {  // A platform that reports one connection twice.
        UnRegisterGattSevices();
        DestroyPlatformClient();
    }
    if (bt_gatt_client_create(m_RemoteAddress.c_str(), &m_hClient) != PLATFORM_OK) {
        m_hClient = nullptr;
        throw LynExceptionOperationFailed("fail to bt_gatt_client_create");
    }
    RegisterGattServices();
}

void CGattClient::OnGattDisconnected(int result, const std::string& address)
{
    if (result != PLATFORM_OK) {
        LYN_LOGE("%s", "error case");
        return;
    }
    LYN_LOGI("%s is disconnected", address.c_str());
    UnRegisterGattSevices();
    m_RemoteAddress.clear();
    DestroyPlatformClient();
    UnregisterLinkReports();
}

void CGattClient::ConnectionStateTrampoline(int result, bool connected, const char* address, void* userData)
{
    if (address == nullptr) {
        LYN_LOGE("%s", "remote_address is nullptr");
        return;
    }
    if (userData == nullptr) {
        LYN_LOGE("%s", "userData is nullptr");
        return;
    }
    CallLive<CGattClient>(userData, [&](CGattClient& client) {
        const std::shared_ptr<const std::string> known = client.m_ConnectAddress;
        if (known && *known == address) {
            client.OnConnectionStateChanged(result, connected, *known);
        } else {
            client.OnConnectionStateChanged(result, connected, address);
        }
    });
}

void CGattClient::MtuTrampoline(bt_gatt_client_h client, const bt_gatt_client_att_mtu_info_s* info, void* userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "userData is nullptr");
        return;
    }
    CallLive<CGattClient>(userData, [&](CGattClient& self) { self.OnMtuChanged(client, info); });
}

}  // namespace lyn
