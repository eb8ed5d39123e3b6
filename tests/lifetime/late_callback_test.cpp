// SPDX-License-Identifier: Apache-2.0
//
// Platform callbacks that come although their registration has ended, by a platform that is less careful than
// it promises: they find neither the object that is gone nor the one that came after it.
#include <glib.h>

#include "lifetime/Lives.h"

namespace lyn::test {
namespace {

constexpr int kTimedOut = static_cast<int>(0xC0000001);
constexpr int kHciDisconnection = static_cast<int>(0xFE400104);

/// Everything that a service of one phone has registered, kept beyond its end.
struct Kept {
    explicit Kept(const std::string& uuid)
        : scan(simulator::ScanRegistration()),
          adapter(simulator::AdapterRegistration()),
          powerOff(simulator::PowerOffRegistration()),
          ambient(simulator::AmbientPowerOffRegistration()),
          connection(simulator::ConnectionRegistration()),
          mtu(simulator::MtuRegistration()),
          value(simulator::ValueRegistration(uuid)),
          write(simulator::WriteRegistration(uuid)),
          client(simulator::ClientHandle()),
          characteristic(simulator::CharacteristicHandle(uuid))
    {
    }

    /// Calls all that there was.
    void CallAgain() const
    {
        CallScan();
        CallDevice();
        CallLink();
        CallValues();
    }

    void CallScan() const
    {
        if (scan.callback == nullptr) {
            return;
        }
        Phone phone = PhoneFor("mirroring");
        std::string address = kPhone;
        bt_adapter_le_device_scan_result_info_s info{};
        info.remote_address = address.data();
        info.adv_data = reinterpret_cast<char*>(phone.advertising.data());
        info.adv_data_len = static_cast<int>(phone.advertising.size());
        info.scan_data = reinterpret_cast<char*>(phone.scanResponse->data());
        info.scan_data_len = static_cast<int>(phone.scanResponse->size());
        scan.callback(0, &info, scan.userData);
    }

    void CallDevice() const
    {
        const device_power_off_info_s info{0x40000000};
        if (adapter.callback != nullptr) {
            adapter.callback(0, BT_ADAPTER_DISABLED, adapter.userData);
            EXPECT_EQ(powerOff.callback(&info, powerOff.userData), 0);
            EXPECT_EQ(ambient.callback(&info, ambient.userData), 0);
        }
    }

    void CallLink() const
    {
        if (connection.callback != nullptr) {
            connection.callback(0, true, kPhone, connection.userData);
            connection.callback(kTimedOut, true, kPhone, connection.userData);
            connection.callback(kHciDisconnection, false, kPhone, connection.userData);
            connection.callback(0, false, kPhone, connection.userData);
        }
        if (mtu.callback != nullptr) {
            const bt_gatt_client_att_mtu_info_s info{kPhone, 256, 0};
            mtu.callback(client, &info, mtu.userData);
        }
    }

    void CallValues() const
    {
        if (value.callback != nullptr) {
            char text[] = "Connected";
            value.callback(characteristic, text, sizeof text - 1, value.userData);
        }
        if (write.callback != nullptr) {
            write.callback(5, characteristic, write.userData);
        }
    }

    using Phone = simulator::Phone;
    simulator::Registration<bt_adapter_le_scan_result_cb> scan;
    simulator::Registration<bt_adapter_state_changed_cb> adapter;
    simulator::Registration<device_power_off_cb> powerOff;
    simulator::Registration<device_power_off_cb> ambient;
    simulator::Registration<bt_gatt_connection_state_changed_cb> connection;
    simulator::Registration<bt_gatt_client_att_mtu_changed_cb> mtu;
    simulator::Registration<bt_gatt_client_characteristic_value_changed_cb> value;
    simulator::Registration<bt_gatt_client_request_completed_cb> write;
    bt_gatt_client_h client;
    bt_gatt_h characteristic;
};

class ALateCallback : public LivesOfEach {
protected:
    static std::string Uuid()
    {
        simulator::Phone phone = PhoneFor(GetParam());
        return CharacteristicOf(phone).uuid;
    }

    /// A request that has written its message and waits long for the answer.
    App& RequestSlowly()
    {
        simulator::Phone phone = PhoneFor(GetParam());
        CharacteristicOf(phone).answers[0].delayMs = 200;
        simulator::AddPhone(phone);
        simulator::ClearLog();
        App& app = Begin(GetParam());
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        EXPECT_TRUE(simulator::RunUntil([] { return HasLog(INFO, "result : 0"); }));
        return app;
    }

    static void ExpectNothingDone(const Kept& kept)
    {
        simulator::ClearJournal();
        simulator::ClearLog();
        kept.CallAgain();
        EXPECT_THAT(simulator::JournalText(), ::testing::IsEmpty());
        ExpectNoLogLine();
    }

