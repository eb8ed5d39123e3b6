// SPDX-License-Identifier: Apache-2.0
#include <sys/socket.h>

#include <array>

#include "Packets.h"
#include "adverts/HciAdverts.h"

namespace lyn::linux_platform::test {
namespace {

/// A socket that a test writes to in the kernel's place.
class HciAdvertsTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        std::array<int, 2> ends{};
        ASSERT_EQ(::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()), 0);
        m_kernel = HciSocket(ends[1]);
        m_adverts = HciAdverts::Begin(HciSocket(ends[0]), [this](const Advert& advert) {
            m_heard.push_back(advert);
            if (m_onAdvert) {
                m_onAdvert();
            }
        });
    }

    void Send(const Bytes& packet) const
    {
        ASSERT_EQ(::send(m_kernel.Descriptor(), packet.data(), packet.size(), MSG_NOSIGNAL),
                  static_cast<ssize_t>(packet.size()));
    }

    template <typename Done>
    static void RunUntil(Done done)
    {
        const gint64 limit = g_get_monotonic_time() + 20 * G_USEC_PER_SEC;
        while (!done() && g_get_monotonic_time() < limit) {
            g_main_context_iteration(nullptr, FALSE);
        }
        EXPECT_TRUE(done());
    }

    HciSocket m_kernel{-1};
    std::shared_ptr<HciAdverts> m_adverts;
    std::vector<Advert> m_heard;
    std::function<void()> m_onAdvert;
};

TEST_F(HciAdvertsTest, JoinsWhatTheSocketYields)
{
    Send(LegacyEvent({{.eventType = 0, .device = 1, .data = PhoneData()}}));
    Send(LegacyEvent({{.eventType = 4, .device = 1, .data = NameData()}}));
    RunUntil([this] { return !m_heard.empty(); });
    EXPECT_EQ(m_heard[0].address, Address(1));
    EXPECT_EQ(m_heard[0].advertising, PhoneData());
    EXPECT_EQ(m_heard[0].response, NameData());
}

TEST_F(HciAdvertsTest, DeliversAPacketAloneWhenNoResponseComes)
{
    Send(ExtendedEvent({{.eventType = kLegacyInd, .device = 1, .data = PhoneData()}}));
    Send(ExtendedEvent({{.eventType = kLegacyInd, .device = 2, .data = PhoneData()}}));
    RunUntil([this] { return m_heard.size() == 2; });
    EXPECT_EQ(m_heard[0].address, Address(1));
    EXPECT_EQ(m_heard[0].response, std::nullopt);
    EXPECT_EQ(m_heard[1].address, Address(2));
}

TEST_F(HciAdvertsTest, ABusyMainLoopDoesNotSeparateAResponseFromItsPacket)
{
    Send(LegacyEvent({{.eventType = 0, .device = 1, .data = PhoneData()}}));
    while (g_main_context_iteration(nullptr, FALSE) != FALSE) {}
    Send(LegacyEvent({{.eventType = 4, .device = 1, .data = NameData()}}));
    g_usleep(3 * static_cast<gulong>(std::chrono::microseconds(PacketJoiner::kResponseWait).count()));
    RunUntil([this] { return !m_heard.empty(); });
    EXPECT_EQ(m_heard[0].response, NameData());
}

TEST_F(HciAdvertsTest, PutsLongDataTogether)
{
    const Bytes data = Joined(Manufacturer(117, Bytes(200, 7)), Bytes(100, 0));
    const Bytes front(data.begin(), data.begin() + 150);
    const Bytes back(data.begin() + 150, data.end());
    Send(ExtendedEvent({{.eventType = 0x20, .device = 1, .data = front, .set = 3}}));
    Send(ExtendedEvent({{.eventType = 0x00, .device = 1, .data = back, .set = 3}}));
    RunUntil([this] { return !m_heard.empty(); });
    EXPECT_EQ(m_heard[0].advertising, data);
}

TEST_F(HciAdvertsTest, SurvivesGarbage)
{
    Send({0xFF});
    Send(Bytes(258, 0xFF));
    Send({kHciEventPacket, kLeMetaEvent, 0xFF, kAdvertisingReport, 0xFF});
    Send(LegacyEvent({{.eventType = 3, .device = 1, .data = PhoneData()}}));
    RunUntil([this] { return !m_heard.empty(); });
    EXPECT_EQ(m_heard.size(), 1U);
}

TEST_F(HciAdvertsTest, MayBeDestroyedByWhoeverIsCalled)
{
    m_onAdvert = [this] { m_adverts.reset(); };
    Send(LegacyEvent({{.eventType = 3, .device = 1, .data = PhoneData()}, {.eventType = 3, .data = PhoneData()}}));
    RunUntil([this] { return !m_heard.empty(); });
    EXPECT_EQ(m_adverts, nullptr);
}

TEST_F(HciAdvertsTest, EndsWhenTheSocketDoes)
{
    Send(LegacyEvent({{.eventType = 0, .device = 1, .data = PhoneData()}}));
    m_kernel = HciSocket(-1);
    RunUntil([this] { return m_adverts->HasEnded(); });
    RunUntil([this] { return m_heard.size() == 1; });
}

TEST(HciSocket, KnowsTheAdapterOfAPath)
{
    EXPECT_EQ(HciIndex("/org/bluez/hci0"), 0U);
    EXPECT_EQ(HciIndex("/org/bluez/hci12"), 12U);
    for (const char* const path : {"", "/", "/org/bluez", "/org/bluez/hci", "/org/bluez/hci1x",
                                   "/org/bluez/hci0/dev_1", "/org/bluez/hci99999999999"}) {
        EXPECT_EQ(HciIndex(path), std::nullopt) << path;
    }
}

TEST(HciSocket, SaysWhyItCannotBeOpened)
{
    int error = 0;
    EXPECT_FALSE(HciSocket::Open(65'000, error).has_value());
    EXPECT_NE(error, 0);
}

}  // namespace
}  // namespace lyn::linux_platform::test
