// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "bus/Bus.h"
#include "gatt/Phone.h"
#include "loop/Slot.h"
#include "lyn_platform/gatt.h"

namespace lyn::linux_platform {

/// Notifications and writes of one characteristic, for one client. Any thread; what is asked for is done on the
/// main context, and told there.
class Exchange : public std::enable_shared_from_this<Exchange> {
public:
    /// @param handle given back to the callbacks
    Exchange(std::shared_ptr<const Phone> phone, std::string path, bt_gatt_h handle);

    /// @return 0, or kNotConnected
    int Listen(bt_gatt_client_characteristic_value_changed_cb callback, void* userData);
    void StopListening();

    /// Writes when the notifications are on that have been asked for before: an answer must not be missed. When
    /// they are refused, so is the write.
    void Write(std::string value, bt_gatt_client_request_completed_cb callback, void* userData);

    /// Nothing is told from now on, and nothing is left behind.
    void End();

private:
    enum class Notifying { no, starting, yes, refused };

    struct PendingWrite {
        std::string value;
        bt_gatt_client_request_completed_cb callback = nullptr;
        void* userData = nullptr;
    };

    void Run(void (Exchange::*step)());
    void Call(const char* method, GVariant* arguments, int limitMs, ReplyHandler done) const;

    // On the main context.
    void Start();
    void OnStarted(const Reply& reply);
    void Stop();
    void OnSignal(GVariant* values) const;
    void Begin(const PendingWrite& write);
    void Send(const PendingWrite& write);
    void Complete(const PendingWrite& write, int code) const;

    const std::shared_ptr<const Phone> m_phone;
    const std::string m_path;
    const bt_gatt_h m_handle;
    Slot<bt_gatt_client_characteristic_value_changed_cb> m_listener;
    std::atomic<bool> m_ended = false;

    // On the main context only.
    Notifying m_notifying = Notifying::no;
    int m_refusal = 0;
    Subscription m_values;
    std::vector<PendingWrite> m_waiting;
};

}  // namespace lyn::linux_platform
