// SPDX-License-Identifier: Apache-2.0
#include "Requester/ExchangeData/P2PListenChannel.h"

#include <unistd.h>

#include <chrono>

#include "Common/Failure.h"
#include "Common/PlatformCodes.h"
#include "Common/PlatformText.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/wifi.h"

namespace lyn {
namespace {

constexpr const char* KEY_LISTEN_CHANNEL = "memory/menu/network/screenmirroring/p2p_listen_channel";
constexpr int MAX_TRIES = 5;
constexpr std::chrono::microseconds PAUSE{200000};

// A signal cuts a sleep short; then the rest is slept.
void Pause()
{
    using Clock = std::chrono::steady_clock;
    const Clock::time_point end = Clock::now() + PAUSE;
    std::chrono::microseconds left = PAUSE;
    while (left.count() > 0 && usleep(static_cast<useconds_t>(left.count())) != 0) {
        left = std::chrono::duration_cast<std::chrono::microseconds>(end - Clock::now());
    }
}

struct WifiDeinitializer {
    WifiDeinitializer() = default;
    ~WifiDeinitializer() { wifi_deinitialize(); }
    WifiDeinitializer(const WifiDeinitializer&) = delete;
    WifiDeinitializer& operator=(const WifiDeinitializer&) = delete;
};

}  // namespace

int ReadP2PListenChannelSetting(const char* function)
{
    int value = P2P_LISTEN_STOPPED;
    for (int attempt = 1; attempt <= MAX_TRIES; ++attempt) {
        LYN_LOGI_AS(function, "try : %d", attempt);
        if (vconf_get_int(KEY_LISTEN_CHANNEL, &value) != PLATFORM_OK) {
            LogAndThrow<LynExceptionInternal>("fail to get memory/menu/network/screenmirroring/p2p_listen_channel",
                                              __FILE__, function);
        }
        if (value != P2P_LISTEN_STOPPED) {
            return value;
        }
        Pause();
    }
    LogAndThrow<LynExceptionInternal>("p2p listen is stopped", __FILE__, function);
}

std::optional<int> ReadConnectedFrequency(const char* function)
{
    const int initialized = wifi_initialize();
    if (initialized != PLATFORM_OK && initialized != WIFI_ERROR_ALREADY_INITIALIZED) {
        LogAndThrow<LynExceptionInternal>("Fail to init wifi", __FILE__, function);
    }
    wifi_ap_h ap = nullptr;
    if (wifi_get_connected_ap(&ap) != PLATFORM_OK) {
        return std::nullopt;  // Kept: Wi-Fi stays initialized on this way out.
    }
    const WifiDeinitializer deinitializer;
    char* buffer = nullptr;
    if (wifi_ap_get_bssid(ap, &buffer) != PLATFORM_OK) {
        LogAndThrow<LynExceptionInternal>("Fail to get bssid of connected ap", __FILE__, function);
    }
    if (buffer == nullptr) {
        LogAndThrow<LynExceptionInternal>("bssid is null", __FILE__, function);
    }
    const PlatformText bssid(buffer);
    int frequency = 0;
    if (wifi_ap_get_frequency(ap, &frequency) != PLATFORM_OK) {
        LogAndThrow<LynExceptionInternal>("fail to get frequency", __FILE__, function);
    }
    return frequency;
}

}  // namespace lyn
