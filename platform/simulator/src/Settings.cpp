// SPDX-License-Identifier: Apache-2.0
#include "Settings.h"

namespace lyn::simulator {

std::map<std::string, SettingValue> DefaultSettings()
{
    return {
        {"db/menu/network/devicename/tv_name", "Living Room TV"},
        {"memory/menu/network/screenmirroring/p2p_listen_channel", 0},
        {"memory/wifi/frequency", 2437},
        {"memory/acm/networkspeaker_status", 0},
    };
}

std::map<std::string, int> DefaultSystemInfo()
{
    return {
        {"com.calyxon/featureconf/devicename.icon_index", 1},
        {"com.calyxon/featureconf/devicename.device_type_index", 12},
    };
}

}  // namespace lyn::simulator
