// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstring>
#include <exception>
#include <list>
#include <mutex>

#include "Codes.h"
#include "PlatformApi.h"
#include "log/Log.h"
#include "wifi/AccessPoint.h"
#include "wifi/DirectAddress.h"

using namespace lyn::linux_platform;

namespace {

/// The access points that have been given out since Wi-Fi was opened.
struct OpenWifi {
    std::mutex mutex;
    bool open = false;
    std::list<AccessPoint> given;

    const AccessPoint* Find(wifi_ap_h ap) const
    {
        for (const AccessPoint& known : given) {
            if (&known == ap) {
                return &known;
            }
        }
        return nullptr;
    }

    AccessPoint* HandleOf(const AccessPoint& found)
    {
        const auto known = std::find(given.begin(), given.end(), found);
        return known != given.end() ? &*known : &given.emplace_back(found);
    }
};

OpenWifi& Wifi()
{
    static auto* const wifi = new OpenWifi;
    return *wifi;
}

int GiveText(const std::string& text, char** out)
{
    char* const copy = ::strdup(text.c_str());
    if (copy == nullptr) {
        return kOutOfMemory;
    }
    *out = copy;
    return 0;
}

}  // namespace

int wifi_initialize(void)
{
    OpenWifi& wifi = Wifi();
    const std::lock_guard lock(wifi.mutex);
    if (wifi.open) {
        return kWifiOpenAlready;
    }
    wifi.open = true;
    return 0;
}

int wifi_deinitialize(void)
{
    OpenWifi& wifi = Wifi();
    const std::lock_guard lock(wifi.mutex);
    wifi.open = false;
    wifi.given.clear();
    return 0;
}

int wifi_get_connected_ap(wifi_ap_h* ap)
{
    if (ap == nullptr) {
        return kInvalidArgument;
    }
    const auto found = FindConnectedAccessPoint();
    if (!found) {
        return kNotConnected;
    }
    OpenWifi& wifi = Wifi();
    const std::lock_guard lock(wifi.mutex);
    if (!wifi.open) {
        return kRefused;
    }
    *ap = wifi.HandleOf(*found);
    return 0;
}

int wifi_ap_get_bssid(wifi_ap_h ap, char** bssid)
{
    OpenWifi& wifi = Wifi();
    const std::lock_guard lock(wifi.mutex);
    const AccessPoint* const known = wifi.Find(ap);
    return known != nullptr && bssid != nullptr ? GiveText(known->bssid, bssid) : kInvalidArgument;
}

int wifi_ap_get_frequency(wifi_ap_h ap, int* frequency)
{
    OpenWifi& wifi = Wifi();
    const std::lock_guard lock(wifi.mutex);
    const AccessPoint* const known = wifi.Find(ap);
    if (known == nullptr || frequency == nullptr) {
        return kInvalidArgument;
    }
    *frequency = known->frequency;
    return 0;
}

int wifi_direct_initialize(void)
{
    return 0;
}

int wifi_direct_deinitialize(void)
{
    return 0;
}

int wifi_direct_get_mac_address(char** mac)
{
    if (mac == nullptr) {
        return kInvalidArgument;
    }
    try {
        return GiveText(ReadDirectAddress(), mac);
    } catch (const std::exception& error) {
        LogWarn("no Wi-Fi Direct address: %s", error.what());
        return kNotFound;
    }
}
