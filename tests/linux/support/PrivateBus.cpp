// SPDX-License-Identifier: Apache-2.0
#include "PrivateBus.h"

#include <cstdlib>

namespace lyn::linux_tests {

PrivateBus& PrivateBus::Instance()
{
    static auto* const bus = new PrivateBus;
    return *bus;
}

PrivateBus::PrivateBus()
{
    Begin();
    std::atexit([] { g_test_dbus_stop(Instance().m_bus); });
}

void PrivateBus::Restart()
{
    PrivateBus& self = Instance();
    g_test_dbus_stop(self.m_bus);
    g_object_unref(self.m_bus);
    self.Begin();
}

void PrivateBus::Begin()
{
    m_bus = g_test_dbus_new(G_TEST_DBUS_NONE);
    g_test_dbus_up(m_bus);
    m_address = g_test_dbus_get_bus_address(m_bus);
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", m_address.c_str(), 1);
}

bool RunUntil(const std::function<bool()>& done)
{
    const gint64 limit = g_get_monotonic_time() + gint64{20} * G_USEC_PER_SEC;
    bool reached = done();
    while (!reached && g_get_monotonic_time() < limit) {
        if (g_main_context_iteration(nullptr, FALSE) == FALSE) {
            g_usleep(500);
        }
        reached = done();
    }
    return reached;
}

void RunQuietly(int milliseconds)
{
    const gint64 end = g_get_monotonic_time() + gint64{milliseconds} * 1000;
    while (g_get_monotonic_time() < end) {
        if (g_main_context_iteration(nullptr, FALSE) == FALSE) {
            g_usleep(500);
        }
    }
}

}  // namespace lyn::linux_tests
