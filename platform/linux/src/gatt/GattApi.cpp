// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <string>

#include "Codes.h"
#include "PlatformApi.h"
#include "gatt/Clients.h"
#include "gatt/Links.h"
#include "gatt/Services.h"

using namespace lyn::linux_platform;

namespace {

constexpr int kMostBytes = 512;

}  // namespace

int bt_gatt_set_connection_state_changed_cb(bt_gatt_connection_state_changed_cb callback, void* user_data)
{
    if (callback == nullptr) {
        return kInvalidArgument;
    }
    Links::Instance().reports.Set(callback, user_data);
    return 0;
}

int bt_gatt_unset_connection_state_changed_cb(void)
{
    Links::Instance().reports.Unset();
    return 0;
}

// A phone that is not there yet is waited for in any case, until the connect's time is over.
int bt_gatt_connect(const char* address, bool /*auto_connect*/)
{
    return Links::Instance().Connect(address);
}

int bt_gatt_disconnect(const char* address)
{
    return Links::Instance().Disconnect(address);
}

int bt_gatt_client_create(const char* address, bt_gatt_client_h* client)
{
    return client != nullptr ? Clients::Instance().Create(address, client) : kInvalidArgument;
}

int bt_gatt_client_destroy(bt_gatt_client_h client)
{
    return Clients::Instance().Destroy(client);
}

int bt_gatt_client_get_service(bt_gatt_client_h client, const char* uuid, bt_gatt_h* service)
{
    if (uuid == nullptr || service == nullptr) {
        return kInvalidArgument;
    }
    return Clients::Instance().LookUpService(client, LowerCase(uuid), service);
}

int bt_gatt_service_get_characteristic(bt_gatt_h service, const char* uuid, bt_gatt_h* characteristic)
{
    if (uuid == nullptr || characteristic == nullptr) {
        return kInvalidArgument;
    }
    return Clients::Instance().LookUpCharacteristic(service, LowerCase(uuid), characteristic);
}

int bt_gatt_client_set_characteristic_value_changed_cb(bt_gatt_h characteristic,
                                                       bt_gatt_client_characteristic_value_changed_cb callback,
                                                       void* user_data)
{
    const auto exchange = Clients::Instance().FindExchange(characteristic);
    if (exchange == nullptr || callback == nullptr) {
        return kInvalidArgument;
    }
    return exchange->Listen(callback, user_data);
}

int bt_gatt_client_unset_characteristic_value_changed_cb(bt_gatt_h characteristic)
{
    const auto exchange = Clients::Instance().FindExchange(characteristic);
    if (exchange == nullptr) {
        return kInvalidArgument;
    }
    exchange->StopListening();
    return 0;
}

int bt_gatt_set_value(bt_gatt_h characteristic, const char* value, int length)
{
    if (value == nullptr || length < 0 || length > kMostBytes) {
        return kInvalidArgument;
    }
    return Clients::Instance().SetValue(characteristic, std::string(value, static_cast<std::size_t>(length)));
}

int bt_gatt_client_write_value(bt_gatt_h characteristic, bt_gatt_client_request_completed_cb callback,
                               void* user_data)
{
    return Clients::Instance().Write(characteristic, callback, user_data);
}

int bt_gatt_client_set_att_mtu_changed_cb(bt_gatt_client_h client, bt_gatt_client_att_mtu_changed_cb callback,
                                          void* user_data)
{
    const auto found = Clients::Instance().Find(client);
    if (found == nullptr || callback == nullptr) {
        return kInvalidArgument;
    }
    found->mtu.Set(callback, user_data);
    return 0;
}

int bt_gatt_client_unset_att_mtu_changed_cb(bt_gatt_client_h client)
{
    const auto found = Clients::Instance().Find(client);
    if (found == nullptr) {
        return kInvalidArgument;
    }
    found->mtu.Unset();
    return 0;
}

int bt_gatt_client_request_att_mtu_change(bt_gatt_client_h client, unsigned mtu)
{
    return Clients::Instance().RequestMtu(client, mtu);
}

int bt_gatt_characteristic_get_service(bt_gatt_h characteristic, bt_gatt_h* service)
{
    return service != nullptr ? Clients::Instance().ServiceOf(characteristic, service) : kInvalidArgument;
}

int bt_gatt_get_uuid(bt_gatt_h handle, char** uuid)
{
    const std::string text = Clients::Instance().UuidOf(handle);
    if (text.empty() || uuid == nullptr) {
        return kInvalidArgument;
    }
    char* const copy = ::strdup(text.c_str());
    if (copy == nullptr) {
        return kOutOfMemory;
    }
    *uuid = copy;
    return 0;
}
