// SPDX-License-Identifier: Apache-2.0
//
// The living room that everyone starts in.
#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

class LivingRoom : public SimulatorTest {
protected:
    LivingRoom() { LoadDefaultScenario(); }

    /// What comes back for messages written to a phone, one after the other.
    static std::vector<std::string> Answers(const std::string& address, int messages)
    {
        const Phone phone = Find(address);
        LinkUser user;
        EXPECT_EQ(bt_gatt_connect(address.c_str(), false), 0);
        EXPECT_TRUE(RunUntil([&] { return !user.reports.empty(); }));
        EXPECT_EQ(user.reports.at(0).result, 0);
        bt_gatt_client_h client = nullptr;
        bt_gatt_h service = nullptr;
        bt_gatt_h characteristic = nullptr;
        EXPECT_EQ(bt_gatt_client_create(address.c_str(), &client), 0);
        EXPECT_EQ(bt_gatt_client_get_service(client, phone.services.at(0).uuid.c_str(), &service), 0);
        const std::string uuid = phone.services.at(0).characteristics.at(0).uuid;
        EXPECT_EQ(bt_gatt_service_get_characteristic(service, uuid.c_str(), &characteristic), 0);
        std::vector<std::string> values;
        const auto keep = [](bt_gatt_h, char* value, int length, void* out) {
            static_cast<std::vector<std::string>*>(out)->emplace_back(value, static_cast<std::size_t>(length));
        };
        EXPECT_EQ(bt_gatt_client_set_characteristic_value_changed_cb(characteristic, keep, &values), 0);
        for (int i = 0; i < messages; ++i) {
            EXPECT_EQ(bt_gatt_set_value(characteristic, "{}", 2), 0);
            EXPECT_EQ(bt_gatt_client_write_value(characteristic, nullptr, nullptr), 0);
            Settle();
        }
        bt_gatt_client_destroy(client);
        bt_gatt_disconnect(address.c_str());
        Settle();
        return values;
    }

    static Phone Find(const std::string& address)
    {
        const auto phones = Phones();
        const auto found = std::find_if(phones.begin(), phones.end(),
                                        [&](const Phone& phone) { return phone.address == address; });
        EXPECT_NE(found, phones.end()) << address;
        return found != phones.end() ? *found : Phone{};
    }
};

TEST_F(LivingRoom, IsWhatItsTextSays)
{
    const auto phones = Phones();
    LoadScenarioText(DefaultScenarioText());
    EXPECT_EQ(Phones().size(), phones.size());
    EXPECT_GE(phones.size(), 10U);
}

TEST_F(LivingRoom, HasPhonesThatAnswerAndOnesThatDoNot)
{
    using Texts = std::vector<std::string>;
    EXPECT_EQ(Answers("A0:00:00:00:00:01", 1), Texts{"Success"});
    EXPECT_EQ(Answers("A0:00:00:00:00:02", 1), Texts{"Connected"});
    EXPECT_EQ(Answers("A0:00:00:00:00:03", 1), Texts{"NotSupported"});
    EXPECT_EQ(Answers("A0:00:00:00:00:04", 1), Texts{});
    EXPECT_EQ(Answers("A0:00:00:00:00:07", 1), Texts{"Success"});
}

TEST_F(LivingRoom, HasANodLinkPhoneThatWantsTwoMessagesOnEachLink)
{
    const std::vector<std::string> both = {"{\"packageName\":\"org.example.music\",\"type\":\"fgApp\"}",
                                           "Success"};
    EXPECT_EQ(Answers("A0:00:00:00:00:05", 2), both);
    EXPECT_EQ(Answers("A0:00:00:00:00:05", 2), both);
}

TEST_F(LivingRoom, HasNeighboursAndOneThatLies)
{
    Listener listener;
    int mirroring = 0;
    int foreign = 0;
    int unreadable = 0;
    listener.onResult = [&](bt_adapter_le_device_scan_result_info_s* info) {
        int company = 0;
        int length = 0;
        char* data = nullptr;
        if (bt_adapter_le_get_scan_result_manufacturer_data(info, BT_ADAPTER_LE_PACKET_ADVERTISING, &company,
                                                            &data, &length) != 0) {
            ++unreadable;
            return;
        }
        mirroring += company == 117 && length >= 24 && data[1] == 25 ? 1 : 0;
        foreign += company != 117 ? 1 : 0;
        std::free(data);
    };
    listener.Start();
    Settle();
    EXPECT_GE(mirroring, 4);
    EXPECT_GE(foreign, 2);
    EXPECT_GE(unreadable, 2);
}

TEST_F(LivingRoom, HasTheFilesOfATv)
{
    EXPECT_TRUE(std::filesystem::exists(FilePrefix() + "/opt/etc/.lyn_appid"));
    EXPECT_TRUE(
        std::filesystem::exists(FilePrefix() + "/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json"));
}

}  // namespace
}  // namespace lyn::simulator::test
