// SPDX-License-Identifier: Apache-2.0
#include "Common/GattClient/CGattService.h"

#include <memory>

#include "Common/LynException.h"
#include "gatt/GattTest.h"

namespace lyn::test {
namespace {

class GattService : public PlatformClient {
protected:
    GattService() { simulator::ClearJournal(); }

    CharacteristicValueChangedCb KeepValues()
    {
        return [this](const char* value, int) { values.emplace_back(value); };
    }

    static std::string LookUp(const char* uuid)
    {
        return std::string("bt_gatt_service_get_characteristic(\"") + uuid + "\")";
    }

    Texts values;
};

const char* const kAsk = "bt_gatt_client_set_characteristic_value_changed_cb()";
const char* const kEnd = "bt_gatt_client_unset_characteristic_value_changed_cb()";

TEST_F(GattService, SetsItsCharacteristicsUpInTheirOrder)
{
    CGattService service(kServiceA, keeper);
    EXPECT_TRUE(service.Init(client, {kCharacteristicA2, kCharacteristicA1}, KeepValues()));
    EXPECT_EQ(simulator::JournalText(), (Texts{std::string("bt_gatt_client_get_service(\"") + kServiceA + "\")",
                                               LookUp(kCharacteristicA2), kAsk, LookUp(kCharacteristicA1), kAsk}));
    EXPECT_TRUE(LogsInOrder({{INFO, std::string("register characteristic for ") + kCharacteristicA2},
                             {INFO, std::string("register characteristic for ") + kCharacteristicA1}}));
    service.Deinit();
}

TEST_F(GattService, CannotBeSetUpWhenThePhoneLacksIt)
{
    CGattService service(kUnknown, keeper);
    EXPECT_FALSE(service.Init(client, {kCharacteristicA1}, KeepValues()));
    EXPECT_EQ(Messages(ERROR), Texts{std::string("fail to bt_gatt_client_get_service for ") + kUnknown});
    EXPECT_EQ(CountCalls("bt_gatt_service_get_characteristic"), 0);
    CGattService other(kServiceA, keeper);
    simulator::FailCall("bt_gatt_client_get_service", -1);
    EXPECT_FALSE(other.Init(client, {kCharacteristicA1}, KeepValues()));
    CGattService nameless;
    EXPECT_FALSE(nameless.Init(client, {}, KeepValues()));
}

TEST_F(GattService, LeavesOutWhatThePhoneLacks)
{
    CGattService service(kServiceA, keeper);
    EXPECT_TRUE(service.Init(client, {kCharacteristicA1, kUnknown, kCharacteristicA2}, KeepValues()));
    EXPECT_NE(service.GetCharacteristic(kCharacteristicA1), nullptr);
    EXPECT_NE(service.GetCharacteristic(kCharacteristicA2), nullptr);
    simulator::ClearLog();
    try {
        service.GetCharacteristic(kUnknown);
        FAIL();
    } catch (const LynExceptionInvalidParam& e) {
        EXPECT_STREQ(e.what(), "Invalid Parameter exception");
        EXPECT_EQ(e.GetCode(), LYN_ERROR_INVALID_PARAMETER);
    }
    EXPECT_EQ(Messages(ERROR), Texts{std::string("no charateristic for ") + kUnknown});
    service.Deinit();
}

TEST_F(GattService, GoesOnAfterACharacteristicWithoutNotifications)
{
    CGattService service(kServiceA, keeper);
    simulator::FailCall("bt_gatt_client_set_characteristic_value_changed_cb", -1, 1);
    EXPECT_TRUE(service.Init(client, {kCharacteristicA1, kCharacteristicA2}, KeepValues()));
    EXPECT_THROW(service.GetCharacteristic(kCharacteristicA1), LynExceptionInvalidParam);
    EXPECT_NE(service.GetCharacteristic(kCharacteristicA2), nullptr);
    service.Deinit();
}

TEST_F(GattService, MayHaveNoCharacteristics)
{
    CGattService service(kServiceA, keeper);
    EXPECT_TRUE(service.Init(client, {}, KeepValues()));
    EXPECT_THROW(service.GetCharacteristic(kCharacteristicA1), LynExceptionInvalidParam);
    EXPECT_THROW(service.GetCharacteristic(""), LynExceptionInvalidParam);
}

TEST_F(GattService, KeepsTheFirstOfTwoOfOneUuid)
{
    CGattService service(kServiceA, keeper);
    EXPECT_TRUE(service.Init(client, {kCharacteristicA1, kCharacteristicA1}, KeepValues()));
    EXPECT_EQ(CountCalls("bt_gatt_service_get_characteristic"), 2);
    EXPECT_EQ(CountCalls("bt_gatt_client_unset_characteristic_value_changed_cb"), 1) << "the second is released";
    simulator::ClearJournal();
    service.Deinit();
    EXPECT_EQ(simulator::JournalText(), Texts{kEnd}) << "and one is left";
}

TEST_F(GattService, EndsAllItsNotifications)
{
    CGattService service(kServiceA, keeper);
    ASSERT_TRUE(service.Init(client, {kCharacteristicA1, kCharacteristicA2}, KeepValues()));
    simulator::ClearJournal();
    service.Deinit();
    EXPECT_EQ(simulator::JournalText(), (Texts{kEnd, kEnd}));
    EXPECT_THROW(service.GetCharacteristic(kCharacteristicA1), LynExceptionInvalidParam);
    service.Deinit();
    EXPECT_EQ(simulator::JournalText().size(), 2U);
}

TEST_F(GattService, LeavesACharacteristicToThoseWhoHoldIt)
{
    CGattService service(kServiceA, keeper);
    ASSERT_TRUE(service.Init(client, {kCharacteristicA1}, KeepValues()));
    auto held = service.GetCharacteristic(kCharacteristicA1);
    simulator::ClearJournal();
    service.Deinit();
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_TRUE(held->write("a", [](int) {}));
    simulator::ClearJournal();
    held.reset();
    EXPECT_EQ(simulator::JournalText(), Texts{kEnd});
}

TEST_F(GattService, SharesItsCharacteristicsWithItsCopies)
{
    CGattService service(kServiceA, keeper);
    ASSERT_TRUE(service.Init(client, {kCharacteristicA1}, KeepValues()));
    CGattService constructed(service);
    CGattService assigned;
    assigned = service;
    EXPECT_EQ(constructed.GetCharacteristic(kCharacteristicA1), service.GetCharacteristic(kCharacteristicA1));
    EXPECT_EQ(assigned.GetCharacteristic(kCharacteristicA1), service.GetCharacteristic(kCharacteristicA1));
    simulator::ClearJournal();
    service.Deinit();
    constructed.Deinit();
    EXPECT_EQ(simulator::JournalText(), Texts{});
    assigned.Deinit();
    EXPECT_EQ(simulator::JournalText(), Texts{kEnd}) << "with the last one";
}

TEST_F(GattService, PassesItsCallbackToAllItsCharacteristics)
{
    CGattService service(kServiceA, keeper);
    ASSERT_TRUE(service.Init(client, {kCharacteristicA1, kCharacteristicA2}, KeepValues()));
    char value[] = "x";
    for (const char* uuid : {kCharacteristicA1, kCharacteristicA2}) {
        const auto registration = simulator::ValueRegistration(uuid);
        ASSERT_NE(registration.callback, nullptr);
        registration.callback(simulator::CharacteristicHandle(uuid), value, 1, registration.userData);
    }
    EXPECT_EQ(values, (Texts{"x", "x"}));
    service.Deinit();
}

TEST_F(GattService, GivesItsKeeperToAllItsCharacteristics)
{
    CGattService service(kServiceA, keeper);
    ASSERT_TRUE(service.Init(client, {kCharacteristicA1, kCharacteristicA2}, KeepValues()));
    for (const char* uuid : {kCharacteristicA1, kCharacteristicA2}) {
        EXPECT_EQ(service.GetCharacteristic(uuid)->Keep(), keeper);
    }
    keeper.reset();
    EXPECT_EQ(service.GetCharacteristic(kCharacteristicA1)->Keep(), nullptr);
    service.Deinit();
}

}  // namespace
}  // namespace lyn::test
