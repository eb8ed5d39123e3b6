// SPDX-License-Identifier: Apache-2.0
#include "Common/GattClient/CGattCharacteristic.h"

#include <memory>

#include "gatt/GattTest.h"

namespace lyn::test {
namespace {

class GattCharacteristic : public PlatformClient {
protected:
    CharacteristicValueChangedCb KeepValues()
    {
        return [this](const char* value, int length) {
            values.emplace_back(value, static_cast<std::size_t>(length));
        };
    }

    CharacteristicWriteCompletedCb KeepWrites()
    {
        return [this](int result) { writes.push_back(result); };
    }

    static bt_gatt_h Handle() { return simulator::CharacteristicHandle(kCharacteristicA1); }

    Texts values;
    std::vector<int> writes;
};

TEST_F(GattCharacteristic, LooksItselfUpAndAsksForNotifications)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    const bt_gatt_h service = Service(kServiceA);
    EXPECT_TRUE(characteristic.Init(service, KeepValues()));
    EXPECT_EQ(simulator::JournalText(),
              (Texts{std::string("bt_gatt_service_get_characteristic(\"") + kCharacteristicA1 + "\")",
                     "bt_gatt_client_set_characteristic_value_changed_cb()"}));
    EXPECT_TRUE(HasLog(DEBUG, std::string("uuid : ") + kCharacteristicA1));
    EXPECT_EQ(Messages(ERROR), Texts{});
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, CannotBeSetUpWithoutAService)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    simulator::ClearJournal();
    EXPECT_FALSE(characteristic.Init(nullptr, KeepValues()));
    EXPECT_EQ(Messages(ERROR), Texts{"service handle is nullptr"});
    EXPECT_EQ(simulator::JournalText(), Texts{});
}

TEST_F(GattCharacteristic, CannotBeSetUpWhenThePhoneLacksIt)
{
    CGattCharacteristic characteristic(kUnknown, keeper);
    const bt_gatt_h service = Service(kServiceA);
    EXPECT_FALSE(characteristic.Init(service, KeepValues()));
    EXPECT_EQ(Messages(ERROR), Texts{"Failt to get chr handle"});
    EXPECT_EQ(CountCalls("bt_gatt_client_set_characteristic_value_changed_cb"), 0);
    EXPECT_TRUE(characteristic.Deinit());
    EXPECT_EQ(CountCalls("bt_gatt_client_unset_characteristic_value_changed_cb"), 0) << "there is no handle";
}

TEST_F(GattCharacteristic, ForgetsItsCallbackWhenNotificationsAreRefused)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    simulator::FailCall("bt_gatt_client_set_characteristic_value_changed_cb", -1);
    EXPECT_FALSE(characteristic.Init(Service(kServiceA), KeepValues()));
    EXPECT_EQ(Messages(ERROR), Texts{"fail to bt_gatt_client_set_characteristic_value_changed_cb"});
    char value[] = "x";
    characteristic.OnCharateristicValueChaned(Handle(), value, 1);
    EXPECT_TRUE(values.empty());
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, EndsItsNotificationsOnce)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    simulator::ClearJournal();
    EXPECT_TRUE(characteristic.Deinit());
    EXPECT_TRUE(characteristic.Deinit());
    EXPECT_EQ(simulator::JournalText(), Texts{"bt_gatt_client_unset_characteristic_value_changed_cb()"});
    EXPECT_EQ(simulator::ValueRegistration(kCharacteristicA1).callback, nullptr);
}

TEST_F(GattCharacteristic, MayBeEndedBeforeItIsSetUp)
{
    CGattCharacteristic characteristic;
    simulator::ClearJournal();
    EXPECT_TRUE(characteristic.Deinit());
    EXPECT_EQ(simulator::JournalText(), Texts{});
}

