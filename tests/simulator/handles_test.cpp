// SPDX-License-Identifier: Apache-2.0
#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

class Handles : public SimulatorTest {
protected:
    Handles() { AddPhone(AnsweringPhone({Text("Success")})); }
};

/// Every function that takes a handle, with this one.
std::vector<int> ResultsOfEveryUse(void* handle)
{
    void* out = nullptr;
    char* text = nullptr;
    const auto onValue = [](bt_gatt_h, char*, int, void*) {};
    const auto onWritten = [](int, bt_gatt_h, void*) {};
    const auto onMtu = [](bt_gatt_client_h, const bt_gatt_client_att_mtu_info_s*, void*) {};
    return {
        bt_gatt_client_destroy(handle),
        bt_gatt_client_get_service(handle, kService, &out),
        bt_gatt_service_get_characteristic(handle, kCharacteristic, &out),
        bt_gatt_client_set_characteristic_value_changed_cb(handle, onValue, nullptr),
        bt_gatt_client_unset_characteristic_value_changed_cb(handle),
        bt_gatt_set_value(handle, "x", 1),
        bt_gatt_client_write_value(handle, onWritten, nullptr),
        bt_gatt_client_set_att_mtu_changed_cb(handle, onMtu, nullptr),
        bt_gatt_client_unset_att_mtu_changed_cb(handle),
        bt_gatt_client_request_att_mtu_change(handle, 256),
        bt_gatt_characteristic_get_service(handle, &out),
        bt_gatt_get_uuid(handle, &text),
    };
}

TEST_F(Handles, ThatAreMadeUpAreRefusedEverywhere)
{
    int somewhere = 0;
    for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(&somewhere), reinterpret_cast<void*>(16),
                         reinterpret_cast<void*>(~std::uintptr_t{0})}) {
        for (const int result : ResultsOfEveryUse(handle)) {
            EXPECT_NE(result, 0);
        }
    }
}

TEST_F(Handles, OfADestroyedClientAreRefusedEverywhere)
{
    Peer peer;
    void* const client = peer.client;
    peer.Destroy();
    for (void* handle : {client, peer.service, peer.characteristic}) {
        for (const int result : ResultsOfEveryUse(handle)) {
            EXPECT_NE(result, 0);
        }
    }
}

TEST_F(Handles, OfOneKindAreRefusedAsAnother)
{
    const Peer peer;
    void* out = nullptr;
    EXPECT_NE(bt_gatt_client_get_service(peer.service, kService, &out), 0);
    EXPECT_NE(bt_gatt_service_get_characteristic(peer.client, kCharacteristic, &out), 0);
    EXPECT_NE(bt_gatt_service_get_characteristic(peer.characteristic, kCharacteristic, &out), 0);
    EXPECT_NE(bt_gatt_set_value(peer.service, "x", 1), 0);
    EXPECT_NE(bt_gatt_characteristic_get_service(peer.service, &out), 0);
    EXPECT_NE(bt_gatt_client_destroy(peer.characteristic), 0);
    EXPECT_EQ(out, nullptr);
}

TEST_F(Handles, NeedALinkThatIsUp)
{
    void* client = nullptr;
    EXPECT_NE(bt_gatt_client_create(kPhone, &client), 0);
    EXPECT_EQ(client, nullptr);
    Peer peer;
    bt_gatt_disconnect(kPhone);
    Settle();
    void* out = nullptr;
    EXPECT_NE(bt_gatt_client_get_service(peer.client, kService, &out), 0);
    EXPECT_NE(bt_gatt_service_get_characteristic(peer.service, kCharacteristic, &out), 0);
    EXPECT_NE(peer.Listen(), 0);
    EXPECT_NE(peer.Write("x"), 0);
    EXPECT_NE(peer.RequestMtu(256), 0);
}

TEST_F(Handles, OfAnOldLinkDoNotReachTheNewOne)
{
    Peer old;
    bt_gatt_disconnect(kPhone);
    Settle();
    const Peer current;
    EXPECT_NE(old.Write("x"), 0);
    Settle();
    EXPECT_TRUE(MessagesTo(kPhone).empty());
}

