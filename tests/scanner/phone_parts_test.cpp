// SPDX-License-Identifier: Apache-2.0
//
// How the mirroring and the Kov scanner read one advertisement, step by step.
#include <gmock/gmock.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Common/LynException.h"
#include "Scanner/CKovScanner.h"
#include "Scanner/CScreenMirroringScanner.h"
#include "scanner/Advertisements.h"
#include "support/SimulatedTv.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// ---- The marker --------------------------------------------------------------------------------------

struct Marker {
    std::string service;
    std::uint8_t own;
    std::string rejection;
    std::function<void(int company, const char* data)> check;
};

std::vector<Marker> Markers()
{
    return {
        {"mirroring", MIRRORING_MARKER, "Not mirroring device",
         [](int company, const char* data) { CScreenMirroringScanner().CheckVaildAdvertisement(company, data); }},
        {"kov", KOV_MARKER, "Not kov device",
         [](int company, const char* data) { CKovScanner().CheckVaildAdvertisement(company, data); }}};
}

class AdvertisementCheck : public SimulatedTv {};

TEST_F(AdvertisementCheck, AcceptsItsOwnMarkerOfTheCompanyAlone)
{
    for (const Marker& marker : Markers()) {
        for (int byte = 0; byte < 256; ++byte) {
            SCOPED_TRACE(marker.service + " " + std::to_string(byte));
            const ExactBytes data({0xFF, static_cast<std::uint8_t>(byte)});
            const auto check = [&] { marker.check(COMPANY, data.Data()); };
            if (byte == marker.own) {
                EXPECT_NO_THROW(check());
            } else {
                EXPECT_EQ(ThrownBy<LynExceptionNotValidDevice>(check), marker.rejection);
            }
        }
    }
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(AdvertisementCheck, DoesNotExamineTheFirstByte)
{
    for (const Marker& marker : Markers()) {
        for (const std::uint8_t first : std::vector<std::uint8_t>{0, 1, 25, 255}) {
            const ExactBytes data({first, marker.own});
            EXPECT_NO_THROW(marker.check(COMPANY, data.Data()));
        }
    }
}

TEST_F(AdvertisementCheck, DoesNotReadTheDataOfAnotherCompany)
{
    for (const Marker& marker : Markers()) {
        for (const int company : {0, 116, 118, 117 << 8, 65535, -117}) {
            SCOPED_TRACE(marker.service + " " + std::to_string(company));
            EXPECT_EQ(ThrownBy<LynExceptionNotValidDevice>([&] { marker.check(company, nullptr); }),
                      marker.rejection);
        }
    }
}

// ---- Id and name of a scan result --------------------------------------------------------------------

template <typename T>
struct Expected;

template <>
struct Expected<CScreenMirroringScanner> {
    static constexpr std::uint8_t marker = MIRRORING_MARKER;
    static constexpr const char* rejection = "Not mirroring device";
    static constexpr const char* tooShort = "manufacturere data length is less than 2";
};

template <>
struct Expected<CKovScanner> {
    static constexpr std::uint8_t marker = KOV_MARKER;
    static constexpr const char* rejection = "Not kov device";
    static constexpr const char* tooShort = "manufacturere data length is less than 3";
};

template <typename T>
class PhoneParts : public SimulatedTv {
protected:
    static std::string IdOf(const std::optional<Bytes>& advertising)
    {
        ScanResult result(advertising);
        // The length is not what counts.
        return T().GetDeviceId(result.Info(), 0);
    }

    static std::string NameOf(const std::optional<Bytes>& scanResponse)
    {
        ScanResult result(std::nullopt, scanResponse);
        return T().GetDeviceName(result.Info(), 0);
    }

    static std::string IdRejectionOf(const std::optional<Bytes>& advertising)
    {
        return ThrownBy<LynExceptionNotValidDevice>([&] { IdOf(advertising); });
    }

    static std::string NameRejectionOf(const std::optional<Bytes>& scanResponse)
    {
        return ThrownBy<LynExceptionNotValidDevice>([&] { NameOf(scanResponse); });
    }
};

using PhoneScanners = testing::Types<CScreenMirroringScanner, CKovScanner>;
TYPED_TEST_SUITE(PhoneParts, PhoneScanners);

TYPED_TEST(PhoneParts, GiveTheTwentyTwoBytesBehindTheMarkerAsId)
{
    const std::uint8_t marker = Expected<TypeParam>::marker;
    std::string id(22, '\0');
    for (std::size_t i = 0; i < id.size(); ++i) {
        id[i] = static_cast<char>(static_cast<unsigned char>(i * 12));
    }
    EXPECT_EQ(TestFixture::IdOf(Advertising(Marked(marker, id))), id);
    EXPECT_EQ(TestFixture::IdOf(Advertising(Marked(marker, id + "more"))), id);
    EXPECT_THAT(LogLines(), IsEmpty());
}

TYPED_TEST(PhoneParts, RejectDataThatIsTooShortForTheId)
{
    const std::uint8_t marker = Expected<TypeParam>::marker;
    for (std::size_t length = 1; length < 24; ++length) {
        SCOPED_TRACE(length);
        Bytes data = Marked(marker, UNIQUE_ID);
        data.resize(length);
        EXPECT_EQ(TestFixture::IdRejectionOf(Advertising(data)), Expected<TypeParam>::rejection);
    }
}

TYPED_TEST(PhoneParts, RejectAnotherCompanyOrMarker)
{
    const std::uint8_t marker = Expected<TypeParam>::marker;
    const Bytes data = Marked(marker, UNIQUE_ID);
    EXPECT_EQ(TestFixture::IdRejectionOf(Advertising(data, 118)), Expected<TypeParam>::rejection);
    const auto other = static_cast<std::uint8_t>(MIRRORING_MARKER + KOV_MARKER - marker);
    EXPECT_EQ(TestFixture::IdRejectionOf(Advertising(Marked(other, UNIQUE_ID))), Expected<TypeParam>::rejection);
    EXPECT_THAT(LogLines(), IsEmpty());
}

TYPED_TEST(PhoneParts, RejectAMissingAdvertisingPacketWithALine)
{
    EXPECT_EQ(TestFixture::IdRejectionOf(std::nullopt), "adv data is nullptr");
    EXPECT_THAT(Messages(ERROR), ElementsAre("adv data is nullptr"));
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

TYPED_TEST(PhoneParts, RejectAnAdvertisingPacketWithoutManufacturerData)
{
    EXPECT_EQ(TestFixture::IdRejectionOf(simulator::AdStructure(0x01, {0x06})), Expected<TypeParam>::rejection);
    EXPECT_EQ(Messages(ERROR).size(), 1U);
    EXPECT_TRUE(HasLogWith(ERROR, "bt_adapter_le_get_scan_result_manufacturer_data api failed [0x"));
}

TYPED_TEST(PhoneParts, GiveTheNameOfTheScanResponseOfAnyCompany)
{
    for (const std::uint16_t company : std::vector<std::uint16_t>{117, 0, 65535}) {
        EXPECT_EQ(TestFixture::NameOf(NameResponse("Kitchen", company)), "Kitchen");
    }
    EXPECT_THAT(simulator::JournalText()[0],
                testing::StartsWith("bt_adapter_le_get_scan_result_manufacturer_data(1 -> 117, 9"));
}

TYPED_TEST(PhoneParts, RejectAMissingScanResponseWithALine)
{
    EXPECT_EQ(TestFixture::NameRejectionOf(std::nullopt), "scan data is nullptr");
    EXPECT_THAT(Messages(ERROR), ElementsAre("scan data is nullptr"));
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

TYPED_TEST(PhoneParts, RejectAScanResponseWithoutManufacturerDataAsTooShort)
{
    EXPECT_EQ(TestFixture::NameRejectionOf(simulator::AdStructure(0x09, BytesOf("Kitchen"))),
              "manufacturere data length is less than 2");
    ASSERT_EQ(Messages(ERROR).size(), 2U);
    EXPECT_THAT(Messages(ERROR)[0],
                testing::StartsWith("bt_adapter_le_get_scan_result_manufacturer_data api failed [0x"));
    EXPECT_EQ(Messages(ERROR)[1], Expected<TypeParam>::tooShort);
}

TYPED_TEST(PhoneParts, RejectAScanResponseWithOneByte)
{
    EXPECT_EQ(TestFixture::NameRejectionOf(Advertising({0x42})), "manufacturere data length is less than 2");
    EXPECT_THAT(Messages(ERROR), ElementsAre(Expected<TypeParam>::tooShort));
}

TYPED_TEST(PhoneParts, WithoutCallablesLogThePhoneThatNobodyHears)
{
    const auto scanner = std::make_shared<TypeParam>();
    ASSERT_TRUE(scanner->StartScan());
    simulator::ClearLog();
    simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(Marked(Expected<TypeParam>::marker, UNIQUE_ID)),
                                    NameResponse("Kitchen"));
    EXPECT_THAT(Messages(ERROR), ElementsAre("m_DeviceFoundCallback is NULL"));
    scanner->StopScan();
}

TYPED_TEST(PhoneParts, SwallowWithoutALineThatTheListenerDoesNotWantThePhone)
{
    int calls = 0;
    const auto scanner = std::make_shared<TypeParam>(
        [&](const lyn_device_info_t&) {
            ++calls;
            throw LynExceptionNotValidDevice("not mine");
        },
        nullptr);
    ASSERT_TRUE(scanner->StartScan());
    simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(Marked(Expected<TypeParam>::marker, UNIQUE_ID)),
                                    NameResponse("Kitchen"));
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(Messages(ERROR), IsEmpty());
    scanner->StopScan();
}

TYPED_TEST(PhoneParts, NeverReportAStateOfTheScan)
{
    int calls = 0;
    TypeParam scanner(nullptr, [&](ScanState) { ++calls; });
    EXPECT_TRUE(scanner.StartScan());
    EXPECT_TRUE(scanner.StopScan());
    EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace lyn::test
