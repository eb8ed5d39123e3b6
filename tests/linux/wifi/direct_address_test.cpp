// SPDX-License-Identifier: Apache-2.0
#include "wifi/DirectAddress.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <thread>

#include "lyn_platform/wifi.h"

namespace lyn::linux_tests {
namespace {

/// One control socket, which answers the first command with a text.
class ControlSocket {
public:
    ControlSocket(const std::filesystem::path& path, std::optional<std::string> answer)
        : m_descriptor(::socket(AF_UNIX, SOCK_DGRAM, 0))
    {
        sockaddr_un own{};
        own.sun_family = AF_UNIX;
        std::strncpy(own.sun_path, path.c_str(), sizeof own.sun_path - 1);
        EXPECT_EQ(::bind(m_descriptor, reinterpret_cast<const sockaddr*>(&own), sizeof own), 0);
        if (answer) {
            m_thread = std::thread([this, text = *answer] { Answer(text); });
        }
    }
    ~ControlSocket()
    {
        if (m_thread.joinable()) {
            m_thread.join();
        }
        ::close(m_descriptor);
    }
    ControlSocket(const ControlSocket&) = delete;
    ControlSocket& operator=(const ControlSocket&) = delete;

    std::string Command() const { return m_command; }

private:
    void Answer(const std::string& text)
    {
        char buffer[64] = {};
        sockaddr_un peer{};
        socklen_t size = sizeof peer;
        const ssize_t length =
            ::recvfrom(m_descriptor, buffer, sizeof buffer, 0, reinterpret_cast<sockaddr*>(&peer), &size);
        m_command.assign(buffer, length > 0 ? static_cast<std::size_t>(length) : 0);
        ::sendto(m_descriptor, text.data(), text.size(), 0, reinterpret_cast<const sockaddr*>(&peer), size);
    }

    int m_descriptor;
    std::string m_command;
    std::thread m_thread;
};

class DirectAddressTest : public ::testing::Test {
protected:
    DirectAddressTest()
    {
        std::string name = std::filesystem::temp_directory_path() / "lyn-wpa-XXXXXX";
        EXPECT_NE(::mkdtemp(name.data()), nullptr);
        m_folder = name;
        ::setenv("LYN_WPA_CTRL_DIR", name.c_str(), 1);
        ::setenv("LYN_LOG_LEVEL", "none", 1);
    }
    ~DirectAddressTest() override
    {
        ::unsetenv("LYN_WPA_CTRL_DIR");
        std::filesystem::remove_all(m_folder);
    }

    static std::string Failure()
    {
        try {
            return "found " + linux_platform::ReadDirectAddress();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    std::filesystem::path m_folder;
};

constexpr const char* kStatus =
    "wpa_state=COMPLETED\np2p_device_address=02:00:00:00:01:00\naddress=02:00:00:00:00:00\n";

TEST_F(DirectAddressTest, ComesFromTheControlSocket)
{
    ControlSocket socket(m_folder / "wlan0", kStatus);
    ASSERT_EQ(wifi_direct_initialize(), 0);
    char* mac = nullptr;
    ASSERT_EQ(wifi_direct_get_mac_address(&mac), 0);
    EXPECT_STREQ(mac, "02:00:00:00:01:00");
    std::free(mac);
    EXPECT_EQ(wifi_direct_deinitialize(), 0);
    EXPECT_EQ(socket.Command(), "STATUS");
}

TEST_F(DirectAddressTest, ComesFromTheInterfaceThatHasOne)
{
    const ControlSocket first(m_folder / "eth0", "wpa_state=INACTIVE\n");
    const ControlSocket second(m_folder / "wlan0", kStatus);
    EXPECT_EQ(linux_platform::ReadDirectAddress(), "02:00:00:00:01:00");
}

TEST_F(DirectAddressTest, IsMissingWithoutControlSockets)
{
    EXPECT_EQ(Failure(), m_folder.string() + ": holds no control socket of wpa_supplicant");
    std::filesystem::remove_all(m_folder);
    EXPECT_EQ(Failure(), m_folder.string() + ": holds no control socket of wpa_supplicant");
    char unchanged = 'x';
    char* mac = &unchanged;
    EXPECT_NE(wifi_direct_get_mac_address(&mac), 0);
    EXPECT_EQ(mac, &unchanged);
    EXPECT_NE(wifi_direct_get_mac_address(nullptr), 0);
}

TEST_F(DirectAddressTest, IsMissingWhenTheStatusHasNone)
{
    const ControlSocket socket(m_folder / "wlan0", "wpa_state=COMPLETED\n");
    EXPECT_EQ(Failure(), m_folder.string() + ": wlan0: has no Wi-Fi Direct");
}

TEST_F(DirectAddressTest, IsMissingWhenNobodyListensAtTheSocket)
{
    {
        const ControlSocket socket(m_folder / "wlan0", std::nullopt);
    }
    EXPECT_EQ(Failure(), m_folder.string() + ": wlan0: Connection refused");
}

TEST_F(DirectAddressTest, IsGivenUpWhenNoAnswerComes)
{
    const ControlSocket socket(m_folder / "wlan0", std::nullopt);
    EXPECT_EQ(Failure(), m_folder.string() + ": wlan0: Connection timed out");
}

TEST(DirectAddressIn, IsAWholeLineOfTheStatus)
{
    EXPECT_EQ(linux_platform::DirectAddressIn(kStatus), "02:00:00:00:01:00");
    EXPECT_EQ(linux_platform::DirectAddressIn("x_p2p_device_address=02:00:00:00:01:00\n"), "");
    EXPECT_EQ(linux_platform::DirectAddressIn(""), "");
    EXPECT_EQ(linux_platform::DirectAddressIn("p2p_device_address="), "");
}

}  // namespace
}  // namespace lyn::linux_tests
