// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "FailureCodes.h"

namespace lyn::simulator {

using namespace platform;

inline constexpr int kNotOpen = -EPERM;
inline constexpr int kNoScenario = -EIO;

}  // namespace lyn::simulator
