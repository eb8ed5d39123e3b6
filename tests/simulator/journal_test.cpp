// SPDX-License-Identifier: Apache-2.0
#include <thread>

#include "SimulatorTest.h"
#include "lyn_platform/log.h"
#include "lyn_platform/settings.h"

namespace lyn::simulator::test {
namespace {

class JournalOfCalls : public SimulatorTest {};

TEST_F(JournalOfCalls, ShowsArgumentsAndWhatWasGivenOut)
{
    int value = 0;
    bt_adapter_state_e state{};
    char* address = nullptr;
    vconf_set_int("memory/key", 5);
    vconf_get_int("memory/key", &value);
    bt_adapter_get_state(&state);
    bt_adapter_get_address(&address);
    TakeText(address);
    bt_gatt_connect(kPhone, false);
    bt_adapter_le_set_customized_scan_mode_with_scan_type(0, 1000, 62.5F);
    vconf_get_str(nullptr);
    EXPECT_EQ(JournalText(), (std::vector<std::string>{
                                 "vconf_set_int(\"memory/key\", 5)",
                                 "vconf_get_int(\"memory/key\" -> 5)",
                                 "bt_adapter_get_state(-> 1)",
                                 "bt_adapter_get_address(-> \"02:00:00:00:00:01\")",
                                 "bt_gatt_connect(\"AA:BB:CC:DD:EE:01\", false)",
                                 "bt_adapter_le_set_customized_scan_mode_with_scan_type(0, 1000, 62.5)",
                                 "vconf_get_str(null)",
                             }));
}

TEST_F(JournalOfCalls, LeavesHandlesOut)
{
    AddPhone(AnsweringPhone({}));
    ClearJournal();
    Peer peer;
    peer.Write("say \"hi\"\n\\");
    peer.Destroy();
    const std::vector<std::string> expected = {
        "bt_gatt_set_connection_state_changed_cb()",
        "bt_gatt_connect(\"AA:BB:CC:DD:EE:01\", false)",
        "bt_gatt_client_create(\"AA:BB:CC:DD:EE:01\")",
        "bt_gatt_client_get_service(\"f7608236-13bd-4a99-bbcd-9426bccb6c24\")",
        "bt_gatt_service_get_characteristic(\"9be85432-b1db-416c-9e1c-d6d381305337\")",
        "bt_gatt_client_set_att_mtu_changed_cb()",
        "bt_gatt_set_value(\"say \\\"hi\\\"\\x0a\\\\\", 10)",
        "bt_gatt_client_write_value()",
        "bt_gatt_client_destroy()",
    };
    EXPECT_EQ(JournalText(), expected);
}

TEST_F(JournalOfCalls, ShowsResultsAndThreads)
{
    vconf_set_int("memory/key", 5);
    std::thread([] { vconf_set_int(nullptr, 5); }).join();
    const auto calls = Journal();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_EQ(calls[0].function, "vconf_set_int");
    EXPECT_EQ(calls[0].result, 0);
    EXPECT_NE(calls[1].result, 0);
    EXPECT_EQ(calls[1].arguments, "null, 5");
    EXPECT_NE(calls[0].thread, calls[1].thread);
    EXPECT_NE(calls[0].thread, 0U);
}

TEST_F(JournalOfCalls, LeavesLogsOut)
{
    platform_log_print(0, 4, "TAG", "text");
    EXPECT_TRUE(Journal().empty());
}

TEST_F(JournalOfCalls, CanBeClearedAndSwitchedOff)
{
    vconf_set_int("memory/key", 1);
    ClearJournal();
    EXPECT_TRUE(Journal().empty());
    SetJournal(false);
    vconf_set_int("memory/key", 2);
    EXPECT_TRUE(Journal().empty());
    SetJournal(true);
    vconf_set_int("memory/key", 3);
    EXPECT_EQ(JournalText(), std::vector<std::string>{"vconf_set_int(\"memory/key\", 3)"});
    SetJournal(false);
    Reset();
    vconf_set_int("memory/key", 4);
    EXPECT_EQ(Journal().size(), 1U);
}

}  // namespace
}  // namespace lyn::simulator::test
