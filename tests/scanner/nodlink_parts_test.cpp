// SPDX-License-Identifier: Apache-2.0
//
// How the NodLink scanner reads one advertisement, step by step.
#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "Common/LynException.h"
#include "Scanner/CNodLinkScanner.h"
#include "scanner/Advertisements.h"
#include "support/SimulatedTv.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Changes = std::vector<std::pair<std::size_t, std::uint8_t>>;

Bytes With(const Changes& changes)
{
    Bytes data(14, 0);
    for (const auto& [offset, value] : changes) {
        data[offset] = value;
    }
    return data;
}

class NodLinkParts : public SimulatedTv {
protected:
    static const char* Chars(const Bytes& data) { return reinterpret_cast<const char*>(data.data()); }

    std::string RejectionOf(const Bytes& data)
    {
        return ThrownBy<LynExceptionNotValidDevice>([&] { scanner.GetDeviceType(Chars(data)); });
    }

    std::string ExtraDataOf(const std::optional<Bytes>& advertising)
    {
        ScanResult result(advertising);
        return scanner.BuildExtraData(result.Info());
    }

    std::string ExtraDataRejectionOf(const std::optional<Bytes>& advertising)
    {
        return ThrownBy<LynExceptionNotValidDevice>([&] { ExtraDataOf(advertising); });
    }

    CNodLinkScanner scanner;
};

TEST_F(NodLinkParts, TakeVersionTwoForAZeroByteAndThreeForAnyOther)
{
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const Bytes data = With({{13, static_cast<std::uint8_t>(byte)}});
        EXPECT_EQ(scanner.GetVersion(Chars(data)), byte == 0 ? "2.0" : "3.0");
    }
}

TEST_F(NodLinkParts, TakeTheLowestBitForMirroring)
{
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const Bytes data = With({{6, static_cast<std::uint8_t>(byte)}});
        EXPECT_EQ(scanner.GetScreeeMirroringAvalaiable(Chars(data)), byte & 1);
    }
}

