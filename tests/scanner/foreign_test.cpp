// SPDX-License-Identifier: Apache-2.0
//
// Foreign advertisements: nearly all that a scan hears. They must cost nothing: no exception, no memory
// beside the platform's buffer, no log line, and no byte read behind the end of the data. This program
// counts exceptions, allocations and lines itself, and its platform hands out data in exact buffers.
#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <climits>
#include <cstdlib>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

#include "Scanner/CKovScanner.h"
#include "Scanner/CNodLinkScanner.h"
#include "Scanner/CScreenMirroringScanner.h"
#include "lyn_platform/log.h"
#include "scanner/Advertisements.h"
#include "support/SimulatedTv.h"

namespace {

std::atomic<int> g_allocations{0};
std::atomic<int> g_exceptions{0};
std::atomic<int> g_lines{0};

// What the platform finds in the packet.
struct Found {
    int result = 0;
    int company = 0;
    const lyn::simulator::Bytes* data = nullptr;
    int calls = 0;
    std::optional<int> claimedLength = std::nullopt;
};

Found g_found;

void* CountedAllocation(std::size_t size)
{
    ++g_allocations;
    return std::malloc(size != 0 ? size : 1);
}

void* CountedOrThrow(std::size_t size)
{
    void* const memory = CountedAllocation(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t size)
{
    return CountedOrThrow(size);
}

void* operator new[](std::size_t size)
{
    return CountedOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return CountedAllocation(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return CountedAllocation(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

// The linker leads every throw of this program here.
extern "C" [[noreturn]] void __real___cxa_throw(void* exception, std::type_info* type, void (*destroy)(void*));
extern "C" [[noreturn]] void __wrap___cxa_throw(void* exception, std::type_info* type, void (*destroy)(void*))
{
    ++g_exceptions;
    __real___cxa_throw(exception, type, destroy);
}

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

struct Costs {
    int allocations = 0;
    int exceptions = 0;
    int lines = 0;
    int platformCalls = 0;
    int reports = 0;

    bool operator==(const Costs&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Costs& costs)
{
    return out << costs.allocations << " allocations, " << costs.exceptions << " exceptions, " << costs.lines
               << " lines, " << costs.platformCalls << " platform calls, " << costs.reports << " reports";
}

constexpr Costs ONE_LOOK{0, 0, 0, 1, 0};

template <typename T>
class ForeignAdvertisement : public SimulatedTv {
protected:
    ForeignAdvertisement()
    {
        EXPECT_TRUE(m_scanner->StartScan());
        m_scan = simulator::ScanRegistration();
    }

    ~ForeignAdvertisement() override { m_scanner->StopScan(); }

    Costs Hear(const Found& found)
    {
        g_found = found;
        m_reports = 0;
        g_allocations = 0;
        g_exceptions = 0;
        g_lines = 0;
        m_scan.callback(0, m_result.Info(), m_scan.userData);
        return {g_allocations, g_exceptions, g_lines, g_found.calls, m_reports};
    }

    Costs Hear(int company, const Bytes& data) { return Hear(Found{0, company, &data, 0}); }

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
    EXPECT_EQ(this->Hear(Found{-74, 0, nullptr, 0}), (Costs{0, 0, 1, 1, 0}));
}

TYPED_TEST(ForeignAdvertisement, IsNotReadBehindItsEndWhenThePlatformCallsItEmpty)
{
    const Bytes nothing;
    const Costs costs = this->Hear(COMPANY, nothing);
    EXPECT_EQ(costs.reports, 0);
    EXPECT_EQ(costs.lines, 1);
    EXPECT_EQ(costs.exceptions, 1);
}

TYPED_TEST(ForeignAdvertisement, IsDroppedWhenThePlatformClaimsANegativeLength)
{
    const Bytes own = TestFixture::Own();
    for (const int claimed : {-1, INT_MIN}) {
        SCOPED_TRACE(claimed);
        const Costs costs = this->Hear(Found{0, COMPANY, &own, 0, claimed});
        EXPECT_EQ(costs.reports, 0);
        EXPECT_EQ(costs.lines, 1);
    }
}

// The counters do count: what costs something is seen.
TYPED_TEST(ForeignAdvertisement, IsToldFromOneOfOursByTheSameCounters)
{
    const Costs own = this->Hear(COMPANY, TestFixture::Own());
    EXPECT_EQ(own.reports, 1);
    EXPECT_GT(own.allocations, 0);
    EXPECT_GT(own.lines, 0);
    EXPECT_EQ(own.exceptions, 0);

    const Costs null = this->Hear(Found{0, COMPANY, nullptr, 0});
    EXPECT_EQ(null.exceptions, 1);
    EXPECT_EQ(null.lines, 1);
    EXPECT_EQ(null.reports, 0);
}

}  // namespace
}  // namespace lyn::test
