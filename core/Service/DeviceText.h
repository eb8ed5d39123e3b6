// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "lyn_service.h"

namespace lyn {

/// A found phone as one line of JSON, as lyn_start_scan_with_serialization() gives it.
std::string SerializeDevice(const lyn_device_info_t& device);

}  // namespace lyn
