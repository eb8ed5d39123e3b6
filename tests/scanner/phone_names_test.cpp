// SPDX-License-Identifier: Apache-2.0
//
// Names and ids of mirroring and Kov phones, from the bytes on the air to the application's callback.
#include <gmock/gmock.h>
#include <json/reader.h>

#include <memory>
#include <string>
#include <vector>

#include "scanner/Advertisements.h"
#include "support/App.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PhoneOnTheAir : public SimulatedTv {
protected:
    explicit PhoneOnTheAir(const std::string& service)
        : app(service),
          m_marker(service == "kov" ? KOV_MARKER : MIRRORING_MARKER)
    {
        EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
        simulator::ClearLog();
    }

    void Deliver(const Bytes& advertised, const std::optional<Bytes>& response)
    {
        app.phones.clear();
        simulator::ClearLog();
        simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(advertised), response);
    }

    void DeliverNamed(const std::string& name) { Deliver(Marked(m_marker, UNIQUE_ID), NameResponse(name)); }

    void ExpectNamed(const std::string& name) const
    {
        EXPECT_THAT(app.phones, ElementsAre(FoundPhone{true, name, ADDRESS, UNIQUE_ID, "", -50}));
        EXPECT_THAT(Messages(ERROR), IsEmpty());
    }

    void ExpectNameless() const
    {
        EXPECT_THAT(app.phones, ElementsAre(FoundPhone{false, "", ADDRESS, UNIQUE_ID, "", -50}));
        EXPECT_THAT(Messages(ERROR), IsEmpty());
    }

    void ExpectDropped(const std::string& error) const
    {
        EXPECT_THAT(app.phones, IsEmpty());
        EXPECT_THAT(Messages(ERROR), ElementsAre(error));
    }

    App app;

private:
    std::uint8_t m_marker;
};

class MirroringScanner : public PhoneOnTheAir {
protected:
    MirroringScanner() : PhoneOnTheAir("mirroring") {}
};

class KovScanner : public PhoneOnTheAir {
protected:
    KovScanner() : PhoneOnTheAir("kov") {}
};

