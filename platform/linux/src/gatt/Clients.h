// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "gatt/Exchange.h"
#include "gatt/Phone.h"
#include "loop/Slot.h"
#include "lyn_platform/gatt.h"

namespace lyn::linux_platform {

/// One user of one link, and where its MTU reports go.
struct Client {
    std::string address;
    std::shared_ptr<const Phone> phone;
    Slot<bt_gatt_client_att_mtu_changed_cb> mtu;
};

/// A service or a characteristic that a client has looked up.
struct Attribute {
    bt_gatt_client_h client = nullptr;
    std::shared_ptr<const Phone> phone;
    const Service* service = nullptr;  ///< of the phone
    bt_gatt_h serviceHandle = nullptr;
    std::string uuid;
    std::shared_ptr<Exchange> exchange;  ///< null for a service
    std::string value;                   ///< what the next write sends
};

/// Clients and their handles. A handle is a number that was never used before: a stale or made-up one is found
/// out. Any thread.
class Clients {
public:
    static Clients& Instance();

    int Create(const char* address, bt_gatt_client_h* handle);
    int Destroy(bt_gatt_client_h handle);
    int LookUpService(bt_gatt_client_h client, const std::string& uuid, bt_gatt_h* handle);
    int LookUpCharacteristic(bt_gatt_h service, const std::string& uuid, bt_gatt_h* handle);

    /// The client, or null.
    std::shared_ptr<Client> Find(bt_gatt_client_h handle) const;
    /// The characteristic, or null.
    std::shared_ptr<Exchange> FindExchange(bt_gatt_h handle) const;

    int SetValue(bt_gatt_h characteristic, std::string value);
    int Write(bt_gatt_h characteristic, bt_gatt_client_request_completed_cb callback, void* userData);
    int ServiceOf(bt_gatt_h characteristic, bt_gatt_h* service) const;
    /// The UUID of a service or a characteristic; empty when the handle is neither.
    std::string UuidOf(bt_gatt_h handle) const;

    /// Asks BlueZ which MTU is in force, and reports it.
    int RequestMtu(bt_gatt_client_h handle, unsigned mtu) const;

private:
    void* NewHandle();
    const Attribute* FindAttribute(bt_gatt_h handle) const;
    Attribute* FindCharacteristic(bt_gatt_h handle);
    int Give(Attribute attribute, const std::string& path, bt_gatt_h* handle);

    mutable std::mutex m_mutex;
    std::map<bt_gatt_client_h, std::shared_ptr<Client>> m_clients;
    std::map<bt_gatt_h, Attribute> m_attributes;
    std::uintptr_t m_lastHandle = 0;
};

}  // namespace lyn::linux_platform
