// SPDX-License-Identifier: Apache-2.0
//
// What the GATT objects report and what they are told to register.
#pragma once

#include <functional>
#include <list>
#include <map>
#include <string>

#include "lyn_platform/gatt.h"

namespace lyn {

using ConnectionStateChangedCb = std::function<void(int result, bool connected, const std::string& address)>;
using CharacteristicValueChangedCb = std::function<void(const char* value, int length)>;
using MtuChangedCb = std::function<void(void* client, const bt_gatt_client_att_mtu_info_s* info)>;
using CharacteristicWriteCompletedCb = std::function<void(int result)>;

/// The characteristics to register, by service. UUIDs are 128-bit texts in lower case.
using GattUuidMap = std::map<std::string, std::list<std::string>>;

}  // namespace lyn
