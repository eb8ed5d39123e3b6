// SPDX-License-Identifier: Apache-2.0
//
// Foreign advertisements: nearly all that a scan hears. They must cost nothing: no exception, no memory
// beside the platform's buffer, no log line, and no byte read behind the end of the data. The platform of
// this program counts lines and calls, and hands out data in exact buffers, one allocation for each.
#include <glib.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Scanner/CKovScanner.h"
#include "Scanner/CNodLinkScanner.h"
#include "Scanner/CScreenMirroringScanner.h"
#include "lyn_platform/log.h"
#include "scanner/Advertisements.h"
#include "support/Costs.h"
#include "support/SimulatedTv.h"

namespace {

int g_lines = 0;

// What the platform finds in the packet.
struct Found {
    int result = 0;
    int company = 0;
    const lyn::simulator::Bytes* data = nullptr;
    int calls = 0;
    std::optional<int> claimedLength = std::nullopt;
    // What a platform writes although it fails; none for one that keeps to the convention.
    char* writtenOnFailure = nullptr;
    bool isWrittenOnFailure = false;
};

Found g_found;

}  // namespace

int platform_log_print(int, int, const char*, const char*, ...)
{
    ++g_lines;
    return 0;
}

int bt_adapter_le_get_scan_result_manufacturer_data(const bt_adapter_le_device_scan_result_info_s*,
                                                    bt_adapter_le_packet_type_e, int* company, char** data,
                                                    int* length)
{
    ++g_found.calls;
    if (g_found.result != 0) {
        if (g_found.isWrittenOnFailure) {
            *company = g_found.company;
            *data = g_found.writtenOnFailure;
            *length = g_found.claimedLength.value_or(0);
        }
        return g_found.result;
    }
    *company = g_found.company;
    *length = 0;
    *data = nullptr;
    if (g_found.data != nullptr) {
        *length = static_cast<int>(g_found.data->size());
        *data = static_cast<char*>(std::malloc(g_found.data->size()));
        std::copy_n(reinterpret_cast<const char*>(g_found.data->data()), *length, *data);
    }
    *length = g_found.claimedLength.value_or(*length);
    return 0;
}

namespace lyn::test {
namespace {

struct Advert {
    std::string name;
    int company;
    Bytes data;
};

Bytes Cut(Bytes data, std::size_t length)
{
    data.resize(length);
    return data;
}

struct Heard {
    int allocations = 0;
    int exceptions = 0;
    int lines = 0;
    int platformCalls = 0;
    int reports = 0;
    long blocksKept = 0;

    bool operator==(const Heard&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Heard& heard)
{
    return out << heard.allocations << " allocations, " << heard.exceptions << " exceptions, " << heard.lines
               << " lines, " << heard.platformCalls << " platform calls, " << heard.reports << " reports, "
               << heard.blocksKept << " blocks kept";
}

// The one allocation is the platform's buffer.
constexpr Heard ONE_LOOK{1, 0, 0, 1, 0, 0};
constexpr Heard ONE_LOOK_AND_ONE_LINE{1, 0, 1, 1, 0, 0};
constexpr Heard ONE_LINE_WITHOUT_A_BUFFER{0, 0, 1, 1, 0, 0};

template <typename T>
class ForeignAdvertisement : public SimulatedTv {
protected:
    ForeignAdvertisement()
    {
        EXPECT_TRUE(m_scanner->StartScan());
        m_scan = simulator::ScanRegistration();
    }

    ~ForeignAdvertisement() override { m_scanner->StopScan(); }

    Heard Hear(const Found& found)
    {
        g_found = found;
        g_lines = 0;
        m_reports = 0;
        const long blocks = LiveBlocks();
        const Costs costs = CostsOf([&] { m_scan.callback(0, m_result.Info(), m_scan.userData); });
        return {costs.allocations, costs.exceptions, g_lines, g_found.calls, m_reports, LiveBlocks() - blocks};
    }

    Heard Hear(int company, const Bytes& data) { return Hear(Found{0, company, &data, 0}); }

    static constexpr bool isNodLink = std::is_same_v<T, CNodLinkScanner>;
    static constexpr std::uint8_t marker = std::is_same_v<T, CKovScanner> ? KOV_MARKER : MIRRORING_MARKER;

    static Bytes Own() { return isNodLink ? NodLinkData() : Marked(marker, UNIQUE_ID); }