TEST_F(GattCharacteristic, PassesValuesOnAsTheyCome)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    const char* given = nullptr;
    int givenLength = 0;
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), [&](const char* value, int length) {
        given = value;
        givenLength = length;
    }));
    char value[] = "Success";
    for (const int length : {7, 3, 0, -1}) {
        characteristic.OnCharateristicValueChaned(Handle(), value, length);
        EXPECT_EQ(given, value) << "no copy";
        EXPECT_EQ(givenLength, length);
        EXPECT_TRUE(HasLog(INFO, "value : Success, len : " + std::to_string(length)));
    }
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, DropsValuesOfOtherHandles)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    char value[] = "x";
    characteristic.OnCharateristicValueChaned(Characteristic(kServiceA, kCharacteristicA2), value, 1);
    characteristic.OnCharateristicValueChaned(nullptr, value, 1);
    EXPECT_EQ(Messages(ERROR), (Texts{"handle is invalid", "handle is invalid"}));
    EXPECT_TRUE(values.empty());
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, SaysThatNobodyWantsItsValues)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), nullptr));
    char value[] = "x";
    characteristic.OnCharateristicValueChaned(Handle(), value, 1);
    EXPECT_EQ(Messages(ERROR), Texts{"m_CharacteristicValueChangedCb is nullptr"});
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, WritesAnyBytes)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    simulator::ClearJournal();
    const std::string bytes("a\0b", 3);
    EXPECT_TRUE(characteristic.write(bytes, KeepWrites()));
    EXPECT_EQ(simulator::JournalText(),
              (Texts{"bt_gatt_set_value(\"a\\x00b\", 3)", "bt_gatt_client_write_value()"}));
    simulator::Settle();
    EXPECT_EQ(simulator::MessagesTo(kPhone), Texts{bytes});
    EXPECT_EQ(writes, std::vector<int>{0});
    EXPECT_TRUE(characteristic.write("", KeepWrites()));
    simulator::Settle();
    EXPECT_EQ(simulator::MessagesTo(kPhone).back(), "");
    EXPECT_EQ(writes, (std::vector<int>{0, 0}));
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, TellsOfTheEndOfItsWrite)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    ASSERT_TRUE(characteristic.write("a", KeepWrites()));
    characteristic.OnWriteCompleted(0, Handle());
    characteristic.OnWriteCompleted(-7, Handle());
    EXPECT_EQ(writes, (std::vector<int>{0, -7})) << "the callback stays";
    EXPECT_TRUE(LogsInOrder({{INFO, "result : 0"}, {INFO, "result : -7"}}));
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, TellsTheLastWriterOnly)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    int first = 0;
    ASSERT_TRUE(characteristic.write("a", [&](int) { ++first; }));
    ASSERT_TRUE(characteristic.write("b", KeepWrites()));
    characteristic.OnWriteCompleted(4, Handle());
    EXPECT_EQ(first, 0);
    EXPECT_EQ(writes, std::vector<int>{4});
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, DropsTheEndOfOtherHandlesWrites)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    ASSERT_TRUE(characteristic.write("a", KeepWrites()));
    characteristic.OnWriteCompleted(0, nullptr);
    characteristic.OnWriteCompleted(0, Characteristic(kServiceA, kCharacteristicA2));
    EXPECT_EQ(Messages(ERROR), (Texts{"handle is invalid", "handle is invalid"}));
    EXPECT_TRUE(writes.empty());
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, SaysThatNobodyWaitsForItsWrite)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    characteristic.OnWriteCompleted(0, Handle());
    EXPECT_EQ(Messages(ERROR), Texts{"m_WrietCompletedCb is nullptr"});
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, KeepsTheWriterBeforeWhenAValueCannotBeSet)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    ASSERT_TRUE(characteristic.write("a", KeepWrites()));
    simulator::FailCall("bt_gatt_set_value", -1);
    simulator::ClearJournal();
    EXPECT_FALSE(characteristic.write("b c", [](int) { FAIL(); }));
    EXPECT_EQ(Messages(ERROR), Texts{"fail to bt_gatt_set_value(b c)"});
    EXPECT_EQ(CountCalls("bt_gatt_client_write_value"), 0);
    characteristic.OnWriteCompleted(0, Handle());
    EXPECT_EQ(writes, std::vector<int>{0});
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, KeepsNoWriterWhenAWriteCannotBegin)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    ASSERT_TRUE(characteristic.write("a", KeepWrites()));
    simulator::FailCall("bt_gatt_client_write_value", -1);
    EXPECT_FALSE(characteristic.write("b", KeepWrites()));
    characteristic.OnWriteCompleted(0, Handle());
    EXPECT_EQ(Messages(ERROR), (Texts{"fail to bt_gatt_client_write_value", "m_WrietCompletedCb is nullptr"}));
    EXPECT_TRUE(writes.empty());
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, CannotBeWrittenBeforeItIsSetUp)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    EXPECT_FALSE(characteristic.write("a", KeepWrites()));
    EXPECT_EQ(Messages(ERROR), Texts{"fail to bt_gatt_set_value(a)"});
}

