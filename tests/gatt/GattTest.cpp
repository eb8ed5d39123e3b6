// SPDX-License-Identifier: Apache-2.0
#include "gatt/GattTest.h"

namespace lyn::test {
namespace {

simulator::Characteristic Offer(const char* uuid)
{
    simulator::Characteristic characteristic;
    characteristic.uuid = uuid;
    return characteristic;
}

void IgnoreReport(int /*result*/, bool /*connected*/, const char* /*address*/, void* /*userData*/) {}

}  // namespace

GattTest::GattTest()
{
    phone.address = kPhone;
    phone.services = {{kServiceA, {Offer(kCharacteristicA1), Offer(kCharacteristicA2)}},
                      {kServiceB, {Offer(kCharacteristicB1)}}};
    simulator::AddPhone(phone);
}

PlatformClient::PlatformClient()
{
    EXPECT_EQ(bt_gatt_set_connection_state_changed_cb(IgnoreReport, nullptr), 0);
    EXPECT_EQ(bt_gatt_connect(kPhone, false), 0);
    simulator::Settle();
    EXPECT_EQ(bt_gatt_client_create(kPhone, &client), 0);
}

PlatformClient::~PlatformClient()
{
    simulator::ClearFaults();
    bt_gatt_client_destroy(client);
}

bt_gatt_h PlatformClient::Service(const char* uuid) const
{
    bt_gatt_h service = nullptr;
    EXPECT_EQ(bt_gatt_client_get_service(client, uuid, &service), 0);
    simulator::ClearJournal();
    return service;
}

bt_gatt_h PlatformClient::Characteristic(const char* serviceUuid, const char* uuid) const
{
    bt_gatt_h characteristic = nullptr;
    EXPECT_EQ(bt_gatt_service_get_characteristic(Service(serviceUuid), uuid, &characteristic), 0);
    simulator::ClearJournal();
    return characteristic;
}

ClientTest::ClientPtr ClientTest::MakeBareClient()
{
    return {new CGattClient, [](CGattClient* client) {
                client->Deinit();
                delete client;
            }};
}

ClientTest::ClientPtr ClientTest::MakeClient()
{
    return MakeClient({{kServiceA, {kCharacteristicA1, kCharacteristicA2}}, {kServiceB, {kCharacteristicB1}}});
}

ClientTest::ClientPtr ClientTest::MakeClient(const GattUuidMap& uuidMap)
{
    ClientPtr client = MakeBareClient();
    EXPECT_TRUE(client->Init(
        [this](int result, bool connected, const std::string& address) {
            reports.push_back((connected ? "connected " : "disconnected ") + std::to_string(result) + " " +
                              address);
        },
        [this](const char* value, int length) {
            reports.push_back("value " + std::string(value) + " " + std::to_string(length));
        },
        uuidMap));
    return client;
}

ClientTest::ClientPtr ClientTest::MakeConnectedClient()
{
    ClientPtr client = MakeClient();
    EXPECT_TRUE(client->Connect(kPhone));
    simulator::Settle();
    EXPECT_EQ(reports, Texts{"connected 0 AA:BB:CC:DD:EE:01"});
    reports.clear();
    simulator::ClearJournal();
    simulator::ClearLog();
    return client;
}

}  // namespace lyn::test
