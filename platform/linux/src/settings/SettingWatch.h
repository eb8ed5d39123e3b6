// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <filesystem>
#include <functional>

namespace lyn::linux_platform {

/// Tells whenever a setting's file may have changed, on the main context. It may tell once too often: read the
/// value and compare. Made and destroyed on the main context.
class SettingWatch {
public:
    /// Throws std::runtime_error when the file's folder can neither be found nor made.
    SettingWatch(const std::filesystem::path& file, std::function<void()> changed);
    ~SettingWatch();
    SettingWatch(const SettingWatch&) = delete;
    SettingWatch& operator=(const SettingWatch&) = delete;

private:
    std::function<void()> m_changed;
    GFileMonitor* m_monitor;
};

}  // namespace lyn::linux_platform
