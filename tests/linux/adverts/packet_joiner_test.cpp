// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "Packets.h"
#include "adverts/PacketJoiner.h"

namespace lyn::linux_platform::test {
namespace {

using std::chrono::milliseconds;

/// Plays packets to a joiner in a time of its own. Each result is kept as "device: advertising letter[, name]".
class PacketJoinerTest : public ::testing::Test {
protected:
    void Advertise(int device, char letter = 'i', PacketKind kind = PacketKind::scannable)
    {
        Keep(joiner.Take({Device(device), kind, -50, PhoneData(letter)}, now));
    }

    void Respond(int device, const std::string& name = "Phone")
    {
        Keep(joiner.Take({Device(device), PacketKind::scanResponse, -60, NameData(name)}, now));
    }

    void Wait(milliseconds time)
    {
        now += time;
        Keep(joiner.TakeOverdue(now));
    }

    void Keep(const std::vector<Advert>& adverts)
    {
        for (const Advert& advert : adverts) {
            std::string result = advert.address.substr(15) + ": " + static_cast<char>(advert.advertising.back());
            if (advert.response) {
                result += ", " + std::string(advert.response->begin() + 6, advert.response->end());
            }
            results.push_back(result);
            last = advert;
        }
    }

    using Results = std::vector<std::string>;

