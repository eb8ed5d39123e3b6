// SPDX-License-Identifier: Apache-2.0
//
// Notifications and writes.
#include <thread>

#include "Codes.h"
#include "GattRoom.h"

namespace lyn::linux_tests {
namespace {

using namespace lyn::linux_platform;

constexpr const char* kCharacteristic = "org.bluez.GattCharacteristic1";

class LinuxExchange : public GattRoom {
protected:
    /// Asks for notifications, and waits until they come.
    void ListenAndWait()
    {
        Listen();
        ASSERT_TRUE(RunUntil([&] { return bluez->Count("GattCharacteristic1.StartNotify") == 1; }));
        RunQuietly(20);
    }
    void Prepare()
    {
        Connect();
        MakeClient();
        bluez->Forget();
    }
    bool WaitForWrites(std::size_t count)
    {
        return RunUntil([&] { return written.size() >= count; });
    }
    bool WaitForValues(std::size_t count)
    {
        return RunUntil([&] { return values.size() >= count; });
    }
};

TEST_F(LinuxExchange, AMessageIsWrittenAndAnswered)
{
    Prepare();
    Listen();
    ASSERT_EQ(Write("message"), 0);
    EXPECT_TRUE(written.empty()) << "not from inside the call";
    ASSERT_TRUE(WaitForWrites(1) && WaitForValues(1));
    EXPECT_EQ(bluez->Written(), std::vector<std::string>{"message"});
    EXPECT_EQ(written, std::vector<int>{0});
    EXPECT_EQ(values, std::vector<std::string>{"Success"});
}

TEST_F(LinuxExchange, NotificationsAreOnBeforeAnythingIsWritten)
{
    Prepare();
    bluez->Treat("GattCharacteristic1.StartNotify", 1, Treatment::Late(60));
    Listen();
    ASSERT_EQ(Write("message"), 0);
    RunQuietly(20);
    EXPECT_EQ(bluez->Count("GattCharacteristic1.WriteValue"), 0);
    ASSERT_TRUE(WaitForWrites(1));
    EXPECT_EQ(bluez->Calls(),
              (std::vector<std::string>{"GattCharacteristic1.StartNotify", "GattCharacteristic1.WriteValue"}));
}

TEST_F(LinuxExchange, AnEarlyNotificationIsNotLost)
{
    bluez->ChangePhone({.greeting = "hello"});
    Prepare();
    bluez->Treat("GattCharacteristic1.StartNotify", 1, Treatment::Late(60));
    Listen();
    ASSERT_TRUE(WaitForValues(1));
    EXPECT_EQ(values, std::vector<std::string>{"hello"});
}

TEST_F(LinuxExchange, AWriteIsRefusedWhenTheNotificationsWereRefused)
{
    Prepare();
    bluez->Treat("GattCharacteristic1.StartNotify", 1, Treatment::Fails("org.bluez.Error.NotSupported"));
    Listen();
    ASSERT_EQ(Write("waits"), 0);
    ASSERT_TRUE(WaitForWrites(1));
    ASSERT_EQ(Write("comes later"), 0);
    ASSERT_TRUE(WaitForWrites(2));
    EXPECT_EQ(written, (std::vector<int>{kNotSupported, kNotSupported}));
    EXPECT_EQ(bluez->Count("GattCharacteristic1.WriteValue"), 0);
    Listen();
    ASSERT_EQ(Write("asked for again"), 0);
    ASSERT_TRUE(WaitForWrites(3));
    EXPECT_EQ(written[2], 0);
}

TEST_F(LinuxExchange, AWriteIsReportedInBoundedTimeWhenTheNotificationsAreNeverAnswered)
{
    Prepare();
    UseShortLimits();
    bluez->Treat("GattCharacteristic1.StartNotify", 1, Treatment::Ignored());
    Listen();
    ASSERT_EQ(Write("message"), 0);
    ASSERT_TRUE(WaitForWrites(1));
    EXPECT_EQ(written, std::vector<int>{kNoAnswer});
}

TEST_F(LinuxExchange, AWriteThatFailsHasTheErrorsCode)
{
    Prepare();
    bluez->Treat("GattCharacteristic1.WriteValue", 1, Treatment::Fails("org.bluez.Error.NotPermitted"));
    ASSERT_EQ(Write("message"), 0);
    ASSERT_TRUE(WaitForWrites(1));
    EXPECT_EQ(written, std::vector<int>{kRefused});
}

TEST_F(LinuxExchange, AWriteThatIsNeverAnsweredIsReportedInBoundedTimeAndOnce)
{
    Prepare();
    UseShortLimits();
    bluez->Treat("GattCharacteristic1.WriteValue", 1, Treatment::Late(260));
    ASSERT_EQ(Write("message"), 0);
    ASSERT_TRUE(WaitForWrites(1));
    EXPECT_EQ(written, std::vector<int>{kNoAnswer});
    RunQuietly(120);
    EXPECT_EQ(written.size(), 1U);
}

TEST_F(LinuxExchange, AWriteThatIsAnsweredTwiceIsReportedOnce)
{
    Prepare();
    bluez->Treat("GattCharacteristic1.WriteValue", 1, Treatment::Twice());
    ASSERT_EQ(Write("message"), 0);
    ASSERT_TRUE(WaitForWrites(1));
    RunQuietly(50);
    EXPECT_EQ(written.size(), 1U);
}

TEST_F(LinuxExchange, EveryWriteIsReportedAlsoWhenTheNextBeginsBefore)
{
    Prepare();
    bluez->Treat("GattCharacteristic1.WriteValue", 1, Treatment::Late(60));
    ASSERT_EQ(Write("one"), 0);
    ASSERT_EQ(Write("two"), 0);
    ASSERT_TRUE(WaitForWrites(2));
    EXPECT_EQ(bluez->Written(), (std::vector<std::string>{"one", "two"}));
}

TEST_F(LinuxExchange, ValuesOfNoneTo512BytesAreWrittenWholeAndMoreIsRefused)
{
    Prepare();
    const std::string most(512, '\xff');
    const std::string bytes("with\0zero", 9);
    ASSERT_EQ(Write(most), 0);
    ASSERT_EQ(Write(bytes), 0);
    ASSERT_EQ(Write(""), 0);
    ASSERT_TRUE(WaitForWrites(3));
    EXPECT_EQ(bluez->Written(), (std::vector<std::string>{most, bytes, ""}));
    EXPECT_EQ(Write(std::string(513, 'x')), kInvalidArgument);
    EXPECT_EQ(bt_gatt_set_value(characteristic, "x", -1), kInvalidArgument);
    EXPECT_EQ(bt_gatt_set_value(characteristic, nullptr, 0), kInvalidArgument);
}

TEST_F(LinuxExchange, ValuesComeAsTheyAreWithANulBehindThem)
{
    Prepare();
    ListenAndWait();
    const std::vector<std::string> sent = {std::string("a\0b", 3), "", std::string(600, 'x')};
    for (const std::string& value : sent) {
        bluez->Notify(kPhone, value);
    }
    ASSERT_TRUE(WaitForValues(3));
    EXPECT_EQ(values, sent);
}

TEST_F(LinuxExchange, WhatIsNoValueIsNotTold)
{
    Prepare();
    ListenAndWait();
    const std::string path = bluez->CharacteristicPath(kPhone);
    const std::string properties = "org.freedesktop.DBus.Properties";
    bluez->Set(path, kCharacteristic, "Value", g_variant_new_string("a text"));
    bluez->Set(path, kCharacteristic, "Notifying", g_variant_new_boolean(TRUE));
    bluez->Emit(path, properties, "PropertiesChanged", g_variant_new("(s)", kCharacteristic));
    bluez->Emit(path, properties, "PropertiesChanged", g_variant_new("(sas)", kCharacteristic, nullptr));
    RunQuietly(50);
    EXPECT_TRUE(values.empty());
}

TEST_F(LinuxExchange, ValuesDoNotComeAfterTheirUnset)
{
    Prepare();
    ListenAndWait();
    ASSERT_EQ(Write("message"), 0);
    ASSERT_EQ(bt_gatt_client_unset_characteristic_value_changed_cb(characteristic), 0);
    ASSERT_TRUE(WaitForWrites(1));
    RunQuietly(50);
    EXPECT_TRUE(values.empty());
    EXPECT_EQ(bluez->Count("GattCharacteristic1.StopNotify"), 1);
}

TEST_F(LinuxExchange, ValuesComeToTheCallbackThatWasSetLast)
{
    Prepare();
    struct Other {
        static void OnValue(bt_gatt_h, char*, int, void* data) { ++*static_cast<int*>(data); }
    };
    int old = 0;
    ASSERT_EQ(bt_gatt_client_set_characteristic_value_changed_cb(characteristic, &Other::OnValue, &old), 0);
    ASSERT_EQ(bt_gatt_client_unset_characteristic_value_changed_cb(characteristic), 0);
    Listen();
    ASSERT_EQ(Write("message"), 0);
    ASSERT_TRUE(WaitForValues(1));
    EXPECT_EQ(old, 0);
    EXPECT_EQ(bluez->Count("GattCharacteristic1.StartNotify"), 1);
}

TEST_F(LinuxExchange, NothingComesAfterTheClientsDestructionAndStopNotifyIsNotWaitedFor)
{
    Prepare();
    bluez->Treat("GattCharacteristic1.StopNotify", 0, Treatment::Ignored());
    Listen();
    ASSERT_EQ(Write("message"), 0);
    ASSERT_TRUE(WaitForValues(1));
    ASSERT_EQ(Write("message"), 0);
    const auto writtenBefore = written.size();
    ASSERT_EQ(bt_gatt_client_destroy(client), 0);
    client = nullptr;
    ASSERT_EQ(bt_gatt_disconnect(kPhone), 0);
    ASSERT_TRUE(WaitForReports(2));
    RunQuietly(50);
    EXPECT_EQ(values.size(), 1U);
    EXPECT_EQ(written.size(), writtenBefore);
}

TEST_F(LinuxExchange, AClientMayBeDestroyedInsideItsValueCallback)
{
    Prepare();
    Listen();
    onValue = [&] {
        EXPECT_EQ(bt_gatt_client_destroy(client), 0);
        EXPECT_EQ(bt_gatt_disconnect(kPhone), 0);
        client = nullptr;
    };
    bluez->SendSignalsTwice(true);
    ASSERT_EQ(Write("message"), 0);
    ASSERT_TRUE(WaitForReports(2));
    RunQuietly(50);
    EXPECT_EQ(values, std::vector<std::string>{"Success"});
}

TEST_F(LinuxExchange, EveryClientHearsOfItsOwnCharacteristic)
{
    bluez->AddPhone({.address = "A0:00:00:00:00:02"});
    Prepare();
    Listen();
    ASSERT_EQ(bt_gatt_connect("A0:00:00:00:00:02", false), 0);
    ASSERT_TRUE(WaitForReports(2));
    bluez->Notify("A0:00:00:00:00:02", "of another phone");
    RunQuietly(50);
    EXPECT_TRUE(values.empty());
}

TEST_F(LinuxExchange, CallsFromAnotherThreadEndOnTheMainContext)
{
    Prepare();
    const auto mainThread = std::this_thread::get_id();
    onValue = [&] { EXPECT_EQ(std::this_thread::get_id(), mainThread); };
    std::thread([&] {
        Listen();
        EXPECT_EQ(Write("message"), 0);
    }).join();
    ASSERT_TRUE(WaitForValues(1) && WaitForWrites(1));
}

}  // namespace
}  // namespace lyn::linux_tests
