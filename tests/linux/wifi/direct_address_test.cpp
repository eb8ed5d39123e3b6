// SPDX-License-Identifier: Apache-2.0
#include "wifi/DirectAddress.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "ControlSocket.h"
#include "lyn_platform/wifi.h"

namespace lyn::linux_tests {
namespace {

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

const std::string& kStatus = ControlSocket::kStatus;

TEST_F(DirectAddressTest, ComesFromTheControlSocket)
{
    const ControlSocket socket(m_folder / "wlan0");
    ASSERT_EQ(wifi_direct_initialize(), 0);
    char* mac = nullptr;
    ASSERT_EQ(wifi_direct_get_mac_address(&mac), 0);
    EXPECT_STREQ(mac, "02:00:00:00:01:00");
    std::free(mac);
    EXPECT_EQ(wifi_direct_deinitialize(), 0);
    EXPECT_EQ(socket.Commands(), std::vector<std::string>{"STATUS"});
}

TEST_F(DirectAddressTest, ComesFromTheInterfaceThatHasOne)
{
    ControlSocket first(m_folder / "eth0");
    first.AnswerWith({"wpa_state=INACTIVE\n"});
    const ControlSocket second(m_folder / "wlan0");
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

TEST_F(DirectAddressTest, IsLookedForInTheSystemsFolderUnlessTheEnvironmentNamesOne)
{
    for (const char* const folder : {"", static_cast<const char*>(nullptr)}) {
        folder != nullptr ? ::setenv("LYN_WPA_CTRL_DIR", folder, 1) : ::unsetenv("LYN_WPA_CTRL_DIR");
        const std::string failure = Failure();
        // The machine of this test may have one.
        EXPECT_TRUE(failure.starts_with("/run/wpa_supplicant: ") || failure.starts_with("found ")) << failure;
    }
}

TEST_F(DirectAddressTest, IsMissingWhereThePathOfTheSocketIsTooLong)
{
    const ControlSocket socket(m_folder / "wlan0");
    constexpr std::size_t kLongest = 107;  // of a socket's path, without its NUL
    std::filesystem::path at = m_folder / "wlan0";
    for (const std::size_t length : {kLongest, kLongest + 1, kLongest + 100}) {
        const std::string name(length - m_folder.string().size() - 1, 'w');
        std::filesystem::rename(at, m_folder / name);
        at = m_folder / name;
        EXPECT_EQ(Failure(), length > kLongest ? m_folder.string() + ": " + name + ": File name too long"
                                               : std::string("found ") + ControlSocket::kAddress);
    }
    std::filesystem::rename(at, m_folder / "wlan0");
}

TEST_F(DirectAddressTest, IsMissingWhenTheStatusHasNone)
{
    ControlSocket socket(m_folder / "wlan0");
    socket.AnswerWith({"wpa_state=COMPLETED\n"});
    EXPECT_EQ(Failure(), m_folder.string() + ": wlan0: has no Wi-Fi Direct");
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
