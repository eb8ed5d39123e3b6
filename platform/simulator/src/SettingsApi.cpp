// SPDX-License-Identifier: Apache-2.0
#include "PlatformApi.h"
#include "PlatformCall.h"

using namespace lyn::simulator;

namespace {

/// The setting's value if it is there and has this type, or null.
template <typename Value>
const Value* FindSetting(const Simulator& simulator, const char* key)
{
    const auto found = simulator.settings.find(key);
    return found != simulator.settings.end() ? std::get_if<Value>(&found->second) : nullptr;
}

}  // namespace

int vconf_set_int(const char* key, int value)
{
    return Perform("vconf_set_int", In(key, value), [&](PlatformCall& call) {
        if (key == nullptr) {
            return kInvalidArgument;
        }
        call.simulator.settings[key] = value;
        return 0;
    });
}

int vconf_get_int(const char* key, int* value)
{
    return Perform("vconf_get_int", In(key), [&](PlatformCall& call) {
        if (key == nullptr || value == nullptr) {
            return kInvalidArgument;
        }
        const int* found = FindSetting<int>(call.simulator, key);
        if (found == nullptr) {
            return kNotFound;
        }
        *value = *found;
        call.Out(*value);
        return 0;
    });
}

char* vconf_get_str(const char* key)
{
    char* text = nullptr;
    Perform("vconf_get_str", In(key), [&](PlatformCall& call) {
        if (key == nullptr) {
            return kInvalidArgument;
        }
        const std::string* found = FindSetting<std::string>(call.simulator, key);
        return found != nullptr ? call.GiveText(found, &text) : kNotFound;
    });
    return text;
}

int system_info_get_custom_int(const char* key, int* value)
{
    return Perform("system_info_get_custom_int", In(key), [&](PlatformCall& call) {
        if (key == nullptr || value == nullptr) {
            return kInvalidArgument;
        }
        const auto found = call.simulator.systemInfo.find(key);
        if (found == call.simulator.systemInfo.end()) {
            return kNotFound;
        }
        *value = found->second;
        call.Out(*value);
        return 0;
    });
}
