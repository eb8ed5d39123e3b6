// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "FailureCodes.h"

namespace lyn::linux_platform {

using namespace platform;

inline constexpr int kNoBus = -EHOSTDOWN;
inline constexpr int kBusy = -EBUSY;
inline constexpr int kCanceled = -ECANCELED;
inline constexpr int kNotSupported = -EOPNOTSUPP;
inline constexpr int kNoAnswer = -ETIMEDOUT;
inline constexpr int kFailed = -EIO;

}  // namespace lyn::linux_platform