TEST_F(NodLinkParts, TakeAPhoneForKindThirteenWithItsBit)
{
    for (int byte = 0; byte < 256; ++byte) {
        SCOPED_TRACE(byte);
        const Bytes data = With({{1, 13}, {5, static_cast<std::uint8_t>(byte)}});
        if ((byte & 0x04) != 0) {
            EXPECT_EQ(scanner.GetDeviceType(Chars(data)), "mobile");
        } else {
            EXPECT_EQ(RejectionOf(data), "Not Nodlink device");
        }
    }
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(NodLinkParts, TakeAnAvDeviceForKindFourWithBothBitsOfOneByteAndOneOfAnother)
{
    for (int low = 0; low < 256; ++low) {
        for (const int high : {0x00, 0x20, 0xFF, 0xDF, 0x10}) {
            SCOPED_TRACE(std::to_string(low) + " " + std::to_string(high));
            const Bytes data =
                With({{1, 4}, {2, static_cast<std::uint8_t>(low)}, {4, static_cast<std::uint8_t>(high)}});
            if ((low & 3) == 3 && (high & 0x20) != 0) {
                EXPECT_EQ(scanner.GetDeviceType(Chars(data)), "av");
            } else {
                EXPECT_EQ(RejectionOf(data), "Not Nodlink device");
            }
        }
    }
}

TEST_F(NodLinkParts, RejectAnAvDeviceWithOneOfItsTwoBits)
{
    EXPECT_EQ(RejectionOf(With({{1, 4}, {2, 0x01}, {4, 0x20}})), "Not Nodlink device");
}

TEST_F(NodLinkParts, RejectEveryOtherKind)
{
    for (int kind = 0; kind < 256; ++kind) {
        if (kind == 13 || kind == 4) {
            continue;
        }
        SCOPED_TRACE(kind);
        const Bytes data = With({{1, static_cast<std::uint8_t>(kind)}, {2, 0xFF}, {4, 0xFF}, {5, 0xFF}});
        EXPECT_EQ(RejectionOf(data), "Not Nodlink device");
    }
}

TEST_F(NodLinkParts, RejectAPhoneThatHasOnlyTheBitsOfAnAvDevice)
{
    EXPECT_EQ(RejectionOf(With({{1, 13}, {2, 0x03}, {4, 0x20}})), "Not Nodlink device");
    EXPECT_EQ(RejectionOf(With({{1, 4}, {5, 0x04}})), "Not Nodlink device");
}

TEST_F(NodLinkParts, RejectNullDataWithALine)
{
    EXPECT_EQ(ThrownBy<LynExceptionNotValidDevice>([&] { scanner.GetDeviceType(nullptr); }), "data is nullptr");
    EXPECT_EQ(ThrownBy<LynExceptionNotValidDevice>([&] { scanner.GetScreeeMirroringAvalaiable(nullptr); }),
              "data is nullptr");
    EXPECT_THAT(Messages(ERROR), ElementsAre("data is nullptr", "data is nullptr"));
    EXPECT_THAT(FunctionsThatSay("data is nullptr"), ElementsAre("GetDeviceType", "GetScreeeMirroringAvalaiable"));
}

TEST_F(NodLinkParts, WriteAPhoneAsOneLineOfJsonInTheOrderOfTheKeys)
{
    EXPECT_EQ(ExtraDataOf(Advertising(With({{1, 13}, {5, 0x04}, {6, 0x01}, {13, 0x01}}))),
              R"({"device_type":"mobile","nodlink_version":"3.0","sm_available":1})");
    EXPECT_EQ(ExtraDataOf(Advertising(With({{1, 13}, {5, 0x04}}))),
              R"({"device_type":"mobile","nodlink_version":"2.0","sm_available":0})");
}

TEST_F(NodLinkParts, WriteAnAvDeviceWithItsTypeAlone)
{
    EXPECT_EQ(ExtraDataOf(Advertising(With({{1, 4}, {2, 0x03}, {4, 0x20}, {6, 0x01}, {13, 0x01}}))),
              R"({"device_type":"av"})");
}

TEST_F(NodLinkParts, ReadTheAdvertisingPacketAlone)
{
    ScanResult result(Advertising(NodLinkData()), Advertising(BytesOf("something else")));
    scanner.BuildExtraData(result.Info());
    EXPECT_THAT(simulator::JournalText(),
                ElementsAre("bt_adapter_le_get_scan_result_manufacturer_data(0 -> 117, 14)"));
}

TEST_F(NodLinkParts, RejectAMissingAdvertisingPacketWithALine)
{
    EXPECT_EQ(ExtraDataRejectionOf(std::nullopt), "adv data is nullptr");
    EXPECT_THAT(Messages(ERROR), ElementsAre("adv data is nullptr"));
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

TEST_F(NodLinkParts, RejectAnotherCompanyBeforeAnyByteIsLookedAt)
{
    for (const std::uint16_t company : std::vector<std::uint16_t>{0, 116, 118, 65535}) {
        SCOPED_TRACE(company);
        EXPECT_EQ(ExtraDataRejectionOf(Advertising(NodLinkData(), company)), "Not Calyxon device");
        EXPECT_EQ(ExtraDataRejectionOf(Advertising({0x42}, company)), "Not Calyxon device");
    }
    EXPECT_THAT(LogLines(), IsEmpty());
}

TEST_F(NodLinkParts, RejectAPacketWithoutManufacturerDataAsOneOfAnotherCompany)
{
    EXPECT_EQ(ExtraDataRejectionOf(simulator::AdStructure(0x01, {0x06})), "Not Calyxon device");
    EXPECT_EQ(Messages(ERROR).size(), 1U);
    EXPECT_TRUE(HasLogWith(ERROR, "bt_adapter_le_get_scan_result_manufacturer_data api failed [0x"));
}

TEST_F(NodLinkParts, RejectDataShorterThanFourteenBytes)
{
    const Bytes av = With({{1, 4}, {2, 0x03}, {4, 0x20}});
    for (const Bytes& good : {NodLinkData(), av}) {
        for (std::size_t length = 1; length < 14; ++length) {
            SCOPED_TRACE(length);
            EXPECT_EQ(
                ExtraDataRejectionOf(Advertising(Bytes(good.begin(), good.begin() + static_cast<long>(length)))),
                "Not Nodlink device");
        }
    }
}

TEST_F(NodLinkParts, TakeDataLongerThanFourteenBytes)
{
    Bytes data = NodLinkData();
    data.push_back(0xFF);
    EXPECT_EQ(ExtraDataOf(Advertising(data)),
              R"({"device_type":"mobile","nodlink_version":"3.0","sm_available":1})");
}

TEST_F(NodLinkParts, RefuseToAdvertiseWithAWarningAndNothingElse)
{
    scanner.StartAdvertisement(50);
    EXPECT_THAT(Messages(WARN), ElementsAre("Not supported"));
    scanner.StopAdvertisement();
    EXPECT_THAT(Messages(WARN), ElementsAre("Not supported", "Not supported"));
    EXPECT_THAT(simulator::JournalText(), IsEmpty());
}

TEST_F(NodLinkParts, SwallowWithoutALineThatTheListenerDoesNotWantThePhone)
{
    int calls = 0;
    const auto listening = std::make_shared<CNodLinkScanner>(
        [&](const lyn_device_info_t&) {
            ++calls;
            throw LynExceptionNotValidDevice("not mine");
        },
        nullptr);
    ASSERT_TRUE(listening->StartScan());
    simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(NodLinkData()), std::nullopt);
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(Messages(ERROR), IsEmpty());
    listening->StopScan();
}

TEST_F(NodLinkParts, NeverReportAStateOfTheScan)
{
    int calls = 0;
    CNodLinkScanner silent(nullptr, [&](ScanState) { ++calls; });
    EXPECT_TRUE(silent.StartScan());
    EXPECT_TRUE(silent.StopScan());
    EXPECT_EQ(calls, 0);
}

}  // namespace
}  // namespace lyn::test
