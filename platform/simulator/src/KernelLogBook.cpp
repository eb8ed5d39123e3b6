// SPDX-License-Identifier: Apache-2.0
#include "KernelLogBook.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace lyn::simulator {

namespace {

constexpr std::size_t kMaxOpen = 64;
constexpr std::size_t kMaxLines = 20'000;

/// Takes what has been written from our end. True once the writer has closed his end.
bool TakeLines(int end, std::vector<std::string>& lines)
{
    while (true) {
        const ssize_t size = ::recv(end, nullptr, 0, MSG_DONTWAIT | MSG_PEEK | MSG_TRUNC);
        if (size <= 0) {
            return size == 0 || errno != EAGAIN;
        }
        std::string line(static_cast<std::size_t>(size), '\0');
        if (::recv(end, line.data(), line.size(), MSG_DONTWAIT) == size && lines.size() < kMaxLines) {
            lines.push_back(std::move(line));
        }
    }
}

}  // namespace

void KernelLogBook::Reset()
{
    Collect();
    m_lines.clear();
    m_mode = KernelLogMode::capture;
    m_capturing = true;
}

void KernelLogBook::SetMode(KernelLogMode mode)
{
    m_mode = mode;
}

int KernelLogBook::Open()
{
    if (m_mode == KernelLogMode::refuseOpen) {
        return -1;
    }
    if (m_mode == KernelLogMode::failWrite) {
        return ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    }
    Collect();
    std::array<int, 2> ends{};
    if (!m_capturing || m_mode == KernelLogMode::discard || m_open.size() >= kMaxOpen ||
        ::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        return ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    }
    m_open.push_back(ends[0]);
    return ends[1];
}

std::vector<std::string> KernelLogBook::Lines()
{
    m_capturing = true;
    Collect();
    return m_lines;
}

void KernelLogBook::Collect()
{
    std::erase_if(m_open, [this](int end) {
        if (!TakeLines(end, m_lines)) {
            return false;
        }
        ::close(end);
        return true;
    });
}

}  // namespace lyn::simulator
