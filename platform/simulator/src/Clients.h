// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Slot.h"

namespace lyn::simulator {

class Simulator;
struct Link;
struct RoomPhone;

/// A GATT client: one user of one link.
struct Client {
    std::string address;
    std::uint64_t link = 0;
    Slot<bt_gatt_client_att_mtu_changed_cb> mtu;
};

/// A service or a characteristic that a client has looked up.
struct Attribute {
    bt_gatt_client_h client = nullptr;
    bt_gatt_h service = nullptr;  ///< null for a service
    std::string serviceUuid;
    std::string uuid;
    std::string value;  ///< what the next write sends
    Slot<bt_gatt_client_characteristic_value_changed_cb> notification;
    Slot<bt_gatt_client_request_completed_cb> write;  ///< the one begun last
};

/// Clients and their handles. A handle is a number that was never used before, not a pointer: a stale or
/// made-up one is found out. The caller holds the simulator's lock.
class Clients {
public:
    explicit Clients(Simulator& simulator);

    void Reset();

    int Create(const std::string& address, bt_gatt_client_h* handle);
    int Destroy(bt_gatt_client_h handle);
    int LookUpService(bt_gatt_client_h client, const std::string& uuid, bt_gatt_h* handle);
    int LookUpCharacteristic(bt_gatt_h service, const std::string& uuid, bt_gatt_h* handle);

    Client* Find(bt_gatt_client_h handle);
    Attribute* FindAttribute(bt_gatt_h handle);
    Attribute* FindCharacteristic(bt_gatt_h handle);

    /// The link that a client was made for, if it is still up, or null.
    Link* LinkOf(const Client& client);
    /// What the phone at the end of the client's link offers under a characteristic, or null.
    const Characteristic* Offered(const Attribute& attribute);

    /// Characteristics of clients of a link that have asked for the notifications of one UUID.
    std::vector<bt_gatt_h> Listeners(std::uint64_t link, const std::string& serviceUuid,
                                     const std::string& uuid) const;

    bt_gatt_client_h Latest() const;  ///< made last and not destroyed, or null
    bt_gatt_h LatestCharacteristic(const std::string& uuid) const;
    int Count() const;
    int Registrations() const;

private:
    void* NewHandle();
    bt_gatt_h FindHandle(bt_gatt_client_h client, bt_gatt_h service, const std::string& uuid) const;

    Simulator& m_simulator;
    std::map<bt_gatt_client_h, Client> m_clients;
    std::map<bt_gatt_h, Attribute> m_attributes;
    bt_gatt_client_h m_latest = nullptr;
};

}  // namespace lyn::simulator
