// SPDX-License-Identifier: Apache-2.0
//
// The settings of the machine: one readable file for each key, holding one line, "int 100" or "text Living room".
// A file is replaced as a whole, so a reader sees the old or the new value, and of several writers the last wins.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <variant>

namespace lyn::linux_platform {

using Setting = std::variant<int, std::string>;

/// The folders of the store.
struct SettingsFolders {
    std::filesystem::path state;    ///< holds "db/": outlives a restart of the machine
    std::filesystem::path runtime;  ///< holds "memory/": does not

    /// LYN_STATE_DIR and LYN_RUNTIME_DIR; else /var/lib/lyn and /run/lyn for root; else those of the user.
    static SettingsFolders FromEnvironment();
};

class SettingsStore {
public:
    explicit SettingsStore(SettingsFolders folders) : m_folders(std::move(folders)) {}

    /// Where a key is kept. Throws std::invalid_argument unless the key begins with "db/" or "memory/" and every
    /// part of it is a plain file name.
    std::filesystem::path FileOf(const std::string& key) const;

    /// The value, or none when the key is absent. Throws std::runtime_error, which says file and reason, when the
    /// file cannot be read or does not hold a setting.
    std::optional<Setting> Read(const std::string& key) const;

    /// Replaces the value. Throws std::runtime_error when it cannot be written; the old value is then kept.
    void Write(const std::string& key, const Setting& value) const;

    /// Gives an absent key its first value. @return false when it has one meanwhile, which is kept
    bool WriteFirst(const std::string& key, const Setting& value) const;

private:
    std::filesystem::path PlaceFor(const std::string& key) const;

    SettingsFolders m_folders;
};

/// The line of a setting, with its newline. Throws std::invalid_argument for a text of several lines.
std::string LineOf(const Setting& value);
/// What a line means; none when it is no setting.
std::optional<Setting> SettingOf(const std::string& line);

}  // namespace lyn::linux_platform
