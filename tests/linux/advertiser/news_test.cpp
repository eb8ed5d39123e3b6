// SPDX-License-Identifier: Apache-2.0
#include "Advertiser.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "FakeService.h"
#include "PrivateBus.h"

namespace lyn::linux_tests {
namespace {

namespace fs = std::filesystem;
using advertiser::Advertiser;
using advertiser::News;
using linux_platform::Adapter;
using linux_platform::Bus;
using linux_platform::Reply;
using linux_platform::SettingsStore;

constexpr const char* kAdapter = "/org/bluez/hci0";
constexpr const char* kManager = "org.bluez.LEAdvertisingManager1";
constexpr const char* kTrigger = "memory/org.nuvex.bleapp/mirroring_trigger";

/// bluetoothd with one adapter that is on, and an advertiser at it. For the whole process, as the program has it.
class Room {
public:
    static Room& Instance()
    {
        static Room* const room = new Room;
        return *room;
    }

    void Trigger(int interval)
    {
        m_store.Write(kTrigger, interval);
        m_advertiser.Update();
    }

    std::vector<std::string> news;
    std::atomic<int> refusals = 0;  ///< so many advertisements are refused

private:
    Room()
    {
        m_bluez.OnText("/", "org.freedesktop.DBus.ObjectManager", "GetManagedObjects",
                       std::string("({objectpath '") + kAdapter +
                           "': {'org.bluez.Adapter1': {'Address': <'02:00:00:00:00:01'>, 'Powered': <true>}}},)");
        m_bluez.On(kAdapter, kManager, "RegisterAdvertisement", [this](GDBusMessage* call) {
            return refusals > 0 && refusals-- > 0
                       ? g_dbus_message_new_method_error_literal(call, "org.bluez.Error.NotPermitted", "no room")
                       : g_dbus_message_new_method_reply(call);
        });
        m_bluez.OnText(kAdapter, kManager, "UnregisterAdvertisement", "()");
        EXPECT_EQ(Adapter::Instance().Watch(), 0);
    }

    static fs::path Folder()
    {
        std::string name = fs::temp_directory_path() / "lyn-advertiser-XXXXXX";
        return ::mkdtemp(name.data());
    }

    FakeService m_bluez{"org.bluez"};
    const fs::path m_folder = Folder();
    const SettingsStore m_store{{m_folder / "state", m_folder / "run"}};
    const advertiser::Config m_config{{"mirroring", {}}};
    Advertiser m_advertiser{m_config, m_store, [this](const News& one) { news.push_back(one.what); }};
};

class AdvertiserTest : public ::testing::Test {
protected:
    AdvertiserTest()
    {
        RunQuietly(50);  // what a test before has left
        room.news.clear();
    }
    ~AdvertiserTest() override { room.Trigger(0); }

    static void Release()
    {
        const auto bus = Bus::System();
        const std::string self = g_dbus_connection_get_unique_name(bus->Connection());
        bus->Call({self, "/lyn/advertiser/mirroring", "org.bluez.LEAdvertisement1", "Release"}, nullptr, 5000,
                  [](const Reply& reply) { EXPECT_TRUE(reply.Ok()); });
    }

    Room& room = (PrivateBus::Instance(), Room::Instance());
};

using What = std::vector<std::string>;

TEST_F(AdvertiserTest, AdvertisesAgainAfterBluetoothdHasLetGo)
{
    room.Trigger(100);
    ASSERT_TRUE(RunUntil([&] { return room.news == What{"on"}; }));
    Release();
    EXPECT_TRUE(RunUntil([&] { return room.news == What{"on", "failed", "on"}; }));
}

TEST_F(AdvertiserTest, DoesNotTakeTheAnswerToAnEarlierAdvertisementForThisOnes)
{
    room.refusals = 1;
    room.Trigger(100);
    room.Trigger(0);
    room.Trigger(100);
    EXPECT_TRUE(RunUntil([&] { return room.news.size() == 2; }));
    RunQuietly();
    EXPECT_EQ(room.news, (What{"off", "on"}));
}

}  // namespace
}  // namespace lyn::linux_tests
