// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include <string_view>

#include "Address.h"
#include "PlatformApi.h"
#include "PlatformCall.h"

using namespace lyn::simulator;

namespace {

constexpr int kMaxValue = 512;

std::string LowerCase(const char* text)
{
    std::string lower = text;
    for (char& character : lower) {
        character = g_ascii_tolower(character);
    }
    return lower;
}

/// Runs a body with the one form of an address, or says that it is none.
template <typename Body>
int WithAddress(const char* address, Body body)
{
    const auto canonical = address != nullptr ? CanonicalAddress(address) : std::nullopt;
    return canonical ? body(*canonical) : kInvalidArgument;
}

/// Runs a body with the characteristic that a handle stands for, or says that it stands for none.
template <typename Body>
int WithCharacteristic(PlatformCall& call, bt_gatt_h handle, Body body)
{
    Attribute* attribute = call.simulator.clients.FindCharacteristic(handle);
    return attribute != nullptr ? body(*attribute) : kInvalidArgument;
}

}  // namespace

int bt_gatt_set_connection_state_changed_cb(bt_gatt_connection_state_changed_cb callback, void* user_data)
{
    return Perform("bt_gatt_set_connection_state_changed_cb", In(), [&](PlatformCall& call) {
        if (callback == nullptr) {
            return kInvalidArgument;
        }
        call.simulator.links.registration = {callback, user_data, call.simulator.NewId()};
        return 0;
    });
}

int bt_gatt_unset_connection_state_changed_cb(void)
{
    return Perform("bt_gatt_unset_connection_state_changed_cb", In(), [](PlatformCall& call) {
        call.simulator.links.registration = {};
        return 0;
    });
}

int bt_gatt_connect(const char* address, bool auto_connect)
{
    return Perform("bt_gatt_connect", In(address, auto_connect), [&](PlatformCall& call) {
        return WithAddress(address, [&](const std::string& canonical) {
            return call.simulator.links.Connect(canonical, address, auto_connect);
        });
    });
}

int bt_gatt_disconnect(const char* address)
{
    return Perform("bt_gatt_disconnect", In(address), [&](PlatformCall& call) {
        return WithAddress(
            address, [&](const std::string& canonical) { return call.simulator.links.Disconnect(canonical); });
    });
}

int bt_gatt_client_create(const char* address, bt_gatt_client_h* client)
{
    return Perform("bt_gatt_client_create", In(address), [&](PlatformCall& call) {
        if (client == nullptr) {
            return kInvalidArgument;
        }
        return WithAddress(address, [&](const std::string& canonical) {
            return call.simulator.clients.Create(canonical, client);
        });
    });
}

int bt_gatt_client_destroy(bt_gatt_client_h client)
{
    return Perform("bt_gatt_client_destroy", In(),
                   [&](PlatformCall& call) { return call.simulator.clients.Destroy(client); });
}

int bt_gatt_client_get_service(bt_gatt_client_h client, const char* uuid, bt_gatt_h* service)
{
    return Perform("bt_gatt_client_get_service", In(uuid), [&](PlatformCall& call) {
        if (uuid == nullptr || service == nullptr) {
            return kInvalidArgument;
        }
        return call.simulator.clients.LookUpService(client, LowerCase(uuid), service);
    });
}

int bt_gatt_service_get_characteristic(bt_gatt_h service, const char* uuid, bt_gatt_h* characteristic)
{
    return Perform("bt_gatt_service_get_characteristic", In(uuid), [&](PlatformCall& call) {
        if (uuid == nullptr || characteristic == nullptr) {
            return kInvalidArgument;
        }
        return call.simulator.clients.LookUpCharacteristic(service, LowerCase(uuid), characteristic);
    });
}

