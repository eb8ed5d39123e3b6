// SPDX-License-Identifier: Apache-2.0
//
// Drives one exchange with a phone: connect, MTU 256, write one message, wait up to 10 s for the answer
// on the same characteristic, disconnect. Whatever ends it becomes one result text: the answer itself, or
// "GattFail".
//
// Threads: a request is begun on the thread that calls; all else runs on the main loop. The lock says which
// exchange is the latest, and is held for that alone. Held by a shared pointer.
#pragma once

#include <glib.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "Requester/Exchange.h"
#include "Requester/IRequester.h"

namespace lyn {

using RequestResultCb = std::function<void(const std::string& result)>;

class CRequester : public IRequester {
public:
    ~CRequester() override;

    bool RequestInitiating(const std::string& deviceAddress, const std::string& extraData) override;
    void EndRequestCall() override;
    bool IsResultOfLatest() const override;
    void Retire() override;
    /// These two throw LynExceptionNotSupported here.
    void SetNodLinkVersion(const std::string& version) override;
    int GetNodlinkType() override;

    // The steps of an exchange.
    virtual void OnConnectionStateChanged(Exchange& exchange, int result, bool connected,
                                          const std::string& address);
    virtual void OnGattConnected(Exchange& exchange, int result, const std::string& address);
    virtual void OnGattDisConnected(Exchange& exchange, int result, const std::string& address);
    virtual void OnMtuChanged(Exchange& exchange, bt_gatt_client_h client,
                              const bt_gatt_client_att_mtu_info_s* mtuInfo);
    virtual std::string BuildData(const Exchange& exchange);
    /// Writes nothing when the exchange is not the latest any more.
    virtual void WriteControlData(Exchange& exchange, const std::string& data);
    virtual void OnWriteComplete(Exchange& exchange, int result);
    virtual void OnCharateristicValueChangedCb(Exchange& exchange, const char* value, int length);
    /// Posts the result to the main loop and ends the boost and the time-out.
    virtual void NotifyRequestResult(Exchange& exchange, const std::string& result);
    void DisconnectGattForcelyByTimeout(Exchange& exchange);

    GattUuidMap InitUuidMap() const;
    std::string GetExtraData(const Exchange& exchange) const;
    bool IsLatest(const Exchange& exchange) const;

protected:
    CRequester(RequestResultCb requestResultCb, std::string serviceUuid, std::string characteristicUuid);

    /// A new exchange, in the place of the latest one. Null when the service is destroyed.
    std::shared_ptr<Exchange> BeginExchange(const std::string& extraData);
    /// Ends the exchange on this side.
    void FinishAndDisconnect(Exchange& exchange) const;
    /// Ends it with "GattFail", for the step `function`, unless it is not the latest any more.
    void Fail(Exchange& exchange, const std::exception& why, const char* function = __builtin_FUNCTION());
    std::shared_ptr<Exchange> Latest() const;

    mutable std::mutex m_Mutex;

private:
    static gboolean DeliverResult(gpointer userData);

    std::shared_ptr<CGattClient> MakeClient(Exchange& exchange) const;
    void Deliver(Exchange& exchange);

    const RequestResultCb m_RequestResultCallback;
    const std::string m_ServiceUuid;
    const std::string m_CharacteristicUuid;
    const std::uintptr_t m_Number;  ///< As many as services: those of later ones are greater.
    const unsigned int m_TimeoutSec = 10;

    // Guarded by the lock.
    std::shared_ptr<Exchange> m_Exchange;
    const Exchange* m_pDelivered = nullptr;  ///< Compared only.
    bool m_bRetired = false;
};

template <typename Work>
void Exchange::Step(std::uintptr_t number, const Work& work)
{
    const auto own = LiveObject<Exchange>::Find(number);
    const auto requester = own ? own->m_Requester.lock() : nullptr;
    if (requester && requester->IsLatest(*own)) {
        work(*requester, *own);
    }
}

}  // namespace lyn
