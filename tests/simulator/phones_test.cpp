// SPDX-License-Identifier: Apache-2.0
#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

class RoomOfPhones : public SimulatorTest {
protected:
    static std::vector<std::string> Addresses()
    {
        std::vector<std::string> addresses;
        for (const Phone& phone : Phones()) {
            addresses.push_back(phone.address);
        }
        return addresses;
    }
};

TEST_F(RoomOfPhones, KeepsThePhonesInTheOrderOfTheirAdding)
{
    AddPhone(AnsweringPhone({}, kOther));
    AddPhone(AnsweringPhone({}, kPhone));
    EXPECT_EQ(Addresses(), (std::vector<std::string>{kOther, kPhone}));
    RemovePhone(kOther);
    EXPECT_EQ(Addresses(), std::vector<std::string>{kPhone});
    RemovePhone(kOther);
}

TEST_F(RoomOfPhones, ReplacesAPhoneOfTheSameAddressInItsPlace)
{
    AddPhone(AnsweringPhone({}, kPhone));
    AddPhone(AnsweringPhone({}, kOther));
    Phone again = AnsweringPhone({}, "aa:bb:cc:dd:ee:01");
    again.rssi = -1;
    AddPhone(again);
    EXPECT_EQ(Addresses(), (std::vector<std::string>{kPhone, kOther}));
    EXPECT_EQ(Phones()[0].rssi, -1);
}

TEST_F(RoomOfPhones, RefusesWhatMakesNoSense)
{
    const auto with = [](void (*bend)(Phone&)) {
        Phone phone = AnsweringPhone({Text("x")});
        bend(phone);
        return phone;
    };
    const std::vector<Phone> bad = {
        with([](Phone& phone) { phone.address = "kitchen"; }),
        with([](Phone& phone) { phone.address = ""; }),
        with([](Phone& phone) { phone.intervalMs = -1; }),
        with([](Phone& phone) { phone.limit = -1; }),
        with([](Phone& phone) { phone.rssiJitter = -1; }),
        with([](Phone& phone) { phone.mtuDelayMs = -1; }),
        with([](Phone& phone) { phone.disconnectDelayMs = -1; }),
        with([](Phone& phone) { phone.dropAfterConnectMs = -1; }),
        with([](Phone& phone) { phone.joinsAtMs = -1; }),
        with([](Phone& phone) { phone.leavesAtMs = -1; }),
        with([](Phone& phone) {
            phone.connects = {{0, -1}};
        }),
        with([](Phone& phone) { phone.services[0].characteristics[0].answers[0].delayMs = -1; }),
        with([](Phone& phone) { phone.services[0].characteristics[0].answers[0].repeat = -1; }),
    };
    for (const Phone& phone : bad) {
        EXPECT_THROW(AddPhone(phone), std::invalid_argument);
    }
    EXPECT_TRUE(Phones().empty());
}

TEST_F(RoomOfPhones, MakesPhonesOfEachFeature)
{
    const std::vector<Phone> phones = {MirroringPhone(kPhone, "a", kUniqueId), KovPhone(kPhone, "a", kUniqueId),
                                       NodLinkPhone(kPhone, true, true), NodLinkAvDevice(kPhone)};
    const std::vector<std::string> uuids = {
        "9be85432-b1db-416c-9e1c-d6d381305337", "fc4e4003-dd1f-4896-bc77-35a759445f69",
        "7909f901-904c-11e6-bdf4-9bbdfdaad9d9", "7909f901-904c-11e6-bdf4-9bbdfdaad9d9"};
    for (std::size_t i = 0; i < phones.size(); ++i) {
        ASSERT_EQ(phones[i].services.size(), 1U);
        ASSERT_EQ(phones[i].services[0].characteristics.size(), 1U);
        EXPECT_EQ(phones[i].services[0].characteristics[0].uuid, uuids[i]);
        EXPECT_TRUE(phones[i].services[0].characteristics[0].answers.empty());
        EXPECT_LE(phones[i].advertising.size(), 31U) << "fits into a real packet";
    }
}

TEST_F(RoomOfPhones, LetsAPhoneComeAndGo)
{
    Phone phone = AnsweringPhone({});
    phone.joinsAtMs = 5;
    phone.leavesAtMs = 30;
    phone.intervalMs = 1;
    AddPhone(phone);
    Listener listener;
    listener.Start();
    Settle();
    EXPECT_TRUE(listener.results.empty()) << "not there yet";
    ASSERT_TRUE(RunUntil([&] { return !listener.results.empty(); }));
    LinkUser user;
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(RunUntil([&] { return user.reports.size() == 2; }));
    EXPECT_EQ(user.reports[1], (LinkUser::Report{0, false, kPhone}));
    const auto heard = listener.results.size();
    Settle();
    EXPECT_EQ(listener.results.size(), heard) << "gone";
}

}  // namespace
}  // namespace lyn::simulator::test
