// SPDX-License-Identifier: Apache-2.0
//
// The Wi-Fi Direct address, with the answer of the control socket going wrong in each way.
#include <gtest/gtest.h>
#include <sys/time.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "ControlSocket.h"
#include "OpenFiles.h"
#include "PrivateBus.h"
#include "SupplicantMishaps.h"
#include "lyn_platform/wifi.h"
#include "wifi/DirectAddress.h"

namespace lyn::linux_tests {
namespace {

class DirectAddressSweep : public ::testing::Test {
protected:
    DirectAddressSweep()
    {
        std::string name = std::filesystem::temp_directory_path() / "lyn-wpa-XXXXXX";
        EXPECT_NE(::mkdtemp(name.data()), nullptr);
        folder = name;
        ::setenv("LYN_WPA_CTRL_DIR", name.c_str(), 1);
        ::setenv("LYN_LOG_LEVEL", "none", 1);
        socket = std::make_unique<ControlSocket>(folder / "wlan0");
    }
    ~DirectAddressSweep() override
    {
        ::unsetenv("LYN_WPA_CTRL_DIR");
        socket.reset();
        std::filesystem::remove_all(folder);
    }

    /// Whether the right one is found; a failure leaves its argument alone.
    static bool Finds()
    {
        char untouched = 'x';
        char* mac = &untouched;
        if (wifi_direct_get_mac_address(&mac) != 0) {
            EXPECT_EQ(mac, &untouched);
            return false;
        }
        EXPECT_STREQ(mac, ControlSocket::kAddress);
        std::free(mac);
        return true;
    }

    void Misbehave(const SocketMishap& mishap) const
    {
        socket->AnswerWith(mishap.datagrams, mishap.delayMs);
        if (mishap.dies) {
            socket->DieAtNext();
        }
    }

    void BehaveWell() const
    {
        socket->AnswerWith({ControlSocket::kStatus});
        socket->Return();
    }

    static std::string Failure()
    {
        try {
            return "found " + linux_platform::ReadDirectAddress();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
    }

    std::filesystem::path folder;
    std::unique_ptr<ControlSocket> socket;
};

TEST_F(DirectAddressSweep, IsFoundOrNotWhateverBecomesOfTheAnswerAndFoundTheNextTime)
{
    for (const SocketMishap& mishap : SocketMishaps(ControlSocket::kStatus, ControlSocket::kAddress)) {
        SCOPED_TRACE(mishap.name);
        const auto before = OpenFiles();
        Misbehave(mishap);
        EXPECT_EQ(Finds(), mishap.harmless);
        BehaveWell();
        EXPECT_TRUE(RunUntil([&] { return OpenFiles() <= before; })) << "a descriptor is left open";
        EXPECT_TRUE(Finds()) << "the next time";
    }
}

TEST_F(DirectAddressSweep, AFailureSaysWhatIsMissing)
{
    const std::string before = folder.string() + ": wlan0: ";
    socket->AnswerWith({""});
    EXPECT_EQ(Failure(), before + "No data available");
    socket->AnswerWith({"p2p_device_address=02:00:00:00:01:0\n"});
    EXPECT_EQ(Failure(), before + "has no Wi-Fi Direct");
    socket->DieAtNext();
    EXPECT_EQ(Failure(), before + "Connection timed out");
    EXPECT_EQ(Failure(), before + "Connection refused");
}

TEST_F(DirectAddressSweep, ASilentInterfaceIsTheLastThatIsAskedInTime)
{
    socket->AnswerWith({});
    ControlSocket other(folder / "wlan1");
    other.AnswerWith({});
    const auto begun = std::chrono::steady_clock::now();
    EXPECT_EQ(Failure(), folder.string() + ": wlan1: Connection timed out");
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(20));
}

TEST_F(DirectAddressSweep, IsNotLostToASignalThatTheApplicationGetsMeanwhile)
{
    socket->AnswerWith({ControlSocket::kStatus}, 300);
    struct sigaction handler {};
    struct sigaction old {};
    handler.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGALRM, &handler, &old), 0);
    const itimerval often{{0, 20'000}, {0, 20'000}};
    const itimerval never{};
    ASSERT_EQ(::setitimer(ITIMER_REAL, &often, nullptr), 0);
    const bool found = Finds();
    ::setitimer(ITIMER_REAL, &never, nullptr);
    ::sigaction(SIGALRM, &old, nullptr);
    EXPECT_TRUE(found);
}

}  // namespace
}  // namespace lyn::linux_tests
