// SPDX-License-Identifier: Apache-2.0
#include "Service/DeviceText.h"

#include <json/value.h>

#include "Common/JsonText.h"

namespace lyn {

std::string SerializeDevice(const lyn_device_info_t& device)
{
    const auto orEmpty = [](const char* text) { return text != nullptr ? text : ""; };
    Json::Value members;
    members["Name"] = orEmpty(device.name);
    members["Address"] = orEmpty(device.address);
    members["UniqueID"] = orEmpty(device.unique_id);
    members["ExtraData"] = orEmpty(device.extra_data);
    members["RSSI"] = device.rssi;
    return ToJsonText(members);
}

}  // namespace lyn
