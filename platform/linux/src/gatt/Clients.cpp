// SPDX-License-Identifier: Apache-2.0
#include "gatt/Clients.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Codes.h"
#include "gatt/Links.h"
#include "gatt/Mtu.h"
#include "loop/MainContext.h"

namespace lyn::linux_platform {

Clients& Clients::Instance()
{
    static Clients* const instance = new Clients;  // never destroyed: like the links that it uses
    return *instance;
}

int Clients::Create(const char* address, bt_gatt_client_h* handle)
{
    auto phone = Links::Instance().Up(address);
    if (phone == nullptr) {
        return CanonicalAddress(address) ? kNotConnected : kInvalidArgument;
    }
    auto client = std::make_shared<Client>();
    client->address = address;
    client->phone = std::move(phone);
    const std::lock_guard lock(m_mutex);
    *handle = NewHandle();
    m_clients[*handle] = std::move(client);
    return 0;
}

int Clients::Destroy(bt_gatt_client_h handle)
{
    std::vector<std::shared_ptr<Exchange>> ended;
    std::shared_ptr<Client> client;
    {
        const std::lock_guard lock(m_mutex);
        const auto found = m_clients.find(handle);
        if (found == m_clients.end()) {
            return kInvalidArgument;
        }
        client = std::move(found->second);
        m_clients.erase(found);
        for (const auto& [key, attribute] : m_attributes) {
            if (attribute.client == handle && attribute.exchange != nullptr) {
                ended.push_back(attribute.exchange);
            }
        }
        std::erase_if(m_attributes, [&](const auto& entry) { return entry.second.client == handle; });
    }
    client->mtu.Unset();
    for (const auto& exchange : ended) {
        exchange->End();
    }
    return 0;
}

int Clients::LookUpService(bt_gatt_client_h client, const std::string& uuid, bt_gatt_h* handle)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_clients.find(client);
    if (found == m_clients.end()) {
        return kInvalidArgument;
    }
    const auto& phone = found->second->phone;
    if (!phone->up) {
        return kNotConnected;
    }
    const auto service = std::find_if(phone->services.begin(), phone->services.end(),
                                      [&](const Service& candidate) { return candidate.uuid == uuid; });
    if (service == phone->services.end()) {
        return kNotFound;
    }
    return Give({client, phone, &*service, nullptr, uuid, nullptr, ""}, "", handle);
}

int Clients::LookUpCharacteristic(bt_gatt_h service, const std::string& uuid, bt_gatt_h* handle)
{
    const std::lock_guard lock(m_mutex);
    const Attribute* const owner = FindAttribute(service);
    if (owner == nullptr || owner->exchange != nullptr) {
        return kInvalidArgument;
    }
    if (!owner->phone->up) {
        return kNotConnected;
    }
    const auto& offered = owner->service->characteristics;
    const auto characteristic = std::find_if(
        offered.begin(), offered.end(), [&](const Characteristic& candidate) { return candidate.uuid == uuid; });
    if (characteristic == offered.end()) {
        return kNotFound;
    }
    return Give({owner->client, owner->phone, owner->service, service, uuid, nullptr, ""}, characteristic->path,
                handle);
}

std::shared_ptr<Client> Clients::Find(bt_gatt_client_h handle) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_clients.find(handle);
    return found != m_clients.end() ? found->second : nullptr;
}

std::shared_ptr<Exchange> Clients::FindExchange(bt_gatt_h handle) const
{
    const std::lock_guard lock(m_mutex);
    const Attribute* const attribute = FindAttribute(handle);
    return attribute != nullptr ? attribute->exchange : nullptr;
}

int Clients::SetValue(bt_gatt_h characteristic, std::string value)
{
    const std::lock_guard lock(m_mutex);
    Attribute* const attribute = FindCharacteristic(characteristic);
    if (attribute == nullptr) {
        return kInvalidArgument;
    }
    attribute->value = std::move(value);
    return 0;
}

int Clients::Write(bt_gatt_h characteristic, bt_gatt_client_request_completed_cb callback, void* userData)
{
    const std::lock_guard lock(m_mutex);
    const Attribute* const attribute = FindCharacteristic(characteristic);
    if (attribute == nullptr) {
        return kInvalidArgument;
    }
    if (!attribute->phone->up) {
        return kNotConnected;
    }
    attribute->exchange->Write(attribute->value, callback, userData);
    return 0;
}

int Clients::ServiceOf(bt_gatt_h characteristic, bt_gatt_h* service) const
{
    const std::lock_guard lock(m_mutex);
    const Attribute* const attribute = FindAttribute(characteristic);
    if (attribute == nullptr || attribute->exchange == nullptr) {
        return kInvalidArgument;
    }
    *service = attribute->serviceHandle;
    return 0;
}

std::string Clients::UuidOf(bt_gatt_h handle) const
{
    const std::lock_guard lock(m_mutex);
    const Attribute* const attribute = FindAttribute(handle);
    return attribute != nullptr ? attribute->uuid : "";
}

int Clients::RequestMtu(bt_gatt_client_h handle, unsigned mtu) const
{
    const auto client = Find(handle);
    if (client == nullptr || mtu < kLeastMtu || mtu > kMostMtu) {
        return kInvalidArgument;
    }
    if (!client->phone->up) {
        return kNotConnected;
    }
    Post([client, handle] {
        ReadMtu(*client->phone, [client, handle](unsigned inForce, int code) {
            const bt_gatt_client_att_mtu_info_s info{client->address.c_str(), inForce,
                                                     static_cast<unsigned>(code)};
            client->mtu.Deliver(client->mtu.Id(), handle, &info);
        });
    });
    return 0;
}

void* Clients::NewHandle()
{
    m_lastHandle += 16;
    return reinterpret_cast<void*>(m_lastHandle);
}

const Attribute* Clients::FindAttribute(bt_gatt_h handle) const
{
    const auto found = m_attributes.find(handle);
    return found != m_attributes.end() ? &found->second : nullptr;
}

Attribute* Clients::FindCharacteristic(bt_gatt_h handle)
{
    const auto found = m_attributes.find(handle);
    return found != m_attributes.end() && found->second.exchange != nullptr ? &found->second : nullptr;
}

/// The handle that the client has for this attribute already, or a new one.
int Clients::Give(Attribute attribute, const std::string& path, bt_gatt_h* handle)
{
    for (const auto& [known, other] : m_attributes) {
        if (other.client == attribute.client && other.serviceHandle == attribute.serviceHandle &&
            other.uuid == attribute.uuid) {
            *handle = known;
            return 0;
        }
    }
    *handle = NewHandle();
    if (!path.empty()) {
        attribute.exchange = std::make_shared<Exchange>(attribute.phone, path, *handle);
    }
    m_attributes.emplace(*handle, std::move(attribute));
    return 0;
}

}  // namespace lyn::linux_platform
