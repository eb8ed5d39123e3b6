// SPDX-License-Identifier: Apache-2.0
#include "bus/Bus.h"

#include <gtest/gtest.h>

#include <thread>

#include "PrivateBus.h"

namespace lyn::linux_tests {
namespace {

using linux_platform::Bus;

class LinuxBus : public testing::Test {
protected:
    LinuxBus() { PrivateBus::Instance(); }

    // GIO's own thread notes the end a little after the call has ended.
    static void Close(const Bus& bus)
    {
        g_dbus_connection_close_sync(bus.Connection(), nullptr, nullptr);
        ASSERT_TRUE(RunUntil([&] { return bus.Closed(); }));
    }
};

TEST_F(LinuxBus, TellsItsEndOnTheMainContextWhateverThreadConnected)
{
    std::shared_ptr<Bus> bus;
    std::thread([&] {
        GMainContext* const own = g_main_context_new();
        g_main_context_push_thread_default(own);
        bus = Bus::System();
        g_main_context_pop_thread_default(own);
        g_main_context_unref(own);
    }).join();
    ASSERT_NE(bus, nullptr);
    bool told = false;
    const auto closed = bus->OnClosed([&] { told = true; });
    Close(*bus);
    EXPECT_TRUE(RunUntil([&] { return told; }));
}

TEST_F(LinuxBus, IsConnectedAgainAfterItsEnd)
{
    const auto before = Bus::System();
    ASSERT_NE(before, nullptr);
    EXPECT_EQ(Bus::System(), before);
    Close(*before);
    const auto after = Bus::System();
    ASSERT_NE(after, nullptr);
    EXPECT_NE(after, before);
    EXPECT_FALSE(after->Closed());
}

}  // namespace
}  // namespace lyn::linux_tests
