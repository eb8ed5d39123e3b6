// SPDX-License-Identifier: Apache-2.0
#include "gatt/Services.h"

#include <algorithm>

#include "bluez/Bluez.h"

namespace lyn::linux_platform {

Services ServicesOf(const Reply& objects, const std::string& devicePath)
{
    Services services;
    ForEachObject(objects, kGattService, [&](const std::string& path, GVariant* properties) {
        if (LookupPath(properties, "Device") == devicePath) {
            services.push_back({path, LowerCase(LookupText(properties, "UUID").value_or("")), {}});
        }
    });
    ForEachObject(objects, kGattCharacteristic, [&](const std::string& path, GVariant* properties) {
        const auto owner = LookupPath(properties, "Service");
        const auto service = std::find_if(services.begin(), services.end(),
                                          [&](const Service& candidate) { return candidate.path == owner; });
        if (service != services.end()) {
            service->characteristics.push_back({path, LowerCase(LookupText(properties, "UUID").value_or(""))});
        }
    });
    return services;
}

std::string LowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](char c) { return g_ascii_tolower(c); });
    return text;
}

}  // namespace lyn::linux_platform
