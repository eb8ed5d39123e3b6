// SPDX-License-Identifier: Apache-2.0
//
// A process that uses the platform as an application does, without steering the simulation. It prints what it
// finds, for process_test.cpp.
//
// Usage: simulator_process [forget]
#include <cstdio>
#include <cstring>

#include "lyn_platform/bluetooth.h"
#include "lyn_platform/files.h"
#include "lyn_platform/log.h"
#include "lyn_platform/settings.h"
#include "lyn_simulator/air.h"
#include "lyn_simulator/simulator.h"

namespace {

/// Uses the platform once more when everything else of this program has ended.
struct LateUser {
    ~LateUser()
    {
        platform_log_print(0, 4, "TAG", "late");
        std::printf("late init %d\n", bt_product_init() == 0 ? 0 : 1);
    }
};
const LateUser g_lateUser;

}  // namespace

int main()
{
    char error[256];
    std::printf("check %d\n", lyn_simulator_check(error, sizeof error) == 0 ? 0 : 1);
    std::printf("error %s\n", error);
    char brief[5];
    lyn_simulator_check(brief, sizeof brief);
    std::printf("brief %s\n", brief);
    std::printf("init %d\n", bt_product_init() == 0 ? 0 : 1);
    std::printf("phones %zu\n", lyn::simulator::Phones().size());
    platform_log_print(0, 3, "TAG", "a debug line");
    platform_log_print(0, 6, "TAG", "an error line");
    platform_log_print(0, 6, "TAG", "%s", "hostile \033[2J\r\n\x7f\xc2\x9b\x9b Zo\xc3\xab \xe2\x80\xae.");
    char place[512];
    std::printf("path %d\n", platform_file_path("/opt/etc/.lyn_appid", place, sizeof place));
    std::printf("file %s\n", place);
    std::printf("exists %d\n", std::fopen(place, "r") != nullptr ? 1 : 0);
    vconf_set_int("memory/key", 1);
    std::printf("journal %zu\n", lyn::simulator::Journal().size());
    return 0;
}
