// SPDX-License-Identifier: Apache-2.0
//
// NodLink devices, from the bytes on the air to the application's callback and the kernel log.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "scanner/Advertisements.h"
#include "support/App.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NodLinkScanner : public SimulatedTv {
protected:
    NodLinkScanner() : app("nodlink")
    {
        EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
        m_kernelLinesBefore = simulator::KernelLog().size();
        simulator::ClearLog();
        simulator::ClearJournal();
    }

    static Bytes DataWith(const std::vector<std::pair<std::size_t, std::uint8_t>>& changes)
    {
        Bytes data(14, 0);
        for (const auto& [offset, value] : changes) {
            data[offset] = value;
        }
        return data;
    }

    static void Deliver(const Bytes& data, std::uint16_t company = COMPANY)
    {
        simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(data, company), std::nullopt);
    }

    // Lines of the kernel log since the scan started.
    std::vector<std::string> KernelLines() const
    {
        std::vector<std::string> lines = simulator::KernelLog();
        lines.erase(lines.begin(), lines.begin() + static_cast<long>(m_kernelLinesBefore));
        return lines;
    }

    void ExpectFound(const std::string& extraData) const
    {
        EXPECT_THAT(app.phones, ElementsAre(FoundPhone{false, "", ADDRESS, "", extraData, -50}));
    }

    void ExpectDroppedInSilence() const
    {
        EXPECT_THAT(app.phones, IsEmpty());
        EXPECT_THAT(LogLines(), IsEmpty());
        EXPECT_THAT(KernelLines(), IsEmpty());
    }

    App app;

private:
    std::size_t m_kernelLinesBefore = 0;
};

TEST_F(NodLinkScanner, ReportsAPhoneWithMirroringAndVersionThree)
{
    Deliver(DataWith({{1, 0x0D}, {5, 0x04}, {6, 0x01}, {13, 0x01}}));
    ExpectFound(R"({"device_type":"mobile","nodlink_version":"3.0","sm_available":1})");
}

TEST_F(NodLinkScanner, ReportsAPhoneWithoutMirroringAndVersionTwo)
{
    Deliver(DataWith({{1, 0x0D}, {5, 0x04}, {6, 0xFE}}));
    ExpectFound(R"({"device_type":"mobile","nodlink_version":"2.0","sm_available":0})");
}

TEST_F(NodLinkScanner, ReportsAPhoneThatCannotMirrorAsNotAvailable)
{
    Deliver(DataWith({{1, 0x0D}, {5, 0x04}, {6, 0x00}, {13, 0x01}}));
    ExpectFound(R"({"device_type":"mobile","nodlink_version":"3.0","sm_available":0})");
}

TEST_F(NodLinkScanner, ReportsAPhoneWithAZeroByteForItsVersionAsVersionTwo)
{
    Deliver(DataWith({{1, 0x0D}, {5, 0x04}, {6, 0x01}, {13, 0x00}}));
    ExpectFound(R"({"device_type":"mobile","nodlink_version":"2.0","sm_available":1})");
}

TEST_F(NodLinkScanner, ReportsAPhoneWithAnyOtherByteForItsVersionAsVersionThree)
{
    Deliver(DataWith({{1, 0x0D}, {5, 0x04}, {6, 0x01}, {13, 0x80}}));
    ExpectFound(R"({"device_type":"mobile","nodlink_version":"3.0","sm_available":1})");
}

TEST_F(NodLinkScanner, DropsAPhoneWithoutItsBit)
{
    Deliver(DataWith({{1, 0x0D}, {5, 0xFB}, {6, 0x01}, {13, 0x01}}));
    ExpectDroppedInSilence();
}

TEST_F(NodLinkScanner, DropsAnAvDeviceWithOneOfItsTwoBits)
{
    Deliver(DataWith({{1, 4}, {2, 0x01}, {4, 0x20}}));
    ExpectDroppedInSilence();
}

TEST_F(NodLinkScanner, DropsAnAvDeviceWithoutItsThirdBit)
{
    Deliver(DataWith({{1, 4}, {2, 0x03}, {4, 0xDF}}));
    ExpectDroppedInSilence();
}