    PacketJoiner joiner;
    Moment now{1000};
    Results results;
    Advert last;
};

TEST_F(PacketJoinerTest, APacketAndItsResponseAreOneResult)
{
    Advertise(1);
    EXPECT_EQ(results, Results{});
    Wait(milliseconds(5));
    Respond(1);
    Wait(milliseconds(1000));
    EXPECT_EQ(results, Results{"01: i, Phone"});
    EXPECT_EQ(last.address, Address(1));
    EXPECT_EQ(last.advertising, PhoneData());
    EXPECT_EQ(last.response, NameData());
    EXPECT_EQ(last.rssi, -60);
}

TEST_F(PacketJoinerTest, APacketWithoutAResponseIsDeliveredAlone)
{
    Advertise(1);
    Wait(PacketJoiner::kResponseWait - milliseconds(1));
    EXPECT_EQ(results, Results{});
    Wait(milliseconds(1));
    EXPECT_EQ(results, Results{"01: i"});
    EXPECT_EQ(last.response, std::nullopt);
    EXPECT_EQ(last.rssi, -50);
    Wait(milliseconds(1000));
    EXPECT_EQ(results.size(), 1U);
}

TEST_F(PacketJoinerTest, APacketThatNobodyAnswersIsDeliveredAtOnce)
{
    Advertise(1, 'i', PacketKind::plain);
    EXPECT_EQ(results, Results{"01: i"});
    EXPECT_EQ(joiner.NextDeadline(), std::nullopt);
}

TEST_F(PacketJoinerTest, InterleavedPhonesGetTheirOwnResponses)
{
    Advertise(1, 'a');
    Advertise(2, 'b');
    Respond(1, "one");
    Respond(2, "two");
    Wait(milliseconds(1000));
    EXPECT_EQ(results, (Results{"01: a, one", "02: b, two"}));
}

TEST_F(PacketJoinerTest, AddressesOfDifferentTypesAreDifferentPhones)
{
    Advertise(1, 'a');
    Keep(joiner.Take({Device(1, 0), PacketKind::scanResponse, -60, NameData("other")}, now));
    EXPECT_EQ(results, Results{});
}

TEST_F(PacketJoinerTest, ThePacketAgainWhileItWaitsIsTheSameAdvert)
{
    Advertise(1);
    Wait(milliseconds(20));
    Advertise(1);
    Respond(1);
    Wait(milliseconds(1000));
    EXPECT_EQ(results, Results{"01: i, Phone"});
}

TEST_F(PacketJoinerTest, APhoneThatRepeatsQuicklyDoesNotWaitForEver)
{
    for (int i = 0; i < 9; ++i) {
        Advertise(1);
        Wait(milliseconds(10));
    }
    EXPECT_EQ(results, (Results{"01: i", "01: i", "01: i"}));
}

TEST_F(PacketJoinerTest, OtherDataOfThePhoneAreAnotherAdvert)
{
    Advertise(1, 'a');
    Advertise(1, 'b');
    EXPECT_EQ(results, Results{"01: a"});
    Respond(1);
    EXPECT_EQ(results, (Results{"01: a", "01: b, Phone"}));
}

TEST_F(PacketJoinerTest, EachRepetitionIsAResult)
{
    for (int i = 0; i < 3; ++i) {
        Advertise(1);
        Respond(1);
        Wait(milliseconds(100));
    }
    EXPECT_EQ(results, (Results{"01: i, Phone", "01: i, Phone", "01: i, Phone"}));
}

TEST_F(PacketJoinerTest, ALateResponseBelongsToTheLastPacket)
{
    Advertise(1);
    Wait(milliseconds(100));
    Respond(1);
    EXPECT_EQ(results, (Results{"01: i", "01: i, Phone"}));
}

TEST_F(PacketJoinerTest, AResponseAloneMeansThatThePacketIsOnTheAirStill)
{
    Advertise(1);
    Respond(1, "old");
    Wait(milliseconds(5000));
    Respond(1, "new");
    EXPECT_EQ(results, (Results{"01: i, old", "01: i, new"}));
}

TEST_F(PacketJoinerTest, AResponseFarTooLateIsDropped)
{
    Advertise(1);
    Respond(1);
    Wait(PacketJoiner::kRemembered + milliseconds(1));
    Respond(1);
    EXPECT_EQ(results, Results{"01: i, Phone"});
}

TEST_F(PacketJoinerTest, AResponseOfAnUnknownPhoneIsDropped)
{
    Respond(1);
    Advertise(1, 'p', PacketKind::plain);
    Respond(1);
    Wait(milliseconds(1000));
    EXPECT_EQ(results, Results{"01: p"});
}

TEST_F(PacketJoinerTest, WhatNoPhoneSendsIsDropped)
{
    for (const PacketKind kind : {PacketKind::plain, PacketKind::scannable}) {
        for (const Bytes& data : {Bytes{}, Manufacturer(76, {1, 2, 3}), Bytes{0x03, 0xFF, 0x75}}) {
            Keep(joiner.Take({Device(1), kind, -50, data}, now));
        }
    }
    Respond(1);
    Wait(milliseconds(1000));
    EXPECT_EQ(results, Results{});
    EXPECT_EQ(joiner.NextDeadline(), std::nullopt);
}

TEST_F(PacketJoinerTest, AnEmptyResponseIsAResponse)
{
    Advertise(1);
    Keep(joiner.Take({Device(1), PacketKind::scanResponse, -60, Bytes(6, 0)}, now));
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(last.response, Bytes(6, 0));
}

TEST_F(PacketJoinerTest, TheNextDeadlineIsTheEarliest)
{
    EXPECT_EQ(joiner.NextDeadline(), std::nullopt);
    Advertise(1);
    Wait(milliseconds(10));
    Advertise(2);
    EXPECT_EQ(joiner.NextDeadline(), Moment(1000) + PacketJoiner::kResponseWait);
    Respond(1);
    EXPECT_EQ(joiner.NextDeadline(), Moment(1010) + PacketJoiner::kResponseWait);
    Respond(2);
    EXPECT_EQ(joiner.NextDeadline(), std::nullopt);
}

TEST_F(PacketJoinerTest, AFloodLosesNoAdvertAndTakesNoMoreMemory)
{
    const int flood = 20'000;
    std::size_t delivered = 0;
    for (int i = 0; i < flood; ++i) {
        DeviceAddress device;
        device.bytes = {static_cast<std::uint8_t>(i),
                        static_cast<std::uint8_t>(i >> 8),
                        static_cast<std::uint8_t>(i >> 16),
                        0,
                        0,
                        0xC0};
        delivered += joiner.Take({device, PacketKind::scannable, -50, PhoneData()}, now).size();
    }
    EXPECT_EQ(delivered, static_cast<std::size_t>(flood) - PacketJoiner::kMostDevices);
    now += PacketJoiner::kResponseWait;
    EXPECT_EQ(joiner.TakeOverdue(now).size(), PacketJoiner::kMostDevices);
}

TEST_F(PacketJoinerTest, APhoneThatIsHeardAgainOutlivesAFlood)
{
    Advertise(1);
    Respond(1);
    const int most = static_cast<int>(PacketJoiner::kMostDevices);
    const auto flood = [&](int from) {
        for (int i = 0; i < most - 1; ++i) {
            DeviceAddress device;
            device.bytes = {static_cast<std::uint8_t>(i), static_cast<std::uint8_t>(from), 1, 0, 0, 0xC0};
            joiner.Take({device, PacketKind::scannable, -50, PhoneData()}, now);
        }
    };
    flood(1);
    Advertise(1);
    flood(2);
    Respond(1, "still");
    EXPECT_EQ(results, (Results{"01: i, Phone", "01: i, still"}));
}

}  // namespace
}  // namespace lyn::linux_platform::test
