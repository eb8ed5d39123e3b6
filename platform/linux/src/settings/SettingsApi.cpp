// SPDX-License-Identifier: Apache-2.0
#include <cstring>
#include <exception>

#include "Codes.h"
#include "PlatformApi.h"
#include "log/Log.h"
#include "settings/Defaults.h"
#include "settings/SettingsStore.h"

using namespace lyn::linux_platform;

namespace {

const SettingsStore& Store()
{
    static const auto* const store = new SettingsStore(SettingsFolders::FromEnvironment());
    return *store;
}

/// A default is written at its first use, so that it can be seen and changed. A store that cannot be written
/// gives it nevertheless.
std::optional<Setting> ReadOrDefault(const std::string& key)
{
    auto value = Store().Read(key);
    if (value) {
        return value;
    }
    value = DefaultOf(key);
    if (value) {
        try {
            return Store().WriteFirst(key, *value) ? value : Store().Read(key);
        } catch (const std::exception& error) {
            LogWarn("a default setting is used but not kept: %s", error.what());
        }
    }
    return value;
}

std::optional<Setting> Read(const std::string& key)
{
    try {
        return ReadOrDefault(key);
    } catch (const std::exception& error) {
        LogWarn("cannot read a setting: %s", error.what());
        return std::nullopt;
    }
}

int ReadInt(const std::string& key, int* value)
{
    const auto setting = Read(key);
    if (!setting) {
        return kNotFound;
    }
    if (!std::holds_alternative<int>(*setting)) {
        return kMalformed;
    }
    *value = std::get<int>(*setting);
    return 0;
}

}  // namespace

int vconf_set_int(const char* key, int value)
{
    if (key == nullptr) {
        return kInvalidArgument;
    }
    try {
        Store().Write(key, value);
        return 0;
    } catch (const std::exception& error) {
        LogWarn("cannot write a setting: %s", error.what());
        return kFailed;
    }
}

int vconf_get_int(const char* key, int* value)
{
    return key != nullptr && value != nullptr ? ReadInt(key, value) : kInvalidArgument;
}

char* vconf_get_str(const char* key)
{
    const auto setting = key != nullptr ? Read(key) : std::nullopt;
    if (!setting || !std::holds_alternative<std::string>(*setting)) {
        return nullptr;
    }
    return ::strdup(std::get<std::string>(*setting).c_str());
}

int system_info_get_custom_int(const char* key, int* value)
{
    return key != nullptr && value != nullptr ? ReadInt(SystemInfoKey(key), value) : kInvalidArgument;
}