TEST_F(MirroringScanner, AcceptsItsMarkerAndRejectsThatOfKovInSilence)
{
    Deliver(Marked(25, UNIQUE_ID), NameResponse("Kitchen"));
    ExpectNamed("Kitchen");
    Deliver(Marked(23, UNIQUE_ID), NameResponse("Kitchen"));
    EXPECT_THAT(app.phones, IsEmpty());
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(KovScanner, AcceptsItsMarkerAndRejectsThatOfMirroringInSilence)
{
    Deliver(Marked(23, UNIQUE_ID), NameResponse("Kitchen"));
    ExpectNamed("Kitchen");
    Deliver(Marked(25, UNIQUE_ID), NameResponse("Kitchen"));
    EXPECT_THAT(app.phones, IsEmpty());
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(MirroringScanner, DropsAMarkedPhoneOfAnotherCompanyInSilence)
{
    simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(Marked(25, UNIQUE_ID), 0x7500),
                                    NameResponse("Kitchen"));
    EXPECT_THAT(app.phones, IsEmpty());
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(KovScanner, DropsAMarkedPhoneOfAnotherCompanyInSilence)
{
    simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(Marked(23, UNIQUE_ID), 0x7500),
                                    NameResponse("Kitchen"));
    EXPECT_THAT(app.phones, IsEmpty());
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(MirroringScanner, DropsAPhoneWhoseDataIsTooShortForTheIdInSilence)
{
    for (std::size_t length = 1; length < 24; ++length) {
        SCOPED_TRACE(length);
        Bytes data = Marked(25, UNIQUE_ID);
        data.resize(length);
        Deliver(data, NameResponse("Kitchen"));
        EXPECT_THAT(app.phones, IsEmpty());
        EXPECT_THAT(LogLines(), IsEmpty());
    }
}

TEST_F(KovScanner, DropsAPhoneWhoseDataIsTooShortForTheIdInSilence)
{
    for (std::size_t length = 1; length < 24; ++length) {
        SCOPED_TRACE(length);
        Bytes data = Marked(23, UNIQUE_ID);
        data.resize(length);
        Deliver(data, NameResponse("Kitchen"));
        EXPECT_THAT(app.phones, IsEmpty());
        EXPECT_THAT(LogLines(), IsEmpty());
    }
}

TEST_F(MirroringScanner, ReportsAnIdThatIsNoTextUpToItsFirstZeroByte)
{
    Deliver(Marked(25, std::string("\x80\xFFid\0more_of_22_bytes__", 22)), NameResponse("Kitchen"));
    ASSERT_EQ(app.phones.size(), 1U);
    EXPECT_EQ(app.phones[0].uniqueId, "\x80\xFFid");
}

TEST_F(MirroringScanner, ReportsTheIdWithoutTheBytesBehindIt)
{
    Deliver(Marked(25, std::string(UNIQUE_ID) + "more"), NameResponse("Kitchen"));
    ExpectNamed("Kitchen");
}

TEST_F(MirroringScanner, ReportsANameUpToItsFirstZeroByte)
{
    DeliverNamed(std::string("ab\0cd", 5));
    ExpectNamed("ab");
}

TEST_F(MirroringScanner, ReportsANameAsItStands)
{
    for (const std::string name : {" blanks ", "\xE2\x82\xAC", "a\nb\n", "%s%n"}) {
        SCOPED_TRACE(name);
        DeliverNamed(name);
        ExpectNamed(name);
    }
}

TEST_F(MirroringScanner, ReportsAPhoneWithTwoBytesInItsScanResponseAsNameless)
{
    DeliverNamed("");
    ExpectNameless();
    DeliverNamed(std::string("\0hidden", 7));
    ExpectNameless();
}

TEST_F(MirroringScanner, DropsAPhoneWhoseNameIsNotUtf8)
{
    for (const std::string name : {"ab\xFF", "\xC3", "\xED\xA0\x80"}) {
        SCOPED_TRACE(testing::PrintToString(name));
        DeliverNamed(name);
        ExpectDropped("Invalid device name");
    }
}

TEST_F(MirroringScanner, DropsAPhoneWithoutAScanResponse)
{
    Deliver(Marked(25, UNIQUE_ID), std::nullopt);
    ExpectDropped("scan data is nullptr");
}

TEST_F(KovScanner, DropsAPhoneWithoutAScanResponse)
{
    Deliver(Marked(23, UNIQUE_ID), std::nullopt);
    ExpectDropped("scan data is nullptr");
}

TEST_F(MirroringScanner, DropsAPhoneWithOneByteInItsScanResponse)
{
    Deliver(Marked(25, UNIQUE_ID), Advertising({0x42}));
    ExpectDropped("manufacturere data length is less than 2");
}

TEST_F(KovScanner, DropsAPhoneWithOneByteInItsScanResponse)
{
    Deliver(Marked(23, UNIQUE_ID), Advertising({0x42}));
    ExpectDropped("manufacturere data length is less than 3");
}

TEST_F(MirroringScanner, DropsAPhoneWithNoByteInItsScanResponse)
{
    Deliver(Marked(25, UNIQUE_ID), Advertising({}));
    ExpectDropped("exception lenth is less then 1");
}

TEST_F(KovScanner, DropsAPhoneWithNoByteInItsScanResponse)
{
    Deliver(Marked(23, UNIQUE_ID), Advertising({}));
    ExpectDropped("exception lenth is less then 1");
}

TEST_F(KovScanner, DropsAPhoneWhoseScanResponseHasNoManufacturerData)
{
    Deliver(Marked(23, UNIQUE_ID), simulator::AdStructure(0x09, BytesOf("Kitchen")));
    EXPECT_THAT(app.phones, IsEmpty());
    EXPECT_THAT(Messages(ERROR),
                ElementsAre(testing::StartsWith("bt_adapter_le_get_scan_result_manufacturer_data api failed [0x"),
                            "manufacturere data length is less than 3"));
}

TEST_F(KovScanner, ReportsANameUpToItsFirstZeroByte)
{
    DeliverNamed(std::string("ab\0cd", 5));
    ExpectNamed("ab");
}

TEST_F(MirroringScanner, DropsAPhoneWhoseScanResponseHasNoManufacturerData)
{
    Deliver(Marked(25, UNIQUE_ID), simulator::AdStructure(0x09, BytesOf("Kitchen")));
    EXPECT_THAT(app.phones, IsEmpty());
    EXPECT_THAT(Messages(ERROR),
                ElementsAre(testing::StartsWith("bt_adapter_le_get_scan_result_manufacturer_data api failed [0x"),
                            "manufacturere data length is less than 2"));
}

TEST_F(KovScanner, DropsAPhoneWithTwoBytesInItsScanResponseAsOutOfRange)
{
    DeliverNamed("");
    EXPECT_THAT(app.phones, IsEmpty());
    ASSERT_EQ(Messages(ERROR).size(), 1U);
    EXPECT_THAT(Messages(ERROR)[0], testing::StartsWith("exception basic_string"));
}

TEST_F(KovScanner, ShowsANewlineInTheLastByteAsThreeDots)
{
    DeliverNamed("ab\n");
    ExpectNamed("ab...");
    EXPECT_EQ(CountLog(DEBUG, "replace \\n to ..."), 1);
}

TEST_F(KovScanner, LeavesANewlineThatIsNotTheLastByteAsItIs)
{
    for (const std::string name : {"a\nb", "\nab"}) {
        DeliverNamed(name);
        ExpectNamed(name);
        EXPECT_FALSE(HasLog(DEBUG, "replace \\n to ..."));
    }
    DeliverNamed(std::string("ab\n\0", 4));
    ExpectNamed("ab\n");
}

TEST_F(KovScanner, ReportsAPhoneWhoseNameIsEmptyAsNameless)
{
    DeliverNamed(std::string("\0", 1));
    ExpectNameless();
}

TEST_F(KovScanner, ReportsANameThatIsNotUtf8)
{
    DeliverNamed("ab\xFF");
    ExpectNamed("ab\xFF");
}

TEST_F(KovScanner, ReportsANameThatIsNotUtf8AsJsonThatReads)
{
    app.StopScan();
    ASSERT_EQ(app.StartScanWithSerialization(), LYN_ERROR_NONE);
    DeliverNamed("ab\xFF");
    ASSERT_EQ(app.jsons.size(), 1U);
    const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
    Json::Value phone;
    std::string error;
    EXPECT_TRUE(reader->parse(app.jsons[0].data(), app.jsons[0].data() + app.jsons[0].size(), &phone, &error))
        << error;
    EXPECT_EQ(phone["Name"].asString().substr(0, 2), "ab");
    EXPECT_EQ(app.jsons[0].find('\n'), std::string::npos);
}

TEST_F(MirroringScanner, TakesTheManufacturerDataWhereverItStandsInThePacket)
{
    Bytes packet = simulator::AdStructure(0x09, BytesOf("a local name"));
    const Bytes rest = Advertising(Marked(25, UNIQUE_ID));
    packet.insert(packet.end(), rest.begin(), rest.end());
    simulator::DeliverAdvertisement(ADDRESS, -50, packet, NameResponse("Kitchen"));
    ExpectNamed("Kitchen");
}

TEST_F(MirroringScanner, DropsAPacketThatLiesAboutItsLength)
{
    for (const std::size_t cut : {std::size_t{1}, std::size_t{2}, std::size_t{5}, std::size_t{28}}) {
        SCOPED_TRACE(cut);
        Bytes packet = Advertising(Marked(25, UNIQUE_ID));
        packet.resize(packet.size() - cut);
        simulator::DeliverAdvertisement(ADDRESS, -50, packet, NameResponse("Kitchen"));
        EXPECT_THAT(app.phones, IsEmpty());
    }
}

}  // namespace
}  // namespace lyn::test
