// SPDX-License-Identifier: Apache-2.0
#include "adverts/FallbackWarning.h"

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include "log/Log.h"

namespace lyn::linux_platform {

namespace {

std::string Program()
{
    std::error_code failed;
    const auto path = std::filesystem::read_symlink("/proc/self/exe", failed);
    return failed ? "PROGRAM" : path.string();
}

std::string Cure(int error)
{
    if (error == EPERM) {
        return ". To grant it: setcap cap_net_raw+ep " + Program() +
               ", or AmbientCapabilities=CAP_NET_RAW in the systemd unit";
    }
    if (error == EAFNOSUPPORT) {
        return ". Bluetooth sockets are kept away: by RestrictAddressFamilies= or PrivateNetwork= of the "
               "systemd unit, by a container, or by a kernel without Bluetooth";
    }
    return "";
}

}  // namespace

std::string FallbackText(int error)
{
    const std::string reason = error == EPERM ? "CAP_NET_RAW is missing" : std::generic_category().message(error);
    return "no raw HCI socket (" + reason +
           "): adverts come over D-Bus, where a phone's scan response replaces its advertising packet, "
           "so mirroring and Kov phones are found late or never" +
           Cure(error);
}

void WarnOfFallback(int error)
{
    static std::atomic<bool> warned{false};
    if (!warned.exchange(true)) {
        LogWarn("%s", FallbackText(error).c_str());
    }
}

}  // namespace lyn::linux_platform
