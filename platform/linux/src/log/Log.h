// SPDX-License-Identifier: Apache-2.0
//
// What the platform itself has to say, in the same log as the library.
#pragma once

namespace lyn::linux_platform {

void LogInfo(const char* format, ...) __attribute__((format(printf, 1, 2)));
void LogWarn(const char* format, ...) __attribute__((format(printf, 1, 2)));
void LogError(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace lyn::linux_platform
