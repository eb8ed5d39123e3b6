// SPDX-License-Identifier: Apache-2.0
#include "lyn_simulator/air.h"

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

class Air : public SimulatorTest {
protected:
    Air()
    {
        const auto keep = [](lyn_simulator_air_event_e event, const char* address, const char* data, int length,
                             void* out) {
            EXPECT_EQ(data[length], '\0');
            static constexpr const char* kNames[] = {"up", "write", "notify", "down", "failed"};
            static_cast<std::vector<std::string>*>(out)->push_back(
                std::string(kNames[event]) + " " + address + " " +
                std::string(data, static_cast<std::size_t>(length)));
        };
        lyn_simulator_set_air_listener(keep, &events);
    }

    std::vector<std::string> events;
};

TEST_F(Air, ShowsWhatPassesInOrder)
{
    AddPhone(AnsweringPhone({Text("Success")}));
    Peer peer;
    peer.Listen();
    peer.Write("hello");
    Settle();
    bt_gatt_disconnect(kPhone);
    Settle();
    const std::string at = std::string(" ") + kPhone + " ";
    EXPECT_EQ(events, (std::vector<std::string>{"up" + at, "write" + at + "hello", "notify" + at + "Success",
                                                "down" + at}));
}

TEST_F(Air, ShowsAConnectThatFails)
{
    LinkUser user;
    bt_gatt_connect(kPhone, false);
    Settle();
    EXPECT_EQ(events, std::vector<std::string>{std::string("failed ") + kPhone + " "});
}

TEST_F(Air, ShowsAnEventBeforeTheTvReactsToIt)
{
    AddPhone(AnsweringPhone({}));
    LinkUser user;
    std::size_t seen = 0;
    user.onReport = [&](const auto&) { seen = events.size(); };
    bt_gatt_connect(kPhone, false);
    Settle();
    EXPECT_EQ(seen, 1U);
}

TEST_F(Air, ShowsNoNotificationThatNobodyAskedFor)
{
    AddPhone(AnsweringPhone({Text("Success")}));
    Peer peer;
    peer.Write("hello");
    Settle();
    EXPECT_EQ(events.size(), 2U);
}

TEST_F(Air, ShowsNothingWithoutAListener)
{
    lyn_simulator_set_air_listener(nullptr, nullptr);
    AddPhone(AnsweringPhone({}));
    LinkUser user;
    bt_gatt_connect(kPhone, false);
    Settle();
    EXPECT_TRUE(events.empty());
    EXPECT_EQ(user.reports.size(), 1U);
}

}  // namespace
}  // namespace lyn::simulator::test