TEST_F(GattCharacteristic, KnowsTheServiceOfAHandle)
{
    CGattCharacteristic characteristic;
    std::string uuid = "before";
    const bt_gatt_h handle = Characteristic(kServiceB, kCharacteristicB1);
    characteristic.GetSerivceUuid(handle, uuid);
    EXPECT_EQ(uuid, kServiceB);
    EXPECT_EQ(simulator::JournalText(), (Texts{"bt_gatt_characteristic_get_service()",
                                               std::string("bt_gatt_get_uuid(-> \"") + kServiceB + "\")"}));
}

TEST_F(GattCharacteristic, LeavesTheUuidAloneWhenTheServiceIsNotToBeHad)
{
    CGattCharacteristic characteristic;
    std::string uuid = "before";
    const bt_gatt_h handle = Characteristic(kServiceB, kCharacteristicB1);
    simulator::FailCall("bt_gatt_characteristic_get_service", -1);
    characteristic.GetSerivceUuid(handle, uuid);
    simulator::FailCall("bt_gatt_get_uuid", -1);
    characteristic.GetSerivceUuid(handle, uuid);
    simulator::NullText("bt_gatt_get_uuid");
    characteristic.GetSerivceUuid(handle, uuid);
    characteristic.GetSerivceUuid(nullptr, uuid);
    EXPECT_EQ(Messages(ERROR), (Texts{"fail to bt_gatt_characteristic_get_service", "fail to bt_gatt_get_uuid",
                                      "uuid is nullptr", "fail to bt_gatt_characteristic_get_service"}));
    EXPECT_EQ(uuid, "before");
}

TEST_F(GattCharacteristic, CopiesEverything)
{
    CGattCharacteristic original(kCharacteristicA1, keeper);
    ASSERT_TRUE(original.Init(Service(kServiceA), KeepValues()));
    ASSERT_TRUE(original.write("a", KeepWrites()));
    char value[] = "x";

    CGattCharacteristic constructed(original);
    CGattCharacteristic assigned;
    assigned = original;
    const CGattCharacteristic& itself = assigned;
    assigned = itself;
    for (CGattCharacteristic* copy : {&constructed, &assigned}) {
        copy->OnCharateristicValueChaned(Handle(), value, 1);
        copy->OnWriteCompleted(3, Handle());
    }
    EXPECT_EQ(values, (Texts{"x", "x"}));
    EXPECT_EQ(writes, (std::vector<int>{3, 3}));
    EXPECT_TRUE(assigned.write("b", KeepWrites()));
    original.Deinit();

    // The UUID has been copied, too, and who keeps it.
    simulator::ClearJournal();
    ASSERT_TRUE(constructed.Init(Service(kServiceA), KeepValues()));
    EXPECT_EQ(simulator::JournalText()[0],
              std::string("bt_gatt_service_get_characteristic(\"") + kCharacteristicA1 + "\")");
    EXPECT_EQ(constructed.Keep(), keeper);
    EXPECT_EQ(assigned.Keep(), keeper);
    constructed.Deinit();
}

