// SPDX-License-Identifier: Apache-2.0
//
// Runs a command on a bus of its own, with a fake bluetoothd and its usual phone.
// usage: with_fake_bluez COMMAND [ARGUMENT...]
#include <glib.h>

#include <cstdio>

#include "FakeBluez.h"
#include "PrivateBus.h"

int main(int argc, char** argv)
{
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s COMMAND [ARGUMENT...]\n", argv[0]);
        return 2;
    }
    lyn::linux_tests::PrivateBus::Instance();
    lyn::linux_tests::FakeBluez bluez;
    bluez.AddPhone({});
    int status = 0;
    GError* error = nullptr;
    if (g_spawn_sync(nullptr, argv + 1, nullptr, G_SPAWN_SEARCH_PATH, nullptr, nullptr, nullptr, nullptr, &status,
                     &error) == FALSE) {
        std::fprintf(stderr, "%s\n", error->message);
        g_error_free(error);
        return 2;
    }
    return g_spawn_check_wait_status(status, nullptr) != FALSE ? 0 : 1;
}