int bt_gatt_client_set_characteristic_value_changed_cb(bt_gatt_h characteristic,
                                                       bt_gatt_client_characteristic_value_changed_cb callback,
                                                       void* user_data)
{
    return Perform("bt_gatt_client_set_characteristic_value_changed_cb", In(), [&](PlatformCall& call) {
        if (callback == nullptr) {
            return kInvalidArgument;
        }
        return WithCharacteristic(call, characteristic, [&](Attribute& attribute) {
            Clients& clients = call.simulator.clients;
            if (clients.LinkOf(*clients.Find(attribute.client)) == nullptr) {
                return kNotConnected;
            }
            const Characteristic* offered = clients.Offered(attribute);
            if (offered == nullptr || !offered->notifies) {
                return kRefused;
            }
            attribute.notification = {callback, user_data, call.simulator.NewId()};
            return 0;
        });
    });
}

int bt_gatt_client_unset_characteristic_value_changed_cb(bt_gatt_h characteristic)
{
    return Perform("bt_gatt_client_unset_characteristic_value_changed_cb", In(), [&](PlatformCall& call) {
        return WithCharacteristic(call, characteristic, [](Attribute& attribute) {
            attribute.notification = {};
            return 0;
        });
    });
}

int bt_gatt_set_value(bt_gatt_h characteristic, const char* value, int length)
{
    const bool good = value != nullptr && length >= 0 && length <= kMaxValue;
    const auto text = good ? std::string_view(value, static_cast<std::size_t>(length)) : std::string_view("");
    return Perform("bt_gatt_set_value", In(text, length), [&](PlatformCall& call) {
        return WithCharacteristic(call, characteristic, [&](Attribute& attribute) {
            if (!good) {
                return kInvalidArgument;
            }
            attribute.value = text;
            return 0;
        });
    });
}

int bt_gatt_client_write_value(bt_gatt_h characteristic, bt_gatt_client_request_completed_cb callback,
                               void* user_data)
{
    return Perform("bt_gatt_client_write_value", In(), [&](PlatformCall& call) {
        return call.simulator.exchange.Write(characteristic, callback, user_data);
    });
}

int bt_gatt_client_set_att_mtu_changed_cb(bt_gatt_client_h client, bt_gatt_client_att_mtu_changed_cb callback,
                                          void* user_data)
{
    return Perform("bt_gatt_client_set_att_mtu_changed_cb", In(), [&](PlatformCall& call) {
        Client* found = call.simulator.clients.Find(client);
        if (found == nullptr || callback == nullptr) {
            return kInvalidArgument;
        }
        found->mtu = {callback, user_data, call.simulator.NewId()};
        return 0;
    });
}

int bt_gatt_client_unset_att_mtu_changed_cb(bt_gatt_client_h client)
{
    return Perform("bt_gatt_client_unset_att_mtu_changed_cb", In(), [&](PlatformCall& call) {
        Client* found = call.simulator.clients.Find(client);
        if (found == nullptr) {
            return kInvalidArgument;
        }
        found->mtu = {};
        return 0;
    });
}

int bt_gatt_client_request_att_mtu_change(bt_gatt_client_h client, unsigned mtu)
{
    return Perform("bt_gatt_client_request_att_mtu_change", In(mtu),
                   [&](PlatformCall& call) { return call.simulator.exchange.RequestMtu(client, mtu); });
}

int bt_gatt_characteristic_get_service(bt_gatt_h characteristic, bt_gatt_h* service)
{
    return Perform("bt_gatt_characteristic_get_service", In(), [&](PlatformCall& call) {
        return WithCharacteristic(call, characteristic, [&](const Attribute& attribute) {
            if (service == nullptr) {
                return kInvalidArgument;
            }
            *service = attribute.service;
            return 0;
        });
    });
}

int bt_gatt_get_uuid(bt_gatt_h handle, char** uuid)
{
    return Perform("bt_gatt_get_uuid", In(), [&](PlatformCall& call) {
        const Attribute* attribute = call.simulator.clients.FindAttribute(handle);
        if (attribute == nullptr || uuid == nullptr) {
            return kInvalidArgument;
        }
        return call.GiveText(&attribute->uuid, uuid);
    });
}
