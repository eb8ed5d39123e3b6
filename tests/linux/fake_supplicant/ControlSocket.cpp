// SPDX-License-Identifier: Apache-2.0
#include "ControlSocket.h"

#include <fcntl.h>
#include <glib.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstring>
#include <utility>

namespace lyn::linux_tests {

const std::string ControlSocket::kStatus =
    std::string("wpa_state=COMPLETED\np2p_device_address=") + kAddress + "\naddress=02:00:00:00:00:00\n";

ControlSocket::ControlSocket(std::filesystem::path path) : m_path(std::move(path))
{
    Open();
}

ControlSocket::~ControlSocket()
{
    Close();
    ::unlink(m_path.c_str());
}

void ControlSocket::AnswerWith(std::vector<std::string> datagrams, int delayMs)
{
    const std::lock_guard lock(m_mutex);
    m_answers = std::move(datagrams);
    m_delayMs = delayMs;
}

void ControlSocket::DieAtNext()
{
    const std::lock_guard lock(m_mutex);
    m_dies = true;
}

void ControlSocket::Return()
{
    Close();
    {
        const std::lock_guard lock(m_mutex);
        m_dies = false;
    }
    Open();
}

std::vector<std::string> ControlSocket::Commands() const
{
    const std::lock_guard lock(m_mutex);
    return m_commands;
}

void ControlSocket::Open()
{
    sockaddr_un own{};
    own.sun_family = AF_UNIX;
    std::strncpy(own.sun_path, m_path.c_str(), sizeof own.sun_path - 1);
    ::unlink(m_path.c_str());
    m_descriptor = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    g_assert_cmpint(::bind(m_descriptor, reinterpret_cast<const sockaddr*>(&own), sizeof own), ==, 0);
    g_assert_cmpint(::pipe2(m_end, O_CLOEXEC), ==, 0);
    m_thread = std::thread([this] { Work(); });
}

void ControlSocket::Close()
{
    ::close(m_end[1]);
    m_thread.join();
    ::close(m_end[0]);
}

void ControlSocket::Work()
{
    for (;;) {
        std::array<pollfd, 2> both = {{{m_descriptor, POLLIN, 0}, {m_end[0], POLLIN, 0}}};
        ::poll(both.data(), both.size(), -1);
        if (both[1].revents != 0) {
            break;
        }
        Serve(m_descriptor);
        const std::lock_guard lock(m_mutex);
        if (m_dies) {
            break;
        }
    }
    ::close(m_descriptor);
}

void ControlSocket::Serve(int descriptor)
{
    std::array<char, 64> command{};
    sockaddr_un peer{};
    socklen_t size = sizeof peer;
    auto* const address = reinterpret_cast<sockaddr*>(&peer);
    const ssize_t length = ::recvfrom(descriptor, command.data(), command.size(), 0, address, &size);
    std::vector<std::string> answers;
    int delayMs = 0;
    {
        const std::lock_guard lock(m_mutex);
        m_commands.emplace_back(command.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
        answers = m_dies ? std::vector<std::string>() : m_answers;
        delayMs = m_delayMs;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
    for (const std::string& answer : answers) {
        ::sendto(descriptor, answer.data(), answer.size(), MSG_DONTWAIT, address, size);
    }
}

}  // namespace lyn::linux_tests
