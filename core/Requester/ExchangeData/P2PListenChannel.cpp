// SPDX-License-Identifier: Apache-2.0
#include "Requester/ExchangeData/P2PListenChannel.h"

#include <unistd.h>

#include "Common/Failure.h"
#include "Common/PlatformCodes.h"
#include "Common/PlatformText.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/wifi.h"

namespace lyn {
namespace {

constexpr const char* KEY_LISTEN_CHANNEL = "memory/menu/network/screenmirroring/p2p_listen_channel";
constexpr int MAX_TRIES = 5;
constexpr useconds_t PAUSE_US = 200000;

struct WifiDeinitializer {
    WifiDeinitializer() = default;
    ~WifiDeinitializer() { wifi_deinitialize(); }
    WifiDeinitializer(const WifiDeinitializer&) = delete;
    WifiDeinitializer& operator=(const WifiDeinitializer&) = delete;
};

}  // namespace

int ReadP2PListenChannelSetting()
{
    int value = P2P_LISTEN_STOPPED;
    for (int attempt = 1; attempt <= MAX_TRIES; ++attempt) {
        LYN_LOGI("try : %d", attempt);
        if (vconf_get_int(KEY_LISTEN_CHANNEL, &value) != PLATFORM_OK) {
            LogAndThrow<LynExceptionInternal>(
                "fail to get memory/menu/network/screenmirroring/p2p_listen_channel");
        }
        if (value != P2P_LISTEN_STOPPED) {
            return value;
        }
        usleep(PAUSE_US);
    }
    LogAndThrow<LynExceptionInternal>("p2p listen is stopped");
}

std::optional<int> ReadConnectedFrequency()
{
    const int initialized = wifi_initialize();
    if (initialized != PLATFORM_OK && initialized != WIFI_ERROR_ALREADY_INITIALIZED) {
        LogAndThrow<LynExceptionInternal>("Fail to init wifi");
    }
    wifi_ap_h ap = nullptr;
    if (wifi_get_connected_ap(&ap) != PLATFORM_OK) {
        return std::nullopt;  // Kept: Wi-Fi stays initialized on this way out.
    }
    const WifiDeinitializer deinitializer;
    char* buffer = nullptr;
    if (wifi_ap_get_bssid(ap, &buffer) != PLATFORM_OK) {
        LogAndThrow<LynExceptionInternal>("Fail to get bssid of connected ap");
    }
    if (buffer == nullptr) {
        LogAndThrow<LynExceptionInternal>("bssid is null");
    }
    const PlatformText bssid(buffer);
    int frequency = 0;
    if (wifi_ap_get_frequency(ap, &frequency) != PLATFORM_OK) {
        LogAndThrow<LynExceptionInternal>("fail to get frequency");
    }
    return frequency;
}

}  // namespace lyn