TEST_F(NodLinkScanner, ReportsAPhoneWithEveryBitSet)
{
    Bytes data(20, 0xFF);
    data[1] = 0x0D;
    Deliver(data);
    ExpectFound(R"({"device_type":"mobile","nodlink_version":"3.0","sm_available":1})");
}

TEST_F(NodLinkScanner, ReportsAnAvDeviceWithItsTypeAlone)
{
    Deliver(DataWith({{1, 4}, {2, 0x03}, {4, 0x20}}));
    ExpectFound(R"({"device_type":"av"})");
}

TEST_F(NodLinkScanner, DropsWhatIsNeitherInSilence)
{
    const std::vector<Bytes> rows = {
        DataWith({{1, 4}, {2, 0x01}, {4, 0x20}}), DataWith({{1, 4}, {2, 0x02}, {4, 0x20}}),
        DataWith({{1, 4}, {2, 0x03}, {4, 0xDF}}), DataWith({{1, 0x84}, {2, 0x03}, {4, 0x20}}),
        DataWith({{1, 0x0D}, {5, 0xFB}}),         DataWith({{1, 0x8D}, {5, 0x04}}),
        DataWith({{0, 0x0D}, {5, 0x04}}),         DataWith({}),
    };
    for (const Bytes& data : rows) {
        SCOPED_TRACE(testing::PrintToString(data));
        Deliver(data);
        ExpectDroppedInSilence();
    }
}

TEST_F(NodLinkScanner, DropsDevicesOfAnotherCompanyInSilence)
{
    Deliver(NodLinkData(), 118);
    Deliver(NodLinkData(), 0x7500);
    Deliver({0x42}, 118);
    ExpectDroppedInSilence();
}

TEST_F(NodLinkScanner, DropsDataShorterThanFourteenBytesInSilence)
{
    for (std::size_t length = 1; length < 14; ++length) {
        SCOPED_TRACE(length);
        Bytes data = NodLinkData();
        data.resize(length);
        Deliver(data);
        ExpectDroppedInSilence();
    }
}

TEST_F(NodLinkScanner, NeverLooksAtTheScanResponse)
{
    simulator::DeliverAdvertisement(ADDRESS, -50, Advertising(NodLinkData()), NameResponse("Kitchen"));
    EXPECT_EQ(simulator::JournalText().size(), 1U);
    ExpectFound(R"({"device_type":"mobile","nodlink_version":"3.0","sm_available":1})");
}

TEST_F(NodLinkScanner, WritesAFoundDeviceToTheKernelLogBeforeItReportsIt)
{
    std::size_t linesAtReport = 0;
    app.onPhone = [&](const FoundPhone&) { linesAtReport = KernelLines().size(); };
    Deliver(DataWith({{1, 4}, {2, 0x03}, {4, 0x20}}));
    EXPECT_EQ(linesAtReport, 1U);
    EXPECT_THAT(KernelLines(), ElementsAre(testing::MatchesRegex(
                                   "\\[LYN_SERVICE\\]\\[OnLeScanResult\\]\\[Current time : [A-Za-z0-9 :]+\\] "
                                   "address : AA:BB:CC:DD:EE:01, extra_data : \\{\"device_type\":\"av\"\\}")));
}

TEST_F(NodLinkScanner, WritesOneKernelLogLineForEachReport)
{
    Deliver(NodLinkData());
    Deliver(NodLinkData());
    EXPECT_EQ(KernelLines().size(), 2U);
    EXPECT_EQ(app.phones.size(), 2U);
}

TEST_F(NodLinkScanner, ReportsDevicesWithoutAKernelLog)
{
    simulator::SetKernelLogMode(simulator::KernelLogMode::refuseOpen);
    Deliver(NodLinkData());
    EXPECT_EQ(app.phones.size(), 1U);
    EXPECT_THAT(Messages(ERROR), IsEmpty());
}

}  // namespace
}  // namespace lyn::test
