// SPDX-License-Identifier: Apache-2.0
#include <charconv>
#include <exception>
#include <optional>

#include "commands.h"
#include "failure.h"
#include "json_line.h"
#include "loop.h"
#include "settings/Defaults.h"
#include "settings/SettingWatch.h"
#include "settings/SettingsStore.h"
#include "terminal.h"
#include "text.h"
#include "timeline.h"

namespace lynctl {

namespace {

using lyn::linux_platform::Setting;
using lyn::linux_platform::SettingsFolders;
using lyn::linux_platform::SettingsStore;
using lyn::linux_platform::SettingWatch;

Setting SettingFrom(const Arguments& arguments)
{
    const std::string& text = arguments.value;
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size() && !arguments.text;
    return isNumber ? Setting(number) : Setting(text);
}

std::string TextOf(const Setting& value)
{
    return std::holds_alternative<int>(value) ? std::to_string(std::get<int>(value))
                                              : Printable(std::get<std::string>(value), LookOfOutput().unicode);
}

void PrintJsonSetting(const std::string& key, const std::optional<Setting>& value, double seconds)
{
    Json::Value line = Event("setting", seconds);
    line["key"] = key;
    line["set"] = value.has_value();
    if (value && std::holds_alternative<int>(*value)) {
        line["value"] = std::get<int>(*value);
    } else if (value) {
        SetText(line, std::get<std::string>(*value));
    }
    PrintJson(line);
}

int Get(const Arguments& arguments, const SettingsStore& store)
{
    auto value = store.Read(arguments.key);
    if (!value) {
        value = lyn::linux_platform::DefaultOf(arguments.key);
    }
    if (arguments.json) {
        PrintJsonSetting(arguments.key, value, 0);
    } else if (value) {
        Print(TextOf(*value) + "\n");
    }
    if (!value && !arguments.json) {
        throw Failure(kExitFailure, arguments.key + " is not set");
    }
    return value ? kExitSuccess : kExitFailure;
}

/// Shows a setting now and at each change.
class Watcher {
public:
    Watcher(const Arguments& arguments, const SettingsStore& store)
        : m_arguments(arguments),
          m_store(store),
          m_watch(store.FileOf(arguments.key), [this] { Look(); })
    {
        m_value = Read();
        Show();
    }

    int Run()
    {
        m_loop.Run(static_cast<unsigned>(m_arguments.seconds) * 1000);
        if (m_arguments.json) {
            Json::Value line = Event("summary", m_loop.Seconds());
            line["changes"] = m_changes;
            PrintJson(line);
        }
        return kExitSuccess;
    }

private:
    /// A file that is no setting, or that is being replaced by hand, counts as not set.
    std::optional<Setting> Read() const
    {
        try {
            return m_store.Read(m_arguments.key);
        } catch (const std::runtime_error&) {
            return std::nullopt;
        }
    }

    void Look()
    {
        auto value = Read();
        if (value == m_value) {
            return;
        }
        m_value = std::move(value);
        ++m_changes;
        Show();
    }

    void Show() const
    {
        if (m_arguments.json) {
            PrintJsonSetting(m_arguments.key, m_value, m_loop.Seconds());
        } else {
            PrintTimeline(m_loop.Seconds(), "setting", m_value ? TextOf(*m_value) : "(not set)",
                          m_value ? Style::accent : Style::dim);
        }
    }

    const Arguments& m_arguments;
    const SettingsStore& m_store;
    Loop m_loop;
    std::optional<Setting> m_value;
    int m_changes = 0;
    SettingWatch m_watch;
};

int Run(const Arguments& arguments, const SettingsStore& store)
{
    switch (arguments.settingsAction) {
    case SettingsAction::get:
        return Get(arguments, store);
    case SettingsAction::set:
        store.Write(arguments.key, SettingFrom(arguments));
        return kExitSuccess;
    case SettingsAction::watch:
        break;
    }
    return Watcher(arguments, store).Run();
}

}  // namespace

int Settings(const Arguments& arguments)
{
    const SettingsStore store(SettingsFolders::FromEnvironment());
    try {
        return Run(arguments, store);
    } catch (const std::invalid_argument& error) {
        throw Failure(kExitUsage, error.what());
    }
}

}  // namespace lynctl
