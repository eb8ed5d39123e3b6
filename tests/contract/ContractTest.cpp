// SPDX-License-Identifier: Apache-2.0
#include "ContractTest.h"

#include <atomic>
#include <cstdlib>

namespace lyn::contract {

namespace {

std::atomic<int> g_callbacks = 0;
thread_local bool t_inCall = false;

/// A positive number of the environment, or what it is by default.
unsigned Number(const char* name, unsigned otherwise)
{
    const auto text = Environment(name);
    const int number = text ? std::atoi(text->c_str()) : 0;
    return number > 0 ? static_cast<unsigned>(number) : otherwise;
}

}  // namespace

std::optional<std::string> Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? std::optional<std::string>(value) : std::nullopt;
}

bool RunUntil(const std::function<bool()>& done)
{
    const auto wake = [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; };
    const guint alarm = g_timeout_add(20, wake, nullptr);
    const gint64 limit = g_get_monotonic_time() + gint64{Number("LYN_CONTRACT_LIMIT_SECONDS", 60)} * 1000000;
    bool reached = done();
    while (!reached && g_get_monotonic_time() < limit) {
        g_main_context_iteration(nullptr, TRUE);
        reached = done();
    }
    g_source_remove(alarm);
    return reached;
}

void RunQuietly()
{
    bool over = false;
    const auto end = [](gpointer data) -> gboolean {
        *static_cast<bool*>(data) = true;
        return G_SOURCE_REMOVE;
    };
    g_timeout_add(Number("LYN_CONTRACT_QUIET_MS", 1000), end, &over);
    while (!over) {
        g_main_context_iteration(nullptr, TRUE);
    }
}

int Call(const std::function<int()>& call)
{
    t_inCall = true;
    const int result = call();
    t_inCall = false;
    return result;
}

InCallback::InCallback()
{
    EXPECT_FALSE(t_inCall) << "a callback ran from inside a call";
    EXPECT_TRUE(g_main_context_is_owner(nullptr)) << "a callback ran outside of the main context";
    EXPECT_EQ(++g_callbacks, 1) << "two callbacks ran at once";
}

InCallback::~InCallback()
{
    --g_callbacks;
}

void BluetoothTest::SetUp()
{
    ASSERT_EQ(bt_product_init(), 0);
    bt_adapter_state_e state = BT_ADAPTER_DISABLED;
    ASSERT_EQ(bt_adapter_get_state(&state), 0);
    if (state != BT_ADAPTER_ENABLED) {
        GTEST_SKIP() << "the Bluetooth adapter is off or absent";
    }
}

void BluetoothTest::TearDown()
{
    EXPECT_EQ(bt_product_deinit(), 0);
}

void PhoneTest::SetUp()
{
    BluetoothTest::SetUp();
    if (IsSkipped() || HasFatalFailure()) {
        return;
    }
    const auto phone = Environment("LYN_CONTRACT_PHONE");
    if (!phone) {
        GTEST_SKIP() << "LYN_CONTRACT_PHONE names no phone";
    }
    m_phone = *phone;
}

void PhoneTest::TearDown()
{
    Disconnect();
    bt_gatt_unset_connection_state_changed_cb();
    BluetoothTest::TearDown();
}

void PhoneTest::Register()
{
    m_reports.clear();
    ASSERT_EQ(bt_gatt_set_connection_state_changed_cb(&PhoneTest::OnReport, this), 0);
}

void PhoneTest::Connect()
{
    ASSERT_EQ(Call([&] { return bt_gatt_connect(m_phone.c_str(), false); }), 0);
    ASSERT_TRUE(RunUntil([&] { return !m_reports.empty(); })) << "no report of the connect";
    ASSERT_EQ(m_reports.front().result, 0);
    ASSERT_TRUE(m_reports.front().connected);
}

void PhoneTest::Disconnect()
{
    if (m_phone.empty() || bt_gatt_disconnect(m_phone.c_str()) != 0) {
        return;
    }
    const auto reports = m_reports.size();
    EXPECT_TRUE(RunUntil([&] { return m_reports.size() > reports; })) << "no report of the disconnect";
}

void PhoneTest::OnReport(int result, bool connected, const char* address, void* userData)
{
    const InCallback scope;
    auto* self = static_cast<PhoneTest*>(userData);
    self->m_reports.push_back({result, connected, address});
    if (const auto react = self->m_onReport) {
        react();
    }
}

}  // namespace lyn::contract
