// SPDX-License-Identifier: Apache-2.0
#include "settings/Defaults.h"

#include <unistd.h>

#include <array>
#include <map>

namespace lyn::linux_platform {

namespace {

// A listen channel of 99 is the channel of the access point, or the first social channel without one.
constexpr int kChannelOfAccessPoint = 99;
constexpr int kDeviceTypeTv = 12;
constexpr int kIconTv = 1;

std::string HostName()
{
    std::array<char, 256> name{};
    if (::gethostname(name.data(), name.size() - 1) != 0 || name[0] == '\0') {
        return "TV";
    }
    return name.data();
}

}  // namespace

std::string SystemInfoKey(const std::string& feature)
{
    return "db/system_info/" + feature;
}

std::optional<Setting> DefaultOf(const std::string& key)
{
    if (key == "db/menu/network/devicename/tv_name") {
        return Setting(HostName());
    }
    static const auto* const numbers = new std::map<std::string, int>{
        {"memory/menu/network/screenmirroring/p2p_listen_channel", kChannelOfAccessPoint},
        {SystemInfoKey("com.calyxon/featureconf/devicename.device_type_index"), kDeviceTypeTv},
        {SystemInfoKey("com.calyxon/featureconf/devicename.icon_index"), kIconTv},
    };
    const auto found = numbers->find(key);
    return found != numbers->end() ? std::optional<Setting>(found->second) : std::nullopt;
}

}  // namespace lyn::linux_platform
