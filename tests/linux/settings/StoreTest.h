// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "settings/SettingsStore.h"

namespace lyn::linux_platform {

/// A store in folders of its own.
class StoreTest : public ::testing::Test {
protected:
    StoreTest() : folder(MakeFolder()), store({folder / "state", folder / "run"}) {}
    ~StoreTest() override { std::filesystem::remove_all(folder); }

    static std::filesystem::path MakeFolder()
    {
        std::string name = std::filesystem::temp_directory_path() / "lyn-settings-XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder");
        }
        return name;
    }

    void PutFile(const std::string& key, const std::string& content) const
    {
        const auto file = store.FileOf(key);
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
    }

    const std::filesystem::path folder;
    const SettingsStore store;
};

}  // namespace lyn::linux_platform
