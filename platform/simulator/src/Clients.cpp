// SPDX-License-Identifier: Apache-2.0
#include "Clients.h"

#include <algorithm>

#include "Simulator.h"

namespace lyn::simulator {

namespace {

bool Offers(const Phone& phone, const std::string& serviceUuid)
{
    return std::any_of(phone.services.begin(), phone.services.end(),
                       [&](const Service& service) { return service.uuid == serviceUuid; });
}

}  // namespace

Clients::Clients(Simulator& simulator) : m_simulator(simulator) {}

void Clients::Reset()
{
    m_clients.clear();
    m_attributes.clear();
    m_latest = nullptr;
}

int Clients::Create(const std::string& address, bt_gatt_client_h* handle)
{
    const Link* link = m_simulator.links.Up(address);
    if (link == nullptr) {
        return kNotConnected;
    }
    *handle = NewHandle();
    m_clients[*handle] = {address, link->id, {}};
    m_latest = *handle;
    return 0;
}

int Clients::Destroy(bt_gatt_client_h handle)
{
    if (m_clients.erase(handle) == 0) {
        return kInvalidArgument;
    }
    std::erase_if(m_attributes, [&](const auto& entry) { return entry.second.client == handle; });
    if (m_latest == handle) {
        m_latest = nullptr;
    }
    return 0;
}

int Clients::LookUpService(bt_gatt_client_h client, const std::string& uuid, bt_gatt_h* handle)
{
    const Client* owner = Find(client);
    if (owner == nullptr) {
        return kInvalidArgument;
    }
    if (LinkOf(*owner) == nullptr) {
        return kNotConnected;
    }
    const RoomPhone* phone = m_simulator.room.Present(owner->address);
    if (phone == nullptr || !Offers(phone->phone, uuid)) {
        return kNotFound;
    }
    *handle = FindHandle(client, nullptr, uuid);
    if (*handle == nullptr) {
        *handle = NewHandle();
        m_attributes[*handle] = {client, nullptr, uuid, uuid, {}, {}, {}};
    }
    return 0;
}

int Clients::LookUpCharacteristic(bt_gatt_h service, const std::string& uuid, bt_gatt_h* handle)
{
    const Attribute* parent = FindAttribute(service);
    if (parent == nullptr || parent->service != nullptr) {
        return kInvalidArgument;
    }
    if (LinkOf(m_clients[parent->client]) == nullptr) {
        return kNotConnected;
    }
    Attribute found{parent->client, service, parent->uuid, uuid, {}, {}, {}};
    if (Offered(found) == nullptr) {
        return kNotFound;
    }
    *handle = FindHandle(found.client, service, uuid);
    if (*handle == nullptr) {
        *handle = NewHandle();
        m_attributes[*handle] = std::move(found);
    }
    return 0;
}

Client* Clients::Find(bt_gatt_client_h handle)
{
    const auto found = m_clients.find(handle);
    return found != m_clients.end() ? &found->second : nullptr;
}

Attribute* Clients::FindAttribute(bt_gatt_h handle)
{
    const auto found = m_attributes.find(handle);
    return found != m_attributes.end() ? &found->second : nullptr;
}

Attribute* Clients::FindCharacteristic(bt_gatt_h handle)
{
    Attribute* attribute = FindAttribute(handle);
    return attribute != nullptr && attribute->service != nullptr ? attribute : nullptr;
}

Link* Clients::LinkOf(const Client& client)
{
    return m_simulator.links.Up(client.address, client.link);
}

const Characteristic* Clients::Offered(const Attribute& attribute)
{
    const Client* client = Find(attribute.client);
    const RoomPhone* phone = client != nullptr ? m_simulator.room.Present(client->address) : nullptr;
    return phone != nullptr ? FindOffered(phone->phone, attribute.serviceUuid, attribute.uuid) : nullptr;
}

std::vector<bt_gatt_h> Clients::Listeners(std::uint64_t link, const std::string& serviceUuid,
                                          const std::string& uuid) const
{
    std::vector<bt_gatt_h> listeners;
    for (const auto& [handle, attribute] : m_attributes) {
        const auto client = m_clients.find(attribute.client);
        if (attribute.notification.id != 0 && attribute.uuid == uuid && attribute.serviceUuid == serviceUuid &&
            client != m_clients.end() && client->second.link == link) {
            listeners.push_back(handle);
        }
    }
    return listeners;
}

bt_gatt_client_h Clients::Latest() const
{
    return m_latest;
}

bt_gatt_h Clients::LatestCharacteristic(const std::string& uuid) const
{
    for (const auto& [handle, attribute] : m_attributes) {
        if (attribute.client == m_latest && attribute.service != nullptr && attribute.uuid == uuid) {
            return handle;
        }
    }
    return nullptr;
}

int Clients::Count() const
{
    return static_cast<int>(m_clients.size());
}

int Clients::Registrations() const
{
    const auto clients = std::count_if(m_clients.begin(), m_clients.end(),
                                       [](const auto& entry) { return entry.second.mtu.id != 0; });
    const auto attributes = std::count_if(m_attributes.begin(), m_attributes.end(),
                                          [](const auto& entry) { return entry.second.notification.id != 0; });
    return static_cast<int>(clients + attributes);
}

void* Clients::NewHandle()
{
    return reinterpret_cast<void*>(static_cast<std::uintptr_t>(m_simulator.NewId() * 16));
}

bt_gatt_h Clients::FindHandle(bt_gatt_client_h client, bt_gatt_h service, const std::string& uuid) const
{
    for (const auto& [handle, attribute] : m_attributes) {
        if (attribute.client == client && attribute.service == service && attribute.uuid == uuid) {
            return handle;
        }
    }
    return nullptr;
}

}  // namespace lyn::simulator