TEST_F(Handles, OfWhatThePhoneDoesNotOfferAreNotGiven)
{
    const Peer peer;
    void* out = nullptr;
    EXPECT_NE(bt_gatt_client_get_service(peer.client, "0000180f-0000-1000-8000-00805f9b34fb", &out), 0);
    EXPECT_NE(bt_gatt_service_get_characteristic(peer.service, kService, &out), 0);
    EXPECT_NE(bt_gatt_client_get_service(peer.client, nullptr, &out), 0);
    EXPECT_NE(bt_gatt_client_get_service(peer.client, kService, nullptr), 0);
    EXPECT_NE(bt_gatt_service_get_characteristic(peer.service, nullptr, &out), 0);
    EXPECT_NE(bt_gatt_client_create(kPhone, nullptr), 0);
    EXPECT_EQ(out, nullptr);
}

TEST_F(Handles, AreTheSameWhenLookedUpAgain)
{
    const Peer peer;
    void* service = nullptr;
    void* characteristic = nullptr;
    bt_gatt_client_get_service(peer.client, kService, &service);
    bt_gatt_service_get_characteristic(service, kCharacteristic, &characteristic);
    EXPECT_EQ(service, peer.service);
    EXPECT_EQ(characteristic, peer.characteristic);
}

TEST_F(Handles, LeadToTheServiceAndItsUuid)
{
    const Peer peer;
    bt_gatt_h service = nullptr;
    char* uuid = nullptr;
    ASSERT_EQ(bt_gatt_characteristic_get_service(peer.characteristic, &service), 0);
    EXPECT_EQ(service, peer.service);
    ASSERT_EQ(bt_gatt_get_uuid(service, &uuid), 0);
    EXPECT_EQ(TakeText(uuid), kService);
    ASSERT_EQ(bt_gatt_get_uuid(peer.characteristic, &uuid), 0);
    EXPECT_EQ(TakeText(uuid), kCharacteristic);
    EXPECT_NE(bt_gatt_get_uuid(peer.service, nullptr), 0);
    EXPECT_NE(bt_gatt_characteristic_get_service(peer.characteristic, nullptr), 0);
}

TEST_F(Handles, AndRegistrationsAreShownToTheTest)
{
    EXPECT_EQ(ClientHandle(), nullptr);
    EXPECT_EQ(CharacteristicHandle(kCharacteristic), nullptr);
    EXPECT_EQ(ValueRegistration(kCharacteristic).callback, nullptr);
    EXPECT_EQ(MtuRegistration().callback, nullptr);
    Peer peer;
    peer.Listen();
    peer.Write("hello");
    EXPECT_EQ(ClientHandle(), peer.client);
    EXPECT_EQ(CharacteristicHandle(kCharacteristic), peer.characteristic);
    EXPECT_EQ(MtuRegistration().userData, &peer);
    EXPECT_EQ(ValueRegistration(kCharacteristic).userData, &peer);
    EXPECT_EQ(WriteRegistration(kCharacteristic).userData, &peer);
    std::string value = "made up";
    ValueRegistration(kCharacteristic).callback(peer.characteristic, value.data(), 7, &peer);
    EXPECT_EQ(peer.values, std::vector<std::string>{"made up"});
    peer.Destroy();
    EXPECT_EQ(ClientHandle(), nullptr);
}

TEST_F(Handles, AndEverythingAliveIsCounted)
{
    Counts counts = Alive();
    EXPECT_EQ(counts.clients + counts.links + counts.registrations + counts.productInits, 0);
    Peer peer;
    peer.Listen();
    counts = Alive();
    EXPECT_EQ(counts.clients, 1);
    EXPECT_EQ(counts.links, 1);
    EXPECT_EQ(counts.registrations, 3) << "links, MTU and values";
    peer.Destroy();
    EXPECT_EQ(Alive().registrations, 1);
    EXPECT_EQ(Alive().clients, 0);
}

}  // namespace
}  // namespace lyn::simulator::test
