// SPDX-License-Identifier: Apache-2.0
//
// The connection to one phone's GATT server: connects (again at once after a failure, five times at
// most), registers the wanted services and characteristics, asks for an MTU, writes.
//
// No lock: a client is set up and connected by one thread, and from then on belongs to the platform's callbacks,
// which come one at a time. A callback keeps the client; the last owner's deleter calls Deinit().
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

#include "Common/GattClient/CGattService.h"
#include "Common/GattClient/GattCallbacks.h"
#include "Common/LiveObject.h"

namespace lyn {

class CGattClient : public std::enable_shared_from_this<CGattClient> {
public:
    /// @param service number of the service that it is for: whatever those of an earlier one begin late is left
    /// out
    explicit CGattClient(std::uintptr_t service = 0) : m_Service(service) {}
    ~CGattClient();
    CGattClient(const CGattClient&) = delete;
    CGattClient& operator=(const CGattClient&) = delete;

    std::shared_ptr<void> Keep() { return weak_from_this().lock(); }

    bool Init(ConnectionStateChangedCb connectionStateChangedCb, CharacteristicValueChangedCb valueChangedCb,
              const GattUuidMap& uuidMap);
    /// Forces idle, without disconnecting.
    bool Deinit();

    /// True when the attempt was begun; its end comes through the connection-state callback.
    bool Connect(const std::string& address);
    bool RetryConnect(const std::string& address);
    /// Destroys the platform's client and asks for the link to be taken down. False when there is none.
    bool Disconnect();
    /// cb is called once. False without a connection or without cb.
    bool RequestSetMtu(unsigned int mtu, MtuChangedCb cb);
    /// Throws LynExceptionInvalidParam for an unknown service or characteristic.
    void WriteData(const std::string& serviceUuid, const std::string& characteristicUuid, const std::string& data,
                   CharacteristicWriteCompletedCb cb);

    bool RegisterGattServices();
    bool UnRegisterGattSevices();

    void OnConnectionStateChanged(int result, bool connected, const std::string& address);
    void OnGattConnected(int result, const std::string& address);
    void OnGattDisconnected(int result, const std::string& address);
    void OnMtuChanged(void* client, const bt_gatt_client_att_mtu_info_s* info);

private:
    static void ConnectionStateTrampoline(int result, bool connected, const char* address, void* userData);
    static void MtuTrampoline(bt_gatt_client_h client, const bt_gatt_client_att_mtu_info_s* info, void* userData);

    std::pair<std::uintptr_t, std::uintptr_t> SlotUser() const { return {m_Service, m_Live.Number()}; }
    int RegisterAndConnect(const char* address);
    void UnregisterLinkReports();
    void DestroyPlatformClient();
    /// False when a retry is under way, whose end will be reported.
    bool UpdateConnection(int result, bool connected, const std::string& address);

    const std::uintptr_t m_Service;
    ConnectionStateChangedCb m_ConnectionStateChangedCb;
    CharacteristicValueChangedCb m_CharacteristicValueChangedCb;
    MtuChangedCb m_MtuChangedCb;
    bt_gatt_client_h m_hClient = nullptr;
    std::map<std::string, std::shared_ptr<CGattService>> m_GattServices;
    GattUuidMap m_GattUuidMap;
    std::string m_RemoteAddress;
    std::shared_ptr<const std::string> m_ConnectAddress;  ///< Of the last Connect(): a report needs no memory.
    int m_GattRetryCount = 0;
    int m_MaxGattRetryCount = 5;
    LiveObject<CGattClient> m_Live{*this};
};

}  // namespace lyn
