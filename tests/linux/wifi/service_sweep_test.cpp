// SPDX-License-Identifier: Apache-2.0
//
// Requests through the C interface, with this platform's Bluetooth and Wi-Fi below the library, while answers of
// wpa_supplicant go wrong. What is neither comes from the simulated TV.
#include <cstdlib>
#include <filesystem>
#include <memory>

#include "ControlSocket.h"
#include "FakeSupplicant.h"
#include "GattRoom.h"
#include "OpenFiles.h"
#include "SupplicantMishaps.h"
#include "support/App.h"

namespace lyn::linux_tests {
namespace {

constexpr const char* kGetAll = "Properties.GetAll";
/// The root, the interface of Wi-Fi Direct, the one that is connected, its access point.
constexpr int kCalls = 4;
constexpr int kDirectInterface = 2;

constexpr const char* kChannelOfAccessPoint = "\"P2PChannel\":\"36\"";
constexpr const char* kChannelWithoutOne = "\"P2PChannel\":\"1\"";

class LinuxWifiService : public GattRoom {
protected:
    LinuxWifiService()
    {
        std::string name = std::filesystem::temp_directory_path() / "lyn-wpa-XXXXXX";
        EXPECT_NE(::mkdtemp(name.data()), nullptr);
        folder = name;
        ::setenv("LYN_WPA_CTRL_DIR", name.c_str(), 1);
        ::setenv("LYN_LOG_TARGET", "stderr", 1);  // the journal would take a descriptor for good
        socket = std::make_unique<ControlSocket>(folder / "wlan0");
    }
    ~LinuxWifiService() override
    {
        socket.reset();
        std::filesystem::remove_all(folder);
    }

    lyn_request_initiating_result_e Request()
    {
        app.results.clear();
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        EXPECT_TRUE(RunUntil([&] { return !app.results.empty(); }));
        RunQuietly(30);
        EXPECT_EQ(app.results.size(), 1U) << "a request has one result";
        return app.results.empty() ? LYN_REQUEST_INITIATING_RESULT_RESERVED : app.results.front();
    }

    std::string LastMessage() const { return bluez->Written().empty() ? "" : bluez->Written().back(); }

    void ExpectGood()
    {
        EXPECT_EQ(Request(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
        EXPECT_NE(LastMessage().find(ControlSocket::kAddress), std::string::npos) << LastMessage();
        EXPECT_NE(LastMessage().find(kChannelOfAccessPoint), std::string::npos) << LastMessage();
    }

    std::filesystem::path folder;
    std::unique_ptr<ControlSocket> socket;
    FakeSupplicant supplicant;
    test::App app{"mirroring"};
};

TEST_F(LinuxWifiService, AMessageHasTheAddressAndTheChannelOfThisMachine)
{
    ExpectGood();
}

TEST_F(LinuxWifiService, ARequestHasOneResultWhateverTheAccessPointsAnswersAre)
{
    for (int call = 1; call <= kCalls; ++call) {
        for (const BusMishap& mishap : BusMishaps()) {
            SCOPED_TRACE("call no. " + std::to_string(call) + " " + mishap.name);
            supplicant.Treat(kGetAll, call, mishap.treatment);
            EXPECT_EQ(Request(), LYN_REQUEST_INITIATING_RESULT_SUCCESS);
            const bool mayFindBoth = call == kDirectInterface && !mishap.harmless;
            const char* const channel = mishap.harmless ? kChannelOfAccessPoint : kChannelWithoutOne;
            EXPECT_TRUE(mayFindBoth || LastMessage().find(channel) != std::string::npos) << LastMessage();
            supplicant.TreatWell();
            supplicant.Return();
            ExpectGood();
            ASSERT_FALSE(HasFailure());
        }
    }
}

TEST_F(LinuxWifiService, ARequestHasOneResultWhateverTheControlSocketAnswers)
{
    ExpectGood();
    for (const SocketMishap& mishap : SocketMishaps(ControlSocket::kStatus, ControlSocket::kAddress)) {
        SCOPED_TRACE(mishap.name);
        const auto before = OpenFiles();
        const auto messages = bluez->Written().size();
        socket->AnswerWith(mishap.datagrams, mishap.delayMs);
        if (mishap.dies) {
            socket->DieAtNext();
        }
        const auto result = Request();
        EXPECT_EQ(result, mishap.harmless ? LYN_REQUEST_INITIATING_RESULT_SUCCESS
                                          : LYN_REQUEST_INITIATING_RESULT_GATT_FAIL);
        EXPECT_EQ(bluez->Written().size(), messages + (mishap.harmless ? 1 : 0)) << "nothing is sent without it";
        socket->AnswerWith({ControlSocket::kStatus});
        socket->Return();
        ExpectGood();
        EXPECT_TRUE(RunUntil([&] { return OpenFiles() <= before; })) << "a descriptor is left open";
        ASSERT_FALSE(HasFailure());
    }
}

}  // namespace
}  // namespace lyn::linux_tests
