// SPDX-License-Identifier: Apache-2.0
//
// What a scanner reports, and the callables that take it.
#pragma once

#include <functional>

#include "lyn_service.h"

namespace lyn {

enum ScanState : int { SCAN_STATE_STOPPED = 0, SCAN_STATE_STARTED = 1 };

using DeviceFoundCb = std::function<void(const lyn_device_info_t&)>;
using ScanStateChangedCb = std::function<void(ScanState)>;

}  // namespace lyn
