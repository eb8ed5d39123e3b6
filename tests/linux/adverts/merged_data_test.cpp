// SPDX-License-Identifier: Apache-2.0
#include "Packets.h"
#include "adverts/MergedData.h"

namespace lyn::linux_platform::test {
namespace {

constexpr const char* kPhone = "C0:00:00:00:00:01";

Bytes PhoneValue(std::uint8_t marker, char letter = 'i')
{
    return Joined({0x01, marker}, Bytes(22, static_cast<std::uint8_t>(letter)));
}

Bytes NameValue(const std::string& name, std::uint8_t second = 25)
{
    return Joined({0x01, second}, Bytes(name.begin(), name.end()));
}

class MergedDataTest : public ::testing::Test {
protected:
    Advert Take(const Bytes& value)
    {
        return merged.Take(kPhone, std::nullopt, {{117, value}}).value_or(Advert{});
    }

    MergedData merged;
};

TEST_F(MergedDataTest, DataBecomeAnAdvertisingPacket)
{
    const Bytes value(14, 0);
    const Advert advert = merged.Take(kPhone, -42, {{117, value}}).value_or(Advert{});
    EXPECT_EQ(advert.address, kPhone);
    EXPECT_EQ(advert.rssi, -42);
    EXPECT_EQ(advert.advertising, Manufacturer(117, value));
    EXPECT_EQ(advert.response, std::nullopt);
}

TEST_F(MergedDataTest, ASignalStrengthThatWasNotToldIsUnknown)
{
    EXPECT_EQ(Take({1, 2, 3}).rssi, 127);
}

TEST_F(MergedDataTest, OtherCompaniesAreNotDelivered)
{
    EXPECT_FALSE(merged.Take(kPhone, std::nullopt, {}));
    EXPECT_FALSE(merged.Take(kPhone, std::nullopt, {{76, {1, 2}}, {6, {3}}}));
}

TEST_F(MergedDataTest, AlternatingDataOfAPhoneAreJoined)
{
    for (const std::uint8_t marker : Bytes{25, 23}) {
        MergedData fresh;
        const Bytes phone = PhoneValue(marker);
        EXPECT_EQ(fresh.Take(kPhone, std::nullopt, {{117, phone}})->response, std::nullopt);
        for (int i = 0; i < 2; ++i) {
            const auto named = fresh.Take(kPhone, std::nullopt, {{117, NameValue("Tom")}});
            EXPECT_EQ(named->advertising, Manufacturer(117, phone));
            EXPECT_EQ(named->response, Manufacturer(117, NameValue("Tom")));
            const auto again = fresh.Take(kPhone, std::nullopt, {{117, phone}});
            EXPECT_EQ(again->advertising, Manufacturer(117, phone));
            EXPECT_EQ(again->response, Manufacturer(117, NameValue("Tom")));
        }
    }
}

TEST_F(MergedDataTest, TheOrderDoesNotMatter)
{
    const Advert first = Take(NameValue("Tom"));
    EXPECT_EQ(first.advertising, Manufacturer(117, NameValue("Tom")));
    EXPECT_EQ(first.response, std::nullopt);
    EXPECT_EQ(Take(PhoneValue(25)).response, Manufacturer(117, NameValue("Tom")));
}

TEST_F(MergedDataTest, ANewNameReplacesTheOldOne)
{
    Take(PhoneValue(25));
    Take(NameValue("Tom"));
    EXPECT_EQ(Take(NameValue("Ann")).response, Manufacturer(117, NameValue("Ann")));
    EXPECT_EQ(Take(PhoneValue(25)).response, Manufacturer(117, NameValue("Ann")));
}

TEST_F(MergedDataTest, AResponseOfAnotherCompanyIsToldApart)
{
    const auto advert = merged.Take(kPhone, std::nullopt, {{76, NameValue("Tom")}, {117, PhoneValue(25)}});
    ASSERT_TRUE(advert);
    EXPECT_EQ(advert->advertising, Manufacturer(117, PhoneValue(25)));
    EXPECT_EQ(advert->response, Manufacturer(76, NameValue("Tom")));
}

TEST_F(MergedDataTest, DataThatCouldBeEitherAreDeliveredAlone)
{
    const std::string longName = "A name of 22 letters!!";
    ASSERT_EQ(NameValue(longName).size(), PhoneValue(25).size());
    Take(PhoneValue(25));
    for (int i = 0; i < 2; ++i) {
        const Advert named = Take(NameValue(longName));
        EXPECT_EQ(named.advertising, Manufacturer(117, NameValue(longName)));
        EXPECT_EQ(named.response, std::nullopt);
        EXPECT_EQ(Take(PhoneValue(25)).response, std::nullopt);
    }
}

TEST_F(MergedDataTest, NodLinkDataAreNoResponse)
{
    Bytes nodLink(14, 0);
    nodLink[1] = 13;
    Take(PhoneValue(25));
    const Advert advert = Take(nodLink);
    EXPECT_EQ(advert.advertising, Manufacturer(117, nodLink));
    EXPECT_EQ(advert.response, std::nullopt);
    EXPECT_EQ(Take(PhoneValue(25)).response, std::nullopt);
}

TEST_F(MergedDataTest, PhonesAreKeptApart)
{
    Take(PhoneValue(25));
    const auto other = merged.Take("C0:00:00:00:00:02", std::nullopt, {{117, NameValue("Tom")}});
    EXPECT_EQ(other->response, std::nullopt);
    EXPECT_EQ(Take(PhoneValue(25)).response, std::nullopt);
}

TEST_F(MergedDataTest, AnyLengthIsTaken)
{
    EXPECT_TRUE(Take({}).response == std::nullopt);
    EXPECT_EQ(Take(Bytes(252, 1)).advertising.size(), 256U);
    EXPECT_FALSE(merged.Take(kPhone, std::nullopt, {{117, Bytes(253, 1)}})) << "fits into no structure";
}

TEST_F(MergedDataTest, ANewSignalStrengthIsKept)
{
    Take({1, 2, 3});
    EXPECT_FALSE(merged.Take(kPhone, -50, {}));
    EXPECT_EQ(Take({1, 2, 3}).rssi, -50);
}

TEST_F(MergedDataTest, StrangersPushNoPhoneOut)
{
    Take(PhoneValue(25));
    for (std::size_t i = 0; i < 2 * MergedData::kMostDevices; ++i) {
        EXPECT_FALSE(merged.Take(std::to_string(i), -50, {{76, {1, 2}}}));
    }
    EXPECT_EQ(Take(NameValue("Tom")).advertising, Manufacturer(117, PhoneValue(25)));
}

TEST_F(MergedDataTest, AFloodTakesNoMoreMemory)
{
    Take(NameValue("Tom"));
    for (std::size_t i = 0; i < MergedData::kMostDevices; ++i) {
        merged.Take(std::to_string(i), std::nullopt, {{117, {1, 2}}});
    }
    EXPECT_EQ(Take(PhoneValue(25)).response, std::nullopt) << "it has been forgotten";
}

}  // namespace
}  // namespace lyn::linux_platform::test
