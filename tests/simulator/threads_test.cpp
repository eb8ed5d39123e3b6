// SPDX-License-Identifier: Apache-2.0
//
// The platform is called from any thread while the main loop delivers. Run under the thread sanitizer.
#include <atomic>
#include <cstdlib>
#include <thread>

#include "SimulatorTest.h"
#include "lyn_platform/files.h"
#include "lyn_platform/log.h"
#include "lyn_platform/settings.h"

namespace lyn::simulator::test {
namespace {

class Threads : public SimulatorTest {
protected:
    /// Runs the main loop until all of them have ended.
    static void RunBeside(std::vector<std::function<void()>> jobs)
    {
        std::atomic<std::size_t> ended = 0;
        std::vector<std::thread> threads;
        for (auto& job : jobs) {
            threads.emplace_back([&ended, job] {
                job();
                ++ended;
            });
        }
        EXPECT_TRUE(RunUntil([&] { return ended == jobs.size(); }, 60'000));
        for (std::thread& thread : threads) {
            thread.join();
        }
        Settle();
    }
};

TEST_F(Threads, MayStartAndStopTheScan)
{
    Phone phone = AnsweringPhone({});
    phone.intervalMs = 0;
    AddPhone(phone);
    static std::atomic<int> heard;
    heard = 0;
    const auto count = [](int, bt_adapter_le_device_scan_result_info_s*, void*) { ++heard; };
    RunBeside({[&] {
        for (int i = 0; i < 200; ++i) {
            EXPECT_EQ(bt_adapter_le_start_scan(count, nullptr), 0);
            std::this_thread::yield();
            EXPECT_EQ(bt_adapter_le_stop_scan(), 0);
        }
        EXPECT_EQ(bt_adapter_le_start_scan(count, nullptr), 0);
    }});
    EXPECT_TRUE(RunUntil([] { return heard > 0; }));
    bt_adapter_le_stop_scan();
    const int before = heard;
    Settle();
    EXPECT_EQ(heard, before);
}

TEST_F(Threads, MayRegisterAndUnregisterWhileEventsAreDelivered)
{
    const auto ignore = [](int, bt_adapter_state_e, void*) {};
    const auto ignorePower = [](const device_power_off_info_s*, void*) { return 0; };
    RunBeside({
        [&] {
            for (int i = 0; i < 300; ++i) {
                bt_adapter_set_state_changed_cb(ignore, nullptr);
                device_power_subscribe_poweroff_event(ignorePower, nullptr);
                bt_adapter_unset_state_changed_cb();
                device_power_unsubscribe_poweroff_event();
            }
        },
        [&] {
            for (int i = 0; i < 300; ++i) {
                SetAdapterState(i % 2 == 0 ? BT_ADAPTER_DISABLED : BT_ADAPTER_ENABLED);
                PowerOff(0);
            }
        },
    });
    EXPECT_EQ(Alive().registrations, 0);
}

TEST_F(Threads, MayConnectExchangeAndDisconnect)
{
    constexpr int kRounds = 50;
    AddPhone(AnsweringPhone({Text("Success")}));
    std::atomic<int> reports = 0;
    const auto count = [](int, bool, const char*, void* data) { ++*static_cast<std::atomic<int>*>(data); };
    ASSERT_EQ(bt_gatt_set_connection_state_changed_cb(count, &reports), 0);
    RunBeside({[&] {
        for (int i = 0; i < kRounds; ++i) {
            const int before = reports;
            ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
            while (reports == before) {
                std::this_thread::yield();
            }
            bt_gatt_client_h client = nullptr;
            bt_gatt_h service = nullptr;
            bt_gatt_h characteristic = nullptr;
            ASSERT_EQ(bt_gatt_client_create(kPhone, &client), 0);
            ASSERT_EQ(bt_gatt_client_get_service(client, kService, &service), 0);
            ASSERT_EQ(bt_gatt_service_get_characteristic(service, kCharacteristic, &characteristic), 0);
            ASSERT_EQ(bt_gatt_client_set_characteristic_value_changed_cb(
                          characteristic, [](bt_gatt_h, char*, int, void*) {}, nullptr),
                      0);
            ASSERT_EQ(bt_gatt_set_value(characteristic, "x", 1), 0);
            ASSERT_EQ(bt_gatt_client_write_value(characteristic, nullptr, nullptr), 0);
            ASSERT_EQ(bt_gatt_client_destroy(client), 0);
            ASSERT_EQ(bt_gatt_disconnect(kPhone), 0);
            while (reports == before + 1) {
                std::this_thread::yield();
            }
        }
    }});
    EXPECT_EQ(reports, 2 * kRounds);
    EXPECT_EQ(Alive().clients, 0);
    EXPECT_EQ(Alive().links, 0);
}

TEST_F(Threads, MayUseSettingsLogsFilesAndTheRoom)
{
    const auto job = [] {
        for (int i = 0; i < 200; ++i) {
            int value = 0;
            char place[512];
            vconf_set_int("memory/key", i);
            vconf_get_int("memory/key", &value);
            std::free(vconf_get_str("db/menu/network/devicename/tv_name"));
            platform_log_print(0, 4, "TAG", "line %d", i);
            platform_file_path("/a", place, sizeof place);
            AddPhone(AnsweringPhone({}));
            Phones();
            RemovePhone(kPhone);
            Log();
            KernelLog();
        }
    };
    RunBeside({job, job});
    EXPECT_EQ(Log().size(), 400U);
}

}  // namespace
}  // namespace lyn::simulator::test