    static void ExpectNoLogLine()
    {
        for (const Line& line : LogLines()) {
            ADD_FAILURE() << line.message;
        }
    }
};

TEST_P(ALateCallback, OfARequestFindsNothing)
{
    App& app = RequestSlowly();
    const Kept kept(Uuid());
    ASSERT_NE(kept.connection.callback, nullptr);
    ASSERT_NE(kept.value.callback, nullptr);
    ASSERT_NE(kept.write.callback, nullptr);
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    ExpectNothingDone(kept);
    simulator::Settle();
    EXPECT_THAT(app.results, ::testing::IsEmpty());
}

TEST_P(ALateCallback, OfAnMtuRequestFindsNothing)
{
    simulator::Phone phone = PhoneFor(GetParam());
    phone.mtuDelayMs = 200;
    simulator::AddPhone(phone);
    App& app = Begin(GetParam());
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([] { return simulator::MtuRegistration().callback != nullptr; }));
    const Kept kept(Uuid());
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    ExpectNothingDone(kept);
    simulator::Settle();
    EXPECT_THAT(app.results, ::testing::IsEmpty());
}

TEST_P(ALateCallback, OfAScanFindsNothing)
{
    App& app = Begin(GetParam());
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    const Kept kept(Uuid());
    ASSERT_NE(kept.scan.callback, nullptr);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    ExpectNothingDone(kept);
    simulator::Settle();
    EXPECT_THAT(app.phones, ::testing::IsEmpty());
}

TEST_P(ALateCallback, OfAScanThatWasNotStoppedFindsNothing)
{
    App& app = Begin(GetParam());
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    simulator::ClearJournal();
    simulator::ClearLog();
    for (int turn = 0; turn < kRounds; ++turn) {
        g_main_context_iteration(nullptr, TRUE);
    }
    EXPECT_TRUE(simulator::Alive().scanning);
    EXPECT_THAT(app.phones, ::testing::IsEmpty());
    EXPECT_THAT(simulator::JournalText(), ::testing::IsEmpty());
    ExpectNoLogLine();
}

TEST_P(ALateCallback, DoesNotTouchTheNextRequest)
{
    App& first = RequestSlowly();
    const Kept kept(Uuid());
    EXPECT_EQ(first.Destroy(), LYN_ERROR_NONE);
    App& next = RequestSlowly();
    ExpectNothingDone(kept);
    EXPECT_EQ(next.states.back(), LYN_STATE_REQUESTING);
    EXPECT_TRUE(next.WaitForResult());
    ExpectNothingLeft();
    EXPECT_EQ(next.results, std::vector({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
}

TEST_P(ALateCallback, OfTheRequestBeforeDoesNotTouchTheNextOneOfTheSameService)
{
    App& app = RequestSlowly();
    const Kept kept(Uuid());
    ASSERT_TRUE(app.WaitForResult());
    simulator::ClearLog();
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([] { return HasLog(INFO, "result : 0"); }));
    simulator::ClearJournal();
    kept.CallLink();
    kept.CallValues();
    EXPECT_THAT(simulator::JournalText(), ::testing::IsEmpty());
    ASSERT_TRUE(app.WaitForResult());
    ExpectNothingLeft();
    EXPECT_EQ(app.results, std::vector(2, LYN_REQUEST_INITIATING_RESULT_SUCCESS));
}

INSTANTIATE_TEST_SUITE_P(Each, ALateCallback, ::testing::ValuesIn(RadioServices()), ServiceName);

using ALateReportOfTheDevice = Lives;

TEST_F(ALateReportOfTheDevice, FindsNothing)
{
    App& app = Begin("nodlink");
    const Kept kept("");
    ASSERT_NE(kept.adapter.callback, nullptr);
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    simulator::ClearJournal();
    simulator::ClearLog();
    kept.CallDevice();
    EXPECT_THAT(simulator::JournalText(), ::testing::IsEmpty());
    EXPECT_EQ(LogLines().size(), 0U);
    EXPECT_THAT(app.states, ::testing::IsEmpty());
}

TEST_F(ALateReportOfTheDevice, DoesNotTouchTheNextService)
{
    App& first = Begin("nodlink");
    const Kept kept("");
    EXPECT_EQ(first.Destroy(), LYN_ERROR_NONE);
    App& next = Begin("nodlink");
    kept.CallDevice();
    EXPECT_THAT(next.states, ::testing::IsEmpty());
    EXPECT_EQ(next.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(next.StopScan(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

TEST_F(ALateReportOfTheDevice, ThatIsOnItsWayWhenTheServiceIsDestroyedIsNotDelivered)
{
    for (int round = 0; round < kRounds; ++round) {
        App& app = Begin("nodlink");
        simulator::AmbientPowerOff();
        simulator::PowerOff(0x40000000);
        simulator::SetAdapterState(BT_ADAPTER_DISABLED);
        simulator::SetAdapterState(BT_ADAPTER_ENABLED);
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
        simulator::Settle();
        ASSERT_TRUE(app.states.empty());
    }
    ExpectNothingLeft();
}

}  // namespace
}  // namespace lyn::test
