// SPDX-License-Identifier: Apache-2.0
#include "settings/SettingWatch.h"

#include <memory>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace lyn::linux_platform {

namespace {

constexpr int kAtMostEveryMs = 20;

void OnChanged(GFileMonitor*, GFile*, GFile*, GFileMonitorEvent, gpointer changed)
{
    (*static_cast<std::function<void()>*>(changed))();
}

}  // namespace

SettingWatch::SettingWatch(const std::filesystem::path& file, std::function<void()> changed)
    : m_changed(std::move(changed))
{
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    if (error) {
        throw std::runtime_error(file.parent_path().string() + ": " + error.message());
    }
    GFile* const place = g_file_new_for_path(file.c_str());
    m_monitor = g_file_monitor_file(place, G_FILE_MONITOR_NONE, nullptr, nullptr);
    g_object_unref(place);
    if (m_monitor == nullptr) {
        throw std::runtime_error(file.string() + ": cannot be watched");
    }
    g_file_monitor_set_rate_limit(m_monitor, kAtMostEveryMs);
    g_signal_connect(m_monitor, "changed", G_CALLBACK(&OnChanged), &m_changed);
}

SettingWatch::~SettingWatch()
{
    g_signal_handlers_disconnect_by_data(m_monitor, &m_changed);
    g_file_monitor_cancel(m_monitor);
    g_object_unref(m_monitor);
}

}  // namespace lyn::linux_platform
