// SPDX-License-Identifier: Apache-2.0
//
// Foreign packets as they come from the air, through the simulated platform: no exception, and no allocation
// but the copy of the manufacturer data that the platform hands over. Log lines stay where they are promised.
#include <gmock/gmock.h>

#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "Scanner/CKovScanner.h"
#include "Scanner/CNodLinkScanner.h"
#include "Scanner/CScreenMirroringScanner.h"
#include "scanner/Advertisements.h"
#include "support/Costs.h"
#include "support/LogLines.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using Packet = std::optional<Bytes>;
using Lines = std::vector<std::string>;

constexpr int ALL_LINES = 3;
constexpr int NO_LINES = 7;
constexpr std::uint16_t OTHER_COMPANY = 76;

const Lines SILENT;
const Lines NO_PACKET = {"adv data is nullptr"};
const Lines NO_DATA = {"bt_adapter_le_get_scan_result_manufacturer_data api failed [0xffffffb6]"};
const Lines EMPTY_DATA = {"exception lenth is less then 1"};

struct Kind {
    std::string name;
    Packet advertising;
    int allocations;
    Lines lines;
};

Bytes OwnData(std::uint8_t marker)
{
    return Marked(marker, UNIQUE_ID);
}

Bytes Front(const Bytes& bytes, std::size_t size)
{
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size)};
}

// Foreign to all three.
std::vector<Kind> Kinds()
{
    const Bytes flags = simulator::AdStructure(0x01, {0x06});
    const Bytes own = OwnData(MIRRORING_MARKER);
    return {
        {"another company", Advertising({0x10, 0x05, 0x01}, OTHER_COMPANY), 1, SILENT},
        {"another company, our data", Advertising(own, OTHER_COMPANY), 1, SILENT},
        {"another marker", Advertising(OwnData(99)), 1, SILENT},
        {"our data, cut short", Advertising(Front(own, 13)), 1, SILENT},
        {"one byte", Advertising({0x42}), 1, SILENT},
        {"company only", Advertising({}), 1, EMPTY_DATA},
        {"another company only", Advertising({}, OTHER_COMPANY), 1, EMPTY_DATA},
        {"no manufacturer data", flags, 0, NO_DATA},
        {"an empty packet", Bytes{}, 0, NO_DATA},
        {"a structure beyond the end", Front(Advertising(own), 10), 0, NO_DATA},
        {"half a company", Bytes{0x02, 0xFF, 0x75}, 0, NO_DATA},
        {"no packet", std::nullopt, 0, NO_PACKET},
    };
}

std::vector<Packet> ScanResponses()
{
    return {std::nullopt,
            Bytes{},
            Bytes{0x00},
            NameResponse("Name"),
            simulator::ManufacturerData(COMPANY, {}),
            NameResponse("Name", OTHER_COMPANY)};
}

template <typename T>
class ForeignPacket : public SimulatedTv {
protected:
    ForeignPacket()
    {
        EXPECT_TRUE(m_scanner->StartScan());
        m_scan = simulator::ScanRegistration();
        simulator::SetJournal(false);
    }

    ~ForeignPacket() override { m_scanner->StopScan(); }

    void Hear(ScanResult& result) { m_scan.callback(0, result.Info(), m_scan.userData); }

    Lines LinesOf(ScanResult& result)
    {
        simulator::SetLogCapture(ALL_LINES);
        simulator::ClearLog();
        Hear(result);
        Lines lines;
        for (const Line& line : LogLines()) {
            lines.push_back(line.message);
        }
        return lines;
    }

    void ExpectCosts(const Kind& kind, const Packet& scanResponse)
    {
        ScanResult result(kind.advertising, scanResponse);
        EXPECT_EQ(LinesOf(result), kind.lines);
        simulator::SetLogCapture(NO_LINES);
        simulator::SetLogListener({});  // To listen takes memory too.
        const long blocks = LiveBlocks();
        const Costs costs = CostsOf([&] { Hear(result); });
        EXPECT_EQ(costs.exceptions, 0);
        EXPECT_EQ(costs.allocations, kind.allocations);
        EXPECT_EQ(LiveBlocks(), blocks);
        EXPECT_EQ(m_reports, 0);
    }

private:
    int m_reports = 0;
    std::shared_ptr<T> m_scanner = std::make_shared<T>([this](const lyn_device_info_t&) { ++m_reports; }, nullptr);
    simulator::Registration<bt_adapter_le_scan_result_cb> m_scan;
};

using Scanners = testing::Types<CScreenMirroringScanner, CNodLinkScanner, CKovScanner>;
TYPED_TEST_SUITE(ForeignPacket, Scanners);

TYPED_TEST(ForeignPacket, CostsNoExceptionAndNothingButThePlatformsCopy)
{
    for (const Kind& kind : Kinds()) {
        int number = 0;
        for (const Packet& scanResponse : ScanResponses()) {
            SCOPED_TRACE(kind.name + ", scan response " + std::to_string(number++));
            this->ExpectCosts(kind, scanResponse);
        }
    }
}

TYPED_TEST(ForeignPacket, OfAnotherServiceCostsNoMore)
{
    const Kind mirroring{"mirroring", Advertising(OwnData(MIRRORING_MARKER)), 1, SILENT};
    const Kind kov{"kov", Advertising(OwnData(KOV_MARKER)), 1, SILENT};
    const Kind nodLink{"nodlink", Advertising(NodLinkData()), 1, SILENT};
    if constexpr (!std::is_same_v<TypeParam, CScreenMirroringScanner>) {
        this->ExpectCosts(mirroring, NameResponse("Name"));
    }
    if constexpr (!std::is_same_v<TypeParam, CKovScanner>) {
        this->ExpectCosts(kov, NameResponse("Name"));
    }
    if constexpr (!std::is_same_v<TypeParam, CNodLinkScanner>) {
        this->ExpectCosts(nodLink, std::nullopt);
    }
}

}  // namespace
}  // namespace lyn::test
