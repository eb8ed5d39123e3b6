// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <string>

#include "ControlSocket.h"
#include "FakeBluez.h"
#include "FakeSupplicant.h"
#include "PrivateBus.h"
#include "TemporaryFolder.h"

namespace lyn::linux_tests {

/// A machine on which all is well: a test takes away what it wants.
class PlayedMachine : public ::testing::Test {
protected:
    PlayedMachine()
    {
        PrivateBus::Instance();
        ::unsetenv("LYN_BT_ADAPTER");
        state = folder.Make("state", "LYN_STATE_DIR");
        run = folder.Make("run", "LYN_RUNTIME_DIR");
        control.emplace(folder.Make("wpa", "LYN_WPA_CTRL_DIR") / "wlan0");
        bluez.emplace();
        supplicant.emplace();
    }

    void Put(const std::string& file, const std::string& content) const
    {
        std::filesystem::create_directories((folder.Path() / file).parent_path());
        std::ofstream(folder.Path() / file) << content;
    }

    TemporaryFolder folder;
    std::filesystem::path state;
    std::filesystem::path run;
    std::optional<ControlSocket> control;
    std::optional<FakeBluez> bluez;
    std::optional<FakeSupplicant> supplicant;
};

}  // namespace lyn::linux_tests
