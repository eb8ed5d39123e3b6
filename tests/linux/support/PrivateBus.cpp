// SPDX-License-Identifier: Apache-2.0
#include "PrivateBus.h"

#include <cstdlib>

namespace lyn::linux_tests {

const PrivateBus& PrivateBus::Instance()
{
    static const auto* const bus = new PrivateBus;
    return *bus;
}

PrivateBus::PrivateBus()
{
    static GTestDBus* dbus = nullptr;
    dbus = g_test_dbus_new(G_TEST_DBUS_NONE);
    g_test_dbus_up(dbus);
    std::atexit([] { g_test_dbus_stop(dbus); });
    m_address = g_test_dbus_get_bus_address(dbus);
    ::setenv("DBUS_SYSTEM_BUS_ADDRESS", m_address.c_str(), 1);
}

bool RunUntil(const std::function<bool()>& done)
{
    const gint64 limit = g_get_monotonic_time() + gint64{20} * G_USEC_PER_SEC;
    while (!done() && g_get_monotonic_time() < limit) {
        if (g_main_context_iteration(nullptr, FALSE) == FALSE) {
            g_usleep(500);
        }
    }
    return done();
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
