// SPDX-License-Identifier: Apache-2.0
//
// Clients and their handles.
#include <cstdlib>

#include "Codes.h"
#include "GattRoom.h"

namespace lyn::linux_tests {
namespace {

using namespace lyn::linux_platform;

constexpr const char* kUnknownUuid = "00000000-0000-4000-8000-00000000dead";

class LinuxClient : public GattRoom {};

TEST_F(LinuxClient, NeedsALinkThatIsUp)
{
    EXPECT_EQ(bt_gatt_client_create(kPhone, &client), kNotConnected);
    EXPECT_EQ(bt_gatt_client_create("phone", &client), kInvalidArgument);
    EXPECT_EQ(bt_gatt_client_create(nullptr, &client), kInvalidArgument);
    EXPECT_EQ(bt_gatt_client_create(kPhone, nullptr), kInvalidArgument);
    Connect();
    ASSERT_EQ(bt_gatt_disconnect(kPhone), 0);
    EXPECT_EQ(bt_gatt_client_create(kPhone, &client), kNotConnected);
    EXPECT_EQ(client, nullptr);
}

TEST_F(LinuxClient, FindsUuidsInAnyLetterCase)
{
    bluez->ChangePhone({.service = "F7608236-13BD-4A99-BBCD-9426BCCB6C24"});
    Connect();
    MakeClient();
    bt_gatt_h again = nullptr;
    EXPECT_EQ(bt_gatt_service_get_characteristic(service, "9BE85432-B1DB-416C-9E1C-D6D381305337", &again), 0);
    EXPECT_EQ(again, characteristic);
    char* uuid = nullptr;
    ASSERT_EQ(bt_gatt_get_uuid(service, &uuid), 0);
    EXPECT_STREQ(uuid, kServiceUuid);
    std::free(uuid);
}

TEST_F(LinuxClient, LeadsFromACharacteristicToItsService)
{
    Connect();
    MakeClient();
    bt_gatt_h found = nullptr;
    EXPECT_EQ(bt_gatt_characteristic_get_service(characteristic, &found), 0);
    EXPECT_EQ(found, service);
    EXPECT_EQ(bt_gatt_characteristic_get_service(service, &found), kInvalidArgument);
}

TEST_F(LinuxClient, DoesNotGiveWhatThePhoneDoesNotOffer)
{
    bluez->ChangePhone({.characteristic = ""});
    Connect();
    ASSERT_EQ(bt_gatt_client_create(kPhone, &client), 0);
    EXPECT_EQ(bt_gatt_client_get_service(client, kUnknownUuid, &service), kNotFound);
    ASSERT_EQ(bt_gatt_client_get_service(client, kServiceUuid, &service), 0);
    EXPECT_EQ(bt_gatt_service_get_characteristic(service, kCharacteristicUuid, &characteristic), kNotFound)
        << "a characteristic that is missing";
    EXPECT_EQ(characteristic, nullptr);
}

/// Every function that takes a handle, with handles that are not alive.
void RefusesAll(bt_gatt_client_h client, bt_gatt_h service, bt_gatt_h characteristic)
{
    bt_gatt_h handle = nullptr;
    char* uuid = nullptr;
    const auto onValue = [](bt_gatt_h, char*, int, void*) {};
    const auto onWritten = [](int, bt_gatt_h, void*) {};
    const auto onMtu = [](bt_gatt_client_h, const bt_gatt_client_att_mtu_info_s*, void*) {};
    EXPECT_EQ(bt_gatt_client_destroy(client), kInvalidArgument);
    EXPECT_EQ(bt_gatt_client_get_service(client, kServiceUuid, &handle), kInvalidArgument);
    EXPECT_EQ(bt_gatt_service_get_characteristic(service, kCharacteristicUuid, &handle), kInvalidArgument);
    EXPECT_EQ(bt_gatt_client_set_characteristic_value_changed_cb(characteristic, onValue, nullptr),
              kInvalidArgument);
    EXPECT_EQ(bt_gatt_client_unset_characteristic_value_changed_cb(characteristic), kInvalidArgument);
    EXPECT_EQ(bt_gatt_set_value(characteristic, "x", 1), kInvalidArgument);
    EXPECT_EQ(bt_gatt_client_write_value(characteristic, onWritten, nullptr), kInvalidArgument);
    EXPECT_EQ(bt_gatt_client_set_att_mtu_changed_cb(client, onMtu, nullptr), kInvalidArgument);
    EXPECT_EQ(bt_gatt_client_unset_att_mtu_changed_cb(client), kInvalidArgument);
    EXPECT_EQ(bt_gatt_client_request_att_mtu_change(client, 256), kInvalidArgument);
    EXPECT_EQ(bt_gatt_characteristic_get_service(characteristic, &handle), kInvalidArgument);
    EXPECT_EQ(bt_gatt_get_uuid(characteristic, &uuid), kInvalidArgument);
    EXPECT_EQ(handle, nullptr);
    EXPECT_EQ(uuid, nullptr);
}

TEST_F(LinuxClient, FindsOutHandlesThatAreNotAlive)
{
    Connect();
    MakeClient();
    const auto old = client;
    ASSERT_EQ(bt_gatt_client_destroy(client), 0);
    client = nullptr;
    RefusesAll(old, service, characteristic);
    RefusesAll(nullptr, nullptr, nullptr);
    RefusesAll(this, this, this);
    ASSERT_EQ(bt_gatt_client_create(kPhone, &client), 0);
    RefusesAll(old, service, characteristic);
    RefusesAll(this, client, client);
}

TEST_F(LinuxClient, IsOfNoUseWhenItsLinkIsDownAlsoWhenThereIsANewOne)
{
    Connect();
    MakeClient();
    bluez->DropLink(kPhone);
    ASSERT_TRUE(WaitForReports(2));
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(WaitForReports(3));
    bt_gatt_h handle = nullptr;
    EXPECT_EQ(bt_gatt_client_get_service(client, kServiceUuid, &handle), kNotConnected);
    EXPECT_EQ(bt_gatt_service_get_characteristic(service, kCharacteristicUuid, &handle), kNotConnected);
    EXPECT_EQ(Write("late"), kNotConnected);
    EXPECT_EQ(bt_gatt_client_set_characteristic_value_changed_cb(characteristic, &GattRoom::OnValue, this),
              kNotConnected);
    EXPECT_EQ(bt_gatt_client_request_att_mtu_change(client, 256), kNotConnected);
}

TEST_F(LinuxClient, ReportsTheRealMtuOnceForEachRequest)
{
    bluez->ChangePhone({.mtu = 185});
    Connect();
    MakeClient();
    RequestMtu();
    RequestMtu();
    EXPECT_TRUE(mtus.empty()) << "not from inside the call";
    ASSERT_TRUE(RunUntil([&] { return mtus.size() == 2; }));
    RunQuietly(30);
    EXPECT_EQ(mtus, (std::vector<unsigned>{185, 185}));
    EXPECT_EQ(mtuStatus, (std::vector<unsigned>{0, 0}));
}

TEST_F(LinuxClient, ReportsTheLeastMtuAndWhyWhenItCannotBeRead)
{
    Connect();
    MakeClient();
    UseShortLimits();
    bluez->Treat("Properties.Get", 1, Treatment::Fails("org.bluez.Error.Failed"));
    bluez->Treat("Properties.Get", 2, Treatment::Ignored());
    RequestMtu();
    RequestMtu();
    ASSERT_TRUE(RunUntil([&] { return mtus.size() == 2; }));
    EXPECT_EQ(mtus, (std::vector<unsigned>{23, 23}));
    EXPECT_EQ(mtuStatus,
              (std::vector<unsigned>{static_cast<unsigned>(kFailed), static_cast<unsigned>(kNoAnswer)}));
}

TEST_F(LinuxClient, DoesNotTrustTheTypeOfTheMtu)
{
    Connect();
    MakeClient();
    bluez->Set(bluez->CharacteristicPath(kPhone), "org.bluez.GattCharacteristic1", "MTU",
               g_variant_new_string("a lot"));
    RequestMtu();
    ASSERT_TRUE(RunUntil([&] { return mtus.size() == 1; }));
    EXPECT_EQ(mtus[0], 23U);
    EXPECT_EQ(mtuStatus[0], static_cast<unsigned>(kMalformed));
}

TEST_F(LinuxClient, RefusesAnMtuThatCannotBe)
{
    Connect();
    MakeClient();
    EXPECT_EQ(bt_gatt_client_request_att_mtu_change(client, 22), kInvalidArgument);
    EXPECT_EQ(bt_gatt_client_request_att_mtu_change(client, 518), kInvalidArgument);
}

TEST_F(LinuxClient, ReportsNoMtuAfterItsUnsetOrItsDestruction)
{
    Connect();
    MakeClient();
    RequestMtu();
    ASSERT_EQ(bt_gatt_client_unset_att_mtu_changed_cb(client), 0);
    RunQuietly(50);
    RequestMtu();
    ASSERT_EQ(bt_gatt_client_destroy(client), 0);
    client = nullptr;
    RunQuietly(50);
    EXPECT_TRUE(mtus.empty());
}

}  // namespace
}  // namespace lyn::linux_tests
