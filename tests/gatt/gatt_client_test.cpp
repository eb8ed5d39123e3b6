// SPDX-License-Identifier: Apache-2.0
//
// A client with a link: MTU, writes, notifications, its own disconnect, its end.
#include "Common/GattClient/CGattClient.h"

#include <functional>

#include "Common/LynException.h"
#include "gatt/GattTest.h"

namespace lyn::test {
namespace {

class GattClient : public ClientTest {
protected:
    MtuChangedCb KeepMtus()
    {
        return [this](void* client, const bt_gatt_client_att_mtu_info_s* info) {
            EXPECT_EQ(client, simulator::ClientHandle());
            mtus.push_back(info->mtu);
        };
    }

    CharacteristicWriteCompletedCb KeepWrites()
    {
        return [this](int result) { writes.push_back(result); };
    }

    static bt_gatt_client_att_mtu_info_s Info() { return {kPhone, 99, 0}; }

    std::vector<unsigned> mtus;
};

TEST_F(GattClient, AsksForAnMtuAndHearsOfItOnce)
{
    const auto client = MakeConnectedClient();
    EXPECT_TRUE(client->RequestSetMtu(256, KeepMtus()));
    EXPECT_EQ(simulator::JournalText(),
              (Texts{"bt_gatt_client_set_att_mtu_changed_cb()", "bt_gatt_client_request_att_mtu_change(256)"}));
    simulator::ClearJournal();
    simulator::Settle();
    EXPECT_EQ(mtus, std::vector<unsigned>{256});
    EXPECT_EQ(simulator::JournalText(), Texts{"bt_gatt_client_unset_att_mtu_changed_cb()"});
}

TEST_F(GattClient, CanAskForAnMtuAgain)
{
    const auto client = MakeConnectedClient();
    EXPECT_TRUE(client->RequestSetMtu(100, KeepMtus()));
    simulator::Settle();
    EXPECT_TRUE(client->RequestSetMtu(200, KeepMtus()));
    simulator::Settle();
    EXPECT_EQ(mtus, (std::vector<unsigned>{100, 200}));
}

TEST_F(GattClient, NeedsALinkToAskForAnMtu)
{
    const auto client = MakeClient();
    simulator::ClearJournal();
    EXPECT_FALSE(client->RequestSetMtu(256, KeepMtus()));
    EXPECT_FALSE(client->RequestSetMtu(256, nullptr)) << "the link is looked for first";
    EXPECT_EQ(Messages(ERROR), (Texts{"client handle is nullptr", "client handle is nullptr"}));
    EXPECT_EQ(simulator::JournalText(), Texts{});
}

TEST_F(GattClient, NeedsSomebodyToTellOfTheMtu)
{
    const auto client = MakeConnectedClient();
    EXPECT_FALSE(client->RequestSetMtu(256, nullptr));
    EXPECT_EQ(Messages(ERROR), Texts{"mtuChangedCb handle is nullptr"});
    EXPECT_EQ(simulator::JournalText(), Texts{});
}

TEST_F(GattClient, DoesNotLookAtTheResultsOfAnMtuRequest)
{
    const auto client = MakeConnectedClient();
    simulator::FailCall("bt_gatt_client_set_att_mtu_changed_cb", -1);
    simulator::FailCall("bt_gatt_client_request_att_mtu_change", -1);
    EXPECT_TRUE(client->RequestSetMtu(256, KeepMtus()));
    EXPECT_EQ(CountCalls("bt_gatt_client_request_att_mtu_change"), 1);
    EXPECT_EQ(Messages(ERROR), Texts{});
}

TEST_F(GattClient, DropsMtuReportsThatAreNotItsOwn)
{
    const auto client = MakeConnectedClient();
    EXPECT_TRUE(client->RequestSetMtu(256, KeepMtus()));
    const auto info = Info();
    int other = 0;
    client->OnMtuChanged(nullptr, &info);
    client->OnMtuChanged(simulator::ClientHandle(), nullptr);
    client->OnMtuChanged(nullptr, nullptr);
    client->OnMtuChanged(&other, nullptr);
    client->OnMtuChanged(&other, &info);
    EXPECT_EQ(Messages(ERROR),
              (Texts{"client handle is nullptr", "client handle is nullptr", "client handle is nullptr",
                     "client handle is nullptr", "mtu changed for other client"}));
    EXPECT_TRUE(mtus.empty());
    client->OnMtuChanged(simulator::ClientHandle(), &info);
    EXPECT_EQ(mtus, std::vector<unsigned>{99}) << "still waiting for its own";
}

TEST_F(GattClient, HasNobodyToTellOfASecondMtu)
{
    const auto client = MakeConnectedClient();
    EXPECT_TRUE(client->RequestSetMtu(256, KeepMtus()));
    const auto info = Info();
    client->OnMtuChanged(simulator::ClientHandle(), &info);
    EXPECT_THROW(client->OnMtuChanged(simulator::ClientHandle(), &info), std::bad_function_call);
    EXPECT_EQ(mtus, std::vector<unsigned>{99});
}

TEST_F(GattClient, DropsMtuReportsWithoutUserData)
{
    const auto client = MakeConnectedClient();
    EXPECT_TRUE(client->RequestSetMtu(256, KeepMtus()));
    const auto info = Info();
    simulator::MtuRegistration().callback(simulator::ClientHandle(), &info, nullptr);
    EXPECT_EQ(Messages(ERROR), Texts{"userData is nullptr"});
    EXPECT_TRUE(mtus.empty());
}

TEST_F(GattClient, DoesNotUnregisterFromTheMtuOfAClientThatIsGone)
{
    const auto client = MakeConnectedClient();
    ASSERT_TRUE(
        client->RequestSetMtu(256, [&](void*, const bt_gatt_client_att_mtu_info_s*) { client->Disconnect(); }));
    simulator::Settle();
    EXPECT_EQ(CountCalls("bt_gatt_client_unset_att_mtu_changed_cb"), 0);
    EXPECT_EQ(reports, Texts{"disconnected 0 AA:BB:CC:DD:EE:01"});
}

TEST_F(GattClient, MayGoInsideTheReportOfItsMtu)
{
    auto client = MakeConnectedClient();
    auto life = std::make_shared<int>();
    const std::weak_ptr<int> callable = life;
    ASSERT_TRUE(
        client->RequestSetMtu(256, [&, held = std::move(life)](void*, const bt_gatt_client_att_mtu_info_s* info) {
            client.reset();
            EXPECT_FALSE(callable.expired()) << "what is being called lives";
            EXPECT_EQ(simulator::Alive().clients, 1) << "and so does the client, until the report is over";
            mtus.push_back(info->mtu);
            simulator::ClearJournal();
        }));
    simulator::Settle();
    EXPECT_EQ(mtus, std::vector<unsigned>{256});
    EXPECT_TRUE(callable.expired());
    EXPECT_EQ(simulator::Alive().clients, 0);
    Texts end = {"bt_gatt_client_unset_att_mtu_changed_cb()", "bt_gatt_unset_connection_state_changed_cb()"};
    end.insert(end.end(), 3, "bt_gatt_client_unset_characteristic_value_changed_cb()");
    end.emplace_back("bt_gatt_client_destroy()");
    EXPECT_EQ(simulator::JournalText(), end);
}

TEST_F(GattClient, WritesToTheCharacteristicOfTheService)
{
    const auto client = MakeConnectedClient();
    client->WriteData(kServiceB, kCharacteristicB1, "to b1", KeepWrites());
    EXPECT_EQ(simulator::JournalText(),
              (Texts{"bt_gatt_set_value(\"to b1\", 5)", "bt_gatt_client_write_value()"}));
    simulator::Settle();
    EXPECT_EQ(simulator::MessagesTo(kPhone), Texts{"to b1"});
    EXPECT_EQ(writes, std::vector<int>{0});
}

TEST_F(GattClient, CannotWriteToAServiceThatItDoesNotKnow)
{
    const auto client = MakeConnectedClient();
    for (const char* uuid : {kUnknown, ""}) {
        simulator::ClearLog();
        try {
            client->WriteData(uuid, kCharacteristicA1, "a", KeepWrites());
            FAIL();
        } catch (const LynExceptionInvalidParam& e) {
            EXPECT_STREQ(e.what(), "No Service");
            EXPECT_EQ(e.GetCode(), LYN_ERROR_INVALID_PARAMETER);
        }
        EXPECT_EQ(Messages(ERROR), Texts{std::string("No service for ") + uuid});
    }
    EXPECT_EQ(simulator::JournalText(), Texts{});
}

TEST_F(GattClient, CannotWriteToACharacteristicThatItDoesNotKnow)
{
    const auto client = MakeConnectedClient();
    try {
        client->WriteData(kServiceA, kCharacteristicB1, "a", KeepWrites());
        FAIL();
    } catch (const LynExceptionInvalidParam& e) {
        EXPECT_STREQ(e.what(), "Invalid Parameter exception");
    }
    EXPECT_EQ(Messages(ERROR), Texts{std::string("no charateristic for ") + kCharacteristicB1});
}

TEST_F(GattClient, CannotWriteBeforeItIsConnected)
{
    const auto client = MakeClient();
    EXPECT_THROW(client->WriteData(kServiceA, kCharacteristicA1, "a", KeepWrites()), LynExceptionInvalidParam);
    ASSERT_TRUE(client->Connect(kPhone));
    EXPECT_THROW(client->WriteData(kServiceA, kCharacteristicA1, "a", KeepWrites()), LynExceptionInvalidParam);
}

TEST_F(GattClient, DoesNotTellItsCallerOfAWriteThatCannotBegin)
{
    const auto client = MakeConnectedClient();
    simulator::FailCall("bt_gatt_set_value", -1);
    EXPECT_NO_THROW(client->WriteData(kServiceA, kCharacteristicA1, "a", KeepWrites()));
    simulator::FailCall("bt_gatt_client_write_value", -1);
    EXPECT_NO_THROW(client->WriteData(kServiceA, kCharacteristicA1, "a", KeepWrites()));
    EXPECT_EQ(Messages(ERROR), (Texts{"fail to bt_gatt_set_value(a)", "fail to bt_gatt_client_write_value"}));
    simulator::Settle();
    EXPECT_TRUE(writes.empty());
}

TEST_F(GattClient, HearsNotificationsOfAllItsCharacteristics)
{
    const auto client = MakeConnectedClient();
    std::string value = "hello";
    for (const char* uuid : {kCharacteristicA1, kCharacteristicA2, kCharacteristicB1}) {
        const auto registration = simulator::ValueRegistration(uuid);
        ASSERT_NE(registration.callback, nullptr) << uuid;
        registration.callback(simulator::CharacteristicHandle(uuid), value.data(), 5, registration.userData);
    }
    EXPECT_EQ(reports, (Texts{"value hello 5", "value hello 5", "value hello 5"}));
}

TEST_F(GattClient, AsksForItsDisconnectionTwiceIfMust)
{
    const auto client = MakeConnectedClient();
    EXPECT_TRUE(client->Disconnect());
    const Texts end = {"bt_gatt_client_unset_characteristic_value_changed_cb()",
                       "bt_gatt_client_unset_characteristic_value_changed_cb()",
                       "bt_gatt_client_unset_characteristic_value_changed_cb()", "bt_gatt_client_destroy()",
                       "bt_gatt_disconnect(\"AA:BB:CC:DD:EE:01\")"};
    EXPECT_EQ(simulator::JournalText(), end);
    simulator::ClearJournal();
    EXPECT_TRUE(client->Disconnect()) << "the report has not come yet";
    EXPECT_EQ(simulator::JournalText(), Texts{"bt_gatt_disconnect(\"AA:BB:CC:DD:EE:01\")"});
    simulator::Settle();
    EXPECT_EQ(reports, Texts{"disconnected 0 AA:BB:CC:DD:EE:01"});
    EXPECT_FALSE(client->Disconnect());
    EXPECT_EQ(Messages(ERROR), Texts{"remote address is empty"});
}

TEST_F(GattClient, DoesNotLookAtTheResultOfItsDisconnect)
{
    const auto client = MakeConnectedClient();
    simulator::FailCall("bt_gatt_disconnect", -1);
    EXPECT_TRUE(client->Disconnect());
    EXPECT_EQ(Messages(ERROR), Texts{});
}

TEST_F(GattClient, HasNothingToDisconnectBeforeItConnects)
{
    const auto client = MakeClient();
    simulator::ClearJournal();
    EXPECT_FALSE(client->Disconnect());
    EXPECT_EQ(Messages(ERROR), Texts{"remote address is empty"});
    EXPECT_EQ(simulator::JournalText(), Texts{});
}

TEST_F(GattClient, CanBeDisconnectedWhileItConnects)
{
    const auto client = MakeClient();
    ASSERT_TRUE(client->Connect(kPhone));
    EXPECT_TRUE(client->Disconnect());
    EXPECT_EQ(CountCalls("bt_gatt_client_destroy"), 0);
    EXPECT_EQ(CountCalls("bt_gatt_disconnect"), 1);
}

TEST_F(GattClient, CanBeConnectedAgain)
{
    const auto client = MakeConnectedClient();
    client->Disconnect();
    simulator::Settle();
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::Settle();
    EXPECT_EQ(reports, (Texts{"disconnected 0 AA:BB:CC:DD:EE:01", "connected 0 AA:BB:CC:DD:EE:01"}));
    client->WriteData(kServiceA, kCharacteristicA2, "a", KeepWrites());
    simulator::Settle();
    EXPECT_EQ(writes, std::vector<int>{0});
}

TEST_F(GattClient, ForcesItselfIdleWithoutADisconnect)
{
    const auto client = MakeConnectedClient();
    EXPECT_TRUE(client->Deinit());
    EXPECT_EQ(simulator::JournalText(),
              (Texts{"bt_gatt_unset_connection_state_changed_cb()",
                     "bt_gatt_client_unset_characteristic_value_changed_cb()",
                     "bt_gatt_client_unset_characteristic_value_changed_cb()",
                     "bt_gatt_client_unset_characteristic_value_changed_cb()", "bt_gatt_client_destroy()"}));
    client->OnConnectionStateChanged(0, false, kPhone);
    EXPECT_TRUE(reports.empty()) << "nobody is told any more";
}

TEST_F(GattClient, UnregistersAlsoWhenItNeverConnected)
{
    const auto client = MakeClient();
    simulator::ClearJournal();
    EXPECT_TRUE(client->Deinit());
    EXPECT_TRUE(client->Deinit());
    EXPECT_EQ(simulator::JournalText(), Texts(2, "bt_gatt_unset_connection_state_changed_cb()"));
}

TEST_F(GattClient, ForgetsItsServicesWhenItIsForcedIdle)
{
    const auto client = MakeConnectedClient();
    client->Deinit();
    simulator::RemovePhone(kPhone);
    simulator::Settle();
    simulator::AddPhone(phone);
    simulator::ClearJournal();
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::Settle();
    EXPECT_EQ(CountCalls("bt_gatt_client_create"), 1);
    EXPECT_EQ(CountCalls("bt_gatt_client_get_service"), 0) << "the map is empty";
}

TEST_F(GattClient, TakesTheLatestCallbacksAndServices)
{
    const auto client = MakeClient();
    int told = 0;
    EXPECT_TRUE(
        client->Init([&](int, bool, const std::string&) { ++told; }, nullptr, {{kServiceB, {kCharacteristicB1}}}));
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::Settle();
    EXPECT_EQ(told, 1);
    EXPECT_TRUE(reports.empty());
    EXPECT_EQ(CountCalls("bt_gatt_client_get_service"), 1);
}

TEST_F(GattClient, KeepsTheServicesThatItHasWhenItRegistersAgain)
{
    const auto client = MakeConnectedClient();
    EXPECT_TRUE(client->RegisterGattServices());
    EXPECT_EQ(CountCalls("bt_gatt_client_get_service"), 2);
    EXPECT_EQ(CountCalls("bt_gatt_client_unset_characteristic_value_changed_cb"), 3)
        << "the new ones are released";
    EXPECT_TRUE(client->UnRegisterGattSevices());
    EXPECT_EQ(CountCalls("bt_gatt_client_unset_characteristic_value_changed_cb"), 6);
    EXPECT_TRUE(client->UnRegisterGattSevices());
    EXPECT_EQ(CountCalls("bt_gatt_client_unset_characteristic_value_changed_cb"), 6);
}

TEST_F(GattClient, MayGoInsideANotificationAndTheEndOfAWrite)
{
    auto client = MakeConnectedClient();
    client->WriteData(kServiceA, kCharacteristicA1, "a", [&](int result) {
        client.reset();
        writes.push_back(result);
    });
    simulator::Settle();
    EXPECT_EQ(writes, std::vector<int>{0});
    EXPECT_EQ(simulator::Alive().clients, 0);
}

}  // namespace
}  // namespace lyn::test
