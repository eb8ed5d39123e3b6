// SPDX-License-Identifier: Apache-2.0
//
// The seam's headers, declared as visible: what is declared here is exported from the library, all the
// rest of it is hidden.
#pragma once

#pragma GCC visibility push(default)
#include "lyn_platform/bluetooth.h"
#include "lyn_platform/files.h"
#include "lyn_platform/gatt.h"
#include "lyn_platform/log.h"
#include "lyn_platform/power.h"
#include "lyn_platform/settings.h"
#include "lyn_platform/system_info.h"
#include "lyn_platform/wifi.h"
#pragma GCC visibility pop
