// SPDX-License-Identifier: Apache-2.0
#include "wifi/DirectAddress.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <vector>

#include "bus/Bus.h"
#include "loop/Deadline.h"

namespace lyn::linux_platform {

namespace fs = std::filesystem;

namespace {

constexpr const char* kKey = "p2p_device_address=";
constexpr std::size_t kAddressLength = 17;

class Socket {
public:
    Socket() : m_descriptor(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}
    ~Socket()
    {
        if (m_descriptor >= 0) {
            ::close(m_descriptor);
        }
    }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;

    int Descriptor() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// Gives the socket an address that the kernel chooses: the answer needs one.
bool BindAnywhere(int socket)
{
    sockaddr_un own{};
    own.sun_family = AF_UNIX;
    return ::bind(socket, reinterpret_cast<const sockaddr*>(&own), offsetof(sockaddr_un, sun_path)) == 0;
}

bool ConnectTo(int socket, const std::string& path)
{
    sockaddr_un peer{};
    peer.sun_family = AF_UNIX;
    if (path.size() >= sizeof peer.sun_path) {
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(peer.sun_path, path.c_str(), path.size() + 1);
    return ::connect(socket, reinterpret_cast<const sockaddr*>(&peer), sizeof peer) == 0;
}

/// False, with errno set, when none comes until then.
bool WaitForAnswer(int socket, const Deadline& deadline)
{
    pollfd answer{socket, POLLIN, 0};
    int ready = 0;
    do {
        ready = ::poll(&answer, 1, deadline.LeftMs());
        // A signal to the application is no answer.
    } while (ready < 0 && errno == EINTR && !deadline.IsOver());
    if (ready != 1) {
        errno = ETIMEDOUT;
    }
    return ready == 1;
}

/// The answer to STATUS of one control socket; empty, with errno set, when there is none until then.
std::string AskForStatus(const std::string& path, const Deadline& deadline)
{
    constexpr const char* kCommand = "STATUS";
    const Socket socket;
    if (socket.Descriptor() < 0 || !BindAnywhere(socket.Descriptor()) || !ConnectTo(socket.Descriptor(), path) ||
        ::send(socket.Descriptor(), kCommand, std::strlen(kCommand), MSG_DONTWAIT) < 0) {
        return {};
    }
    if (!WaitForAnswer(socket.Descriptor(), deadline)) {
        return {};
    }
    std::array<char, 4096> text{};
    const ssize_t length = ::recv(socket.Descriptor(), text.data(), text.size(), MSG_DONTWAIT);
    if (length == 0) {
        errno = ENODATA;
    }
    return length > 0 ? std::string(text.data(), static_cast<std::size_t>(length)) : std::string();
}

fs::path Folder()
{
    const char* const asked = std::getenv("LYN_WPA_CTRL_DIR");
    return asked != nullptr && *asked != '\0' ? asked : "/run/wpa_supplicant";
}

std::vector<fs::path> ControlSockets(const fs::path& folder)
{
    std::vector<fs::path> sockets;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        if (entry->is_socket(error)) {
            sockets.push_back(entry->path());
        }
    }
    std::sort(sockets.begin(), sockets.end());
    return sockets;
}

bool IsAddress(const std::string& text)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (i % 3 == 2 ? text[i] != ':' : kDigits.find(text[i]) == std::string_view::npos) {
            return false;
        }
    }
    return text.size() == kAddressLength;
}

}  // namespace

std::string DirectAddressIn(const std::string& status)
{
    std::istringstream lines(status);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(kKey) && IsAddress(line.substr(std::strlen(kKey)))) {
            return line.substr(std::strlen(kKey));
        }
    }
    return {};
}

std::string ReadDirectAddress()
{
    const fs::path folder = Folder();
    std::string reason = "holds no control socket of wpa_supplicant";
    const Deadline deadline(kCallLimitMs);
    for (const fs::path& socket : ControlSockets(folder)) {
        const std::string status = AskForStatus(socket.string(), deadline);
        std::string address = DirectAddressIn(status);
        if (!address.empty()) {
            return address;
        }
        reason = socket.filename().string() + ": " +
                 (status.empty() ? std::generic_category().message(errno) : "has no Wi-Fi Direct");
    }
    throw std::runtime_error(folder.string() + ": " + reason);
}

}  // namespace lyn::linux_platform
