// SPDX-License-Identifier: Apache-2.0
//
// Drives one exchange with a phone: connect, MTU 256, write one message, wait up to 10 s for the answer
// on the same characteristic, disconnect. Whatever ends it becomes one result text: the answer itself, or
// "GattFail".
//
// Threads: everything runs under the lock on live objects, whoever calls; the result is delivered from
// the main loop without it. A requester may be destroyed at any time, under that lock: the main loop's
// sources then find nothing.
#pragma once

#include <glib.h>

#include <functional>
#include <memory>
#include <string>

#include "Common/GattClient/CGattClient.h"
#include "Common/LiveObject.h"
#include "Requester/IRequester.h"

namespace lyn {

using RequestResultCb = std::function<void(const std::string& result)>;

class CRequester : public IRequester {
public:
    ~CRequester() override;

    bool RequestInitiating(const std::string& deviceAddress, const std::string& extraData) override;
    /// These two throw LynExceptionNotSupported here.
    void SetNodLinkVersion(const std::string& version) override;
    int GetNodlinkType() override;
    /// Posts the result to the main loop and ends the boost and the time-out.
    void NotifyRequestResult(const std::string& result) override;
    void WriteControlData(const std::string& data) override;
    void OnConnectionStateChanged(int result, bool connected, const std::string& address) override;
    void OnCharateristicValueChangedCb(const char* value, int length) override;
    void OnWriteComplete(int result) override;
    void OnMtuChanged(bt_gatt_client_h client, const bt_gatt_client_att_mtu_info_s* mtuInfo) override;
    void OnGattConnected(int result, const std::string& address) override;
    void OnGattDisConnected(int result, const std::string& address) override;
    std::string BuildData() override;

    GattUuidMap InitUuidMap() const;
    std::string GetExtraData() const;
    void DisconnectGattForcelyByTimeout();

protected:
    CRequester(RequestResultCb requestResultCb, std::string serviceUuid, std::string characteristicUuid);

    /// Ends the exchange on this side, so that the disconnection that follows is no failure.
    void FinishAndDisconnect();

    bool m_bRequestDone = false;

private:
    /// Hands one result to the service.
    using Delivery = std::shared_ptr<const std::function<void()>>;

    struct GattClientDeleter {
        void operator()(CGattClient* client) const;
    };

    static gboolean OnTimeout(gpointer userData);
    static gboolean DeliverResult(gpointer userData);

    bool Connect(const std::string& deviceAddress);
    Delivery MakeDelivery(const std::string& result) const;
    void ArmTimeout();
    void DisarmTimeout();

    std::unique_ptr<CGattClient, GattClientDeleter> m_GattClient;
    RequestResultCb m_RequestResultCallback;
    Delivery m_NotifyResultFunc;
    const Delivery m_GattFailDelivery;  ///< Made beforehand, for a result that finds no memory.
    std::string m_ExtraData;
    std::string m_ServiceUuid;
    std::string m_CharacteristicUuid;
    guint m_TimeoutSourceId = 0;
    unsigned int m_TimeoutSec = 10;
    LiveObject<CRequester> m_Live{this};
};

}  // namespace lyn
