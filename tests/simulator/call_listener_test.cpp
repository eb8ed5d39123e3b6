// SPDX-License-Identifier: Apache-2.0
//
// The listener that is told of every platform call.
#include <unistd.h>

#include <condition_variable>
#include <fstream>
#include <mutex>
#include <set>
#include <thread>

#include "SimulatorTest.h"
#include "lyn_platform/files.h"
#include "lyn_platform/log.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/system_info.h"
#include "lyn_platform/wifi.h"

namespace lyn::simulator::test {
namespace {

using Phase = CallMoment::Phase;

class ListenerOfCalls : public SimulatorTest {
protected:
    ListenerOfCalls()
    {
        SetCallListener([this](const CallMoment& moment) { Hear(moment); });
    }
    ~ListenerOfCalls() override { SetCallListener(nullptr); }

    std::vector<std::string> heard;
    std::set<std::string> functions;

private:
    void Hear(const CallMoment& moment)
    {
        heard.push_back((moment.phase == Phase::before ? "before " : "after ") + moment.function);
        functions.insert(moment.function);
    }
};

/// Each function of the platform once. Refused or not does not matter.
void CallEveryFunction()
{
    bt_product_init();
    bt_product_deinit();
    bt_adapter_get_state(nullptr);
    bt_adapter_set_state_changed_cb(nullptr, nullptr);
    bt_adapter_unset_state_changed_cb();
    bt_adapter_get_address(nullptr);
    bt_adapter_le_enable_le_scan_performance_boost(false);
    bt_adapter_le_set_scan_mode(0);
    bt_adapter_le_set_customized_scan_mode_with_scan_type(0, 1, 1);
    bt_adapter_le_start_scan(nullptr, nullptr);
    bt_adapter_le_stop_scan();
    bt_adapter_le_get_scan_result_manufacturer_data(nullptr, BT_ADAPTER_LE_PACKET_ADVERTISING, nullptr, nullptr,
                                                    nullptr);
    bt_gatt_set_connection_state_changed_cb(nullptr, nullptr);
    bt_gatt_unset_connection_state_changed_cb();
    bt_gatt_connect(nullptr, false);
    bt_gatt_disconnect(nullptr);
    bt_gatt_client_create(nullptr, nullptr);
    bt_gatt_client_destroy(nullptr);
    bt_gatt_client_get_service(nullptr, nullptr, nullptr);
    bt_gatt_service_get_characteristic(nullptr, nullptr, nullptr);
    bt_gatt_client_set_characteristic_value_changed_cb(nullptr, nullptr, nullptr);
    bt_gatt_client_unset_characteristic_value_changed_cb(nullptr);
    bt_gatt_set_value(nullptr, nullptr, 0);
    bt_gatt_client_write_value(nullptr, nullptr, nullptr);
    bt_gatt_client_set_att_mtu_changed_cb(nullptr, nullptr, nullptr);
    bt_gatt_client_unset_att_mtu_changed_cb(nullptr);
    bt_gatt_client_request_att_mtu_change(nullptr, 0);
    bt_gatt_characteristic_get_service(nullptr, nullptr);
    bt_gatt_get_uuid(nullptr, nullptr);
    device_power_get_state();
    device_power_subscribe_poweroff_event(nullptr, nullptr);
    device_power_unsubscribe_poweroff_event();
    device_power_subscribe_ambient_poweroff(nullptr, nullptr);
    device_power_unsubscribe_ambient_poweroff();
    vconf_set_int(nullptr, 0);
    vconf_get_int(nullptr, nullptr);
    vconf_get_str(nullptr);
    system_info_get_custom_int(nullptr, nullptr);
    wifi_initialize();
    wifi_deinitialize();
    wifi_get_connected_ap(nullptr);
    wifi_ap_get_bssid(nullptr, nullptr);
    wifi_ap_get_frequency(nullptr, nullptr);
    wifi_direct_initialize();
    wifi_direct_deinitialize();
    wifi_direct_get_mac_address(nullptr);
    platform_file_path(nullptr, nullptr, 0);
    platform_log_print(0, 3, "TAG", "%d", 1);
    ::close(platform_kmsg_open());
}

/// The functions of the platform, as they are recorded for other programs.
std::set<std::string> RecordedFunctions()
{
    std::ifstream file(PLATFORM_FUNCTIONS);
    std::set<std::string> functions;
    for (std::string function; file >> function;) {
        functions.insert(function);
    }
    return functions;
}

TEST_F(ListenerOfCalls, IsToldOfBothEndsOfEachCall)
{
    vconf_set_int("memory/key", 5);
    platform_log_print(0, 4, "TAG", "text");
    EXPECT_EQ(heard, (std::vector<std::string>{"before vconf_set_int", "after vconf_set_int",
                                               "before platform_log_print", "after platform_log_print"}));
}

TEST_F(ListenerOfCalls, IsToldOfEveryFunctionOfThePlatform)
{
    CallEveryFunction();
    EXPECT_EQ(functions, RecordedFunctions());
    EXPECT_EQ(heard.size(), 2 * functions.size());
}

TEST_F(ListenerOfCalls, IsToldBeforeTheWorkAndAfterIt)
{
    std::vector<std::optional<int>> settings;
    SetCallListener([&](const CallMoment&) { settings.push_back(IntSetting("memory/key")); });
    vconf_set_int("memory/key", 5);
    EXPECT_EQ(settings, (std::vector<std::optional<int>>{std::nullopt, 5}));
}

TEST_F(ListenerOfCalls, IsToldOfACallThatFails)
{
    FailCall("vconf_set_int", -77);
    EXPECT_EQ(vconf_set_int("memory/key", 5), -77);
    EXPECT_EQ(heard, (std::vector<std::string>{"before vconf_set_int", "after vconf_set_int"}));
}

TEST_F(ListenerOfCalls, GetsTheTextOfALogLineAndNoneOfOtherCalls)
{
    std::vector<std::string> texts;
    SetCallListener([&](const CallMoment& moment) { texts.push_back(moment.text); });
    SetLogCapture(7);
    platform_log_print(0, 3, "TAG", "%s %d", "line", 1);
    vconf_set_int("memory/key", 5);
    EXPECT_EQ(texts, (std::vector<std::string>{"line 1", "line 1", "", ""}));
}

TEST_F(ListenerOfCalls, IsToldOnTheCallingThread)
{
    std::vector<std::thread::id> threads;
    SetCallListener([&](const CallMoment&) { threads.push_back(std::this_thread::get_id()); });
    std::thread other([] { vconf_set_int("memory/key", 5); });
    const std::thread::id expected = other.get_id();
    other.join();
    EXPECT_EQ(threads, std::vector(2, expected));
}

TEST_F(ListenerOfCalls, StaysThroughAResetAndIsForgottenForNobody)
{
    Reset();
    vconf_set_int("memory/key", 5);
    EXPECT_EQ(heard.size(), 2U);
    SetCallListener(nullptr);
    vconf_set_int("memory/key", 6);
    EXPECT_EQ(heard.size(), 2U);
}

/// Blocks the one thread that comes first, until it is let go.
class Barrier {
public:
    void Hold()
    {
        std::unique_lock lock(m_mutex);
        if (m_isTaken) {
            return;
        }
        m_isTaken = true;
        m_changed.notify_all();
        m_changed.wait(lock, [this] { return m_isOpen; });
    }
    void AwaitHeld()
    {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [this] { return m_isTaken; });
    }
    void Open()
    {
        const std::lock_guard lock(m_mutex);
        m_isOpen = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isTaken = false;
    bool m_isOpen = false;
};

class AHeldThread : public ListenerOfCalls, public ::testing::WithParamInterface<Phase> {};

TEST_P(AHeldThread, KeepsNobodyFromThePlatformAndTheControlInterface)
{
    Barrier barrier;
    SetCallListener([&](const CallMoment& moment) {
        if (moment.phase == GetParam()) {
            barrier.Hold();
        }
    });
    std::thread held([] {
        CallEveryFunction();
        vconf_set_int("memory/key", 1);
    });
    barrier.AwaitHeld();
    CallEveryFunction();
    EXPECT_FALSE(Journal().empty());
    EXPECT_EQ(Log().size(), 1U);
    Settle();
    EXPECT_EQ(IntSetting("memory/key"), std::nullopt);
    barrier.Open();
    held.join();
    EXPECT_EQ(IntSetting("memory/key"), 1);
}

std::string PhaseName(const ::testing::TestParamInfo<Phase>& info)
{
    return info.param == Phase::before ? "Before" : "After";
}

INSTANTIATE_TEST_SUITE_P(Each, AHeldThread, ::testing::Values(Phase::before, Phase::after), PhaseName);

}  // namespace
}  // namespace lyn::simulator::test
