// SPDX-License-Identifier: Apache-2.0
//
// Runs a command on a machine that is played: a bus of its own with bluetoothd and its usual phone, wpa_supplicant
// and logind, and folders of its own for settings and control sockets. usage: with_fake_machine COMMAND
// [ARGUMENT...]
#include <glib.h>

#include <cstdio>
#include <string>

#include "ControlSocket.h"
#include "FakeBluez.h"
#include "FakeLogind.h"
#include "FakeSupplicant.h"
#include "PrivateBus.h"
#include "TemporaryFolder.h"

namespace lyn::linux_tests {
namespace {

/// No real adapter has this index: the platform must not listen to the machine's own.
constexpr const char* kAdapter = "hci64000";

FakePhone UsualPhone()
{
    FakePhone phone;
    phone.adapter = kAdapter;
    // Its advertising packet, and its scan response with a name.
    phone.adverts = {"\x01\x19" + std::string(22, 'i'), "\x01\x19"
                                                        "Contract phone"};
    return phone;
}

int Run(char** command)
{
    int status = 0;
    GError* error = nullptr;
    if (g_spawn_sync(nullptr, command, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, nullptr, nullptr, &status,
                     &error) == FALSE) {
        std::fprintf(stderr, "%s\n", error->message);
        g_error_free(error);
        return 2;
    }
    return g_spawn_check_wait_status(status, nullptr) != FALSE ? 0 : 1;
}

int RunOnFakeMachine(char** command)
{
    PrivateBus::Instance();
    const TemporaryFolder folder;
    folder.Make("state", "LYN_STATE_DIR");
    folder.Make("run", "LYN_RUNTIME_DIR");
    const ControlSocket control(folder.Make("wpa", "LYN_WPA_CTRL_DIR") / "wlan0");
    FakeBluez bluez(kAdapter);
    bluez.AddPhone(UsualPhone());
    const FakeSupplicant supplicant;
    const FakeLogind logind;
    return Run(command);
}

}  // namespace
}  // namespace lyn::linux_tests

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s COMMAND [ARGUMENT...]\n", argv[0]);
        return 2;
    }
    return lyn::linux_tests::RunOnFakeMachine(argv + 1);
}