TEST_F(GattCharacteristic, LeavesThePlatformsCallbacksToTheOriginal)
{
    auto original = std::make_unique<CGattCharacteristic>(kCharacteristicA1, keeper);
    ASSERT_TRUE(original->Init(Service(kServiceA), KeepValues()));
    const auto registration = simulator::ValueRegistration(kCharacteristicA1);
    const CGattCharacteristic copy(*original);
    original.reset();
    char value[] = "x";
    registration.callback(Handle(), value, 1, registration.userData);
    EXPECT_TRUE(values.empty()) << "nobody is registered any more";
}

TEST_F(GattCharacteristic, MayGoInsideItsNotification)
{
    auto characteristic = std::make_unique<CGattCharacteristic>(kCharacteristicA1, keeper);
    auto life = std::make_shared<int>();
    const std::weak_ptr<int> callable = life;
    ASSERT_TRUE(characteristic->Init(Service(kServiceA), [&, held = std::move(life)](const char* value, int) {
        characteristic.reset();
        EXPECT_FALSE(callable.expired()) << "what is being called lives";
        values.emplace_back(value);
    }));
    char value[] = "Success";
    const auto registration = simulator::ValueRegistration(kCharacteristicA1);
    registration.callback(Handle(), value, 7, registration.userData);
    EXPECT_EQ(values, Texts{"Success"});
    EXPECT_TRUE(callable.expired());
    registration.callback(Handle(), value, 7, registration.userData);
    EXPECT_EQ(values.size(), 1U);
}

TEST_F(GattCharacteristic, MayGoInsideTheEndOfItsWrite)
{
    auto characteristic = std::make_unique<CGattCharacteristic>(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic->Init(Service(kServiceA), KeepValues()));
    auto life = std::make_shared<int>();
    const std::weak_ptr<int> callable = life;
    ASSERT_TRUE(characteristic->write("a", [&, held = std::move(life)](int result) {
        characteristic.reset();
        EXPECT_FALSE(callable.expired()) << "what is being called lives";
        writes.push_back(result);
    }));
    simulator::Settle();
    EXPECT_EQ(writes, std::vector<int>{0});
    EXPECT_TRUE(callable.expired());
}

TEST_F(GattCharacteristic, KeepsItsOwnerDuringItsNotification)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    const std::weak_ptr<int> owner = keeper;
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), [&](const char* value, int) {
        keeper.reset();
        EXPECT_FALSE(owner.expired());
        values.emplace_back(value);
    }));
    char value[] = "Success";
    const auto registration = simulator::ValueRegistration(kCharacteristicA1);
    registration.callback(Handle(), value, 7, registration.userData);
    EXPECT_EQ(values, Texts{"Success"});
    EXPECT_TRUE(owner.expired());
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, HearsNothingAnyMoreWhenItsOwnerIsOnItsWayOut)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    ASSERT_TRUE(characteristic.write("a", KeepWrites()));
    keeper.reset();
    char value[] = "x";
    const auto registration = simulator::ValueRegistration(kCharacteristicA1);
    registration.callback(Handle(), value, 1, registration.userData);
    simulator::Settle();
    EXPECT_TRUE(values.empty());
    EXPECT_TRUE(writes.empty());
    EXPECT_EQ(Messages(ERROR), Texts{});
    characteristic.Deinit();
}

TEST_F(GattCharacteristic, DropsReportsWithoutUserData)
{
    CGattCharacteristic characteristic(kCharacteristicA1, keeper);
    ASSERT_TRUE(characteristic.Init(Service(kServiceA), KeepValues()));
    ASSERT_TRUE(characteristic.write("a", KeepWrites()));
    char value[] = "x";
    simulator::ValueRegistration(kCharacteristicA1).callback(Handle(), value, 1, nullptr);
    EXPECT_EQ(Messages(ERROR).size(), 1U);
    simulator::ClearLog();
    simulator::WriteRegistration(kCharacteristicA1).callback(0, Handle(), nullptr);
    EXPECT_EQ(Messages(ERROR), Texts{"userData is nullptr"});
    EXPECT_TRUE(values.empty());
    EXPECT_TRUE(writes.empty());
    characteristic.Deinit();
}

}  // namespace
}  // namespace lyn::test
