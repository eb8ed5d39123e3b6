// SPDX-License-Identifier: Apache-2.0
#include "adverts/HciAdverts.h"

#include <glib-unix.h>

#include <algorithm>
#include <array>
#include <utility>

namespace lyn::linux_platform {

namespace {

/// Type, header and the longest event.
constexpr std::size_t kLongestPacket = 1 + 2 + 255;
/// Packets at one go: others want the main loop too.
constexpr int kMostPackets = 64;

Moment Now()
{
    return Moment(g_get_monotonic_time() / 1000);
}

}  // namespace

std::shared_ptr<HciAdverts> HciAdverts::Begin(HciSocket socket, AdvertHandler handler)
{
    auto adverts = std::make_shared<HciAdverts>(std::move(socket), std::move(handler));
    adverts->Watch();
    return adverts;
}

HciAdverts::HciAdverts(HciSocket socket, AdvertHandler handler)
    : m_socket(std::move(socket)),
      m_handler(std::move(handler))
{
}

HciAdverts::~HciAdverts()
{
    if (m_source != nullptr) {
        g_source_destroy(m_source);
        g_source_unref(m_source);
    }
}

void HciAdverts::Watch()
{
    const GUnixFDSourceFunc onReadable = [](gint, GIOCondition condition, gpointer adverts) -> gboolean {
        const auto self = static_cast<HciAdverts*>(adverts)->shared_from_this();
        const bool readAll = self->ReadAll();
        // The other end is gone, and has left nothing to read: this would be told for ever.
        self->m_ended = self->m_ended || (readAll && (condition & G_IO_IN) == 0);
        return self->m_ended ? G_SOURCE_REMOVE : G_SOURCE_CONTINUE;
    };
    m_source =
        g_unix_fd_source_new(m_socket.Descriptor(), static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR));
    g_source_set_callback(m_source, G_SOURCE_FUNC(onReadable), this, nullptr);
    g_source_attach(m_source, nullptr);
}

bool HciAdverts::ReadAll()
{
    std::array<std::uint8_t, kLongestPacket> buffer{};
    for (int i = 0; i < kMostPackets && !m_ended; ++i) {
        std::size_t length = 0;
        switch (m_socket.Read(buffer, length)) {
        case HciSocket::Got::packet:
            TakePacket(std::span(buffer).first(length));
            break;
        case HciSocket::Got::nothing:
            return true;
        case HciSocket::Got::failure:
            m_ended = true;
            break;
        }
    }
    return m_ended;
}

void HciAdverts::TakePacket(std::span<const std::uint8_t> packet)
{
    const Moment now = Now();
    for (const AdvertReport& report : ParseReports(packet)) {
        if (auto whole = m_chains.Take(report, now)) {
            const auto adverts = m_joiner.Take(std::move(*whole), now);
            AwaitDeadline();
            Deliver(adverts);
        }
    }
}

void HciAdverts::OnTime()
{
    m_awaited.reset();
    const Moment now = Now();
    // The response may have come while the main loop was busy.
    if (ReadAll()) {
        const auto adverts = m_joiner.TakeOverdue(now);
        Deliver(adverts);
    }
    AwaitDeadline();
}

void HciAdverts::AwaitDeadline()
{
    const auto next = m_joiner.NextDeadline();
    if (!next || m_awaited) {
        return;  // A timer that comes too early finds nothing to do, and sets the next one.
    }
    m_awaited = next;
    const Moment left = std::max(*next - Now(), Moment(0));
    m_timer = Timer(static_cast<unsigned>(left.count()), [self = weak_from_this()] {
        if (const auto adverts = self.lock()) {
            adverts->OnTime();
        }
    });
}

void HciAdverts::Deliver(const std::vector<Advert>& adverts) const
{
    for (const Advert& advert : adverts) {
        m_handler(advert);
    }
}

}  // namespace lyn::linux_platform