    // Everything that is nearly, but not quite, one of ours.
    static std::vector<Advert> Foreign()
    {
        const std::size_t needed = isNodLink ? 14 : 24;
        std::vector<Advert> adverts = {{"another company", 76, {0x10, 0x05, 0x01}},
                                       {"another company, one byte", 118, {0x42}},
                                       {"another company, our data", 118, Own()},
                                       {"company 0, our data", 0, Own()},
                                       {"another kind", COMPANY, Marked(99, UNIQUE_ID)}};
        for (std::size_t length = 1; length < needed; ++length) {
            adverts.push_back({"our data cut to " + std::to_string(length), COMPANY, Cut(Own(), length)});
            adverts.push_back({"zeros, " + std::to_string(length), COMPANY, Bytes(length, 0)});
        }
        if (isNodLink) {
            Bytes av = Cut({0, 4, 0x01, 0, 0x20}, 14);
            adverts.push_back({"an AV device without a bit", COMPANY, av});
            av[2] = 0x03;
            adverts.push_back({"an AV device cut to 13", COMPANY, Cut(av, 13)});
        }
        return adverts;
    }

private:
    int m_reports = 0;
    std::shared_ptr<T> m_scanner = std::make_shared<T>([this](const lyn_device_info_t&) { ++m_reports; }, nullptr);
    simulator::Registration<bt_adapter_le_scan_result_cb> m_scan;
    ScanResult m_result{Bytes{0}, Bytes{0}};
};

using Scanners = testing::Types<CScreenMirroringScanner, CNodLinkScanner, CKovScanner>;
TYPED_TEST_SUITE(ForeignAdvertisement, Scanners);

TYPED_TEST(ForeignAdvertisement, CostsOneLookAtItsManufacturerDataAndNothingElse)
{
    for (const Advert& advert : TestFixture::Foreign()) {
        SCOPED_TRACE(advert.name);
        EXPECT_EQ(this->Hear(advert.company, advert.data), ONE_LOOK);
    }
}

TYPED_TEST(ForeignAdvertisement, WithoutManufacturerDataCostsOneLine)
{
    EXPECT_EQ(this->Hear(Found{-74, 0, nullptr, 0}), ONE_LINE_WITHOUT_A_BUFFER);
}

// 117 in the company, a length, and nothing or somebody else's memory in the place of the data.
TYPED_TEST(ForeignAdvertisement, IsNotReadWhereThePlatformWritesAlthoughItFails)
{
    std::string notAllocated(32, static_cast<char>(TestFixture::marker));
    for (char* written : {static_cast<char*>(nullptr), notAllocated.data()}) {
        for (const int length : {0, 1, 24, INT_MAX, -1}) {
            SCOPED_TRACE(length);
            EXPECT_EQ(this->Hear(Found{-74, COMPANY, nullptr, 0, length, written, true}),
                      ONE_LINE_WITHOUT_A_BUFFER);
        }
    }
}

TYPED_TEST(ForeignAdvertisement, WithNullDataCostsOneLine)
{
    for (const int company : {COMPANY, std::uint16_t{76}}) {
        EXPECT_EQ(this->Hear(Found{0, company, nullptr, 0}), ONE_LINE_WITHOUT_A_BUFFER);
        EXPECT_EQ(this->Hear(Found{0, company, nullptr, 0, 24}), ONE_LINE_WITHOUT_A_BUFFER);
    }
}

TYPED_TEST(ForeignAdvertisement, IsNotReadBehindItsEndWhenThePlatformCallsItEmpty)
{
    const Bytes nothing;
    EXPECT_EQ(this->Hear(COMPANY, nothing), ONE_LOOK_AND_ONE_LINE);
    EXPECT_EQ(this->Hear(76, nothing), ONE_LOOK_AND_ONE_LINE);
}

TYPED_TEST(ForeignAdvertisement, IsDroppedWhenThePlatformClaimsANegativeLength)
{
    const Bytes own = TestFixture::Own();
    for (const int claimed : {-1, INT_MIN}) {
        SCOPED_TRACE(claimed);
        EXPECT_EQ(this->Hear(Found{0, COMPANY, &own, 0, claimed}), ONE_LOOK_AND_ONE_LINE);
    }
}

TYPED_TEST(ForeignAdvertisement, IsToldFromOneOfOursByTheSameCounters)
{
    const Heard own = this->Hear(COMPANY, TestFixture::Own());
    EXPECT_EQ(own.reports, 1);
    EXPECT_GT(own.allocations, 1);
    EXPECT_GT(own.lines, 0);
    EXPECT_EQ(own.exceptions, 0);
}

// The counters do count: allocations of every kind, and exceptions of the core.
TEST(CostsOf, CountsWhatIsAllocatedAndThrown)
{
    const std::string text(100, 'x');
    EXPECT_EQ(CostsOf([&] { std::string copy = text; }).allocations, 1);
    EXPECT_EQ(CostsOf([&] { ::g_free(::g_strdup(text.c_str())); }).allocations, 1);

    CScreenMirroringScanner scanner;
    const Costs thrown = CostsOf([&] { EXPECT_ANY_THROW(scanner.CheckVaildAdvertisement(0, nullptr)); });
    EXPECT_EQ(thrown.exceptions, 1);
    EXPECT_GT(thrown.allocations, 0);
}

}  // namespace
}  // namespace lyn::test
