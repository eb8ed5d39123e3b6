// SPDX-License-Identifier: Apache-2.0
#include "PlatformApi.h"
#include "PlatformCall.h"

using namespace lyn::simulator;

int wifi_initialize(void)
{
    return Perform("wifi_initialize", In(), [](PlatformCall& call) {
        if (call.simulator.wifi.inits > 0) {
            return kWifiOpenAlready;
        }
        call.simulator.wifi.inits = 1;
        return 0;
    });
}

int wifi_deinitialize(void)
{
    return Perform("wifi_deinitialize", In(), [](PlatformCall& call) {
        if (call.simulator.wifi.inits == 0) {
            return kNotOpen;
        }
        call.simulator.wifi.inits = 0;
        return 0;
    });
}

int wifi_get_connected_ap(wifi_ap_h* ap)
{
    return Perform("wifi_get_connected_ap", In(), [&](PlatformCall& call) {
        const Wifi& wifi = call.simulator.wifi;
        if (ap == nullptr) {
            return kInvalidArgument;
        }
        if (wifi.inits == 0) {
            return kNotOpen;
        }
        if (!wifi.accessPoint) {
            return kNotConnected;
        }
        *ap = wifi.Handle();
        return 0;
    });
}

int wifi_ap_get_bssid(wifi_ap_h ap, char** bssid)
{
    return Perform("wifi_ap_get_bssid", In(), [&](PlatformCall& call) {
        const Wifi& wifi = call.simulator.wifi;
        if (bssid == nullptr || !wifi.IsHandle(ap)) {
            return kInvalidArgument;
        }
        const auto& text = wifi.accessPoint->bssid;
        return call.GiveText(text ? &*text : nullptr, bssid);
    });
}

int wifi_ap_get_frequency(wifi_ap_h ap, int* frequency)
{
    return Perform("wifi_ap_get_frequency", In(), [&](PlatformCall& call) {
        const Wifi& wifi = call.simulator.wifi;
        if (frequency == nullptr || !wifi.IsHandle(ap)) {
            return kInvalidArgument;
        }
        *frequency = wifi.accessPoint->frequency;
        call.Out(*frequency);
        return 0;
    });
}

int wifi_direct_initialize(void)
{
    return Perform("wifi_direct_initialize", In(), [](PlatformCall& call) {
        ++call.simulator.wifi.directInits;
        return 0;
    });
}

int wifi_direct_deinitialize(void)
{
    return Perform("wifi_direct_deinitialize", In(), [](PlatformCall& call) {
        if (call.simulator.wifi.directInits == 0) {
            return kNotOpen;
        }
        --call.simulator.wifi.directInits;
        return 0;
    });
}

int wifi_direct_get_mac_address(char** mac)
{
    return Perform("wifi_direct_get_mac_address", In(), [&](PlatformCall& call) {
        const Wifi& wifi = call.simulator.wifi;
        if (mac == nullptr) {
            return kInvalidArgument;
        }
        if (wifi.directInits == 0) {
            return kNotOpen;
        }
        return call.GiveText(wifi.directAddress ? &*wifi.directAddress : nullptr, mac);
    });
}
