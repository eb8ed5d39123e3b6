// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace lyn::linux_platform {

/// Says in one line of the log, once in a process, that adverts are not read from a raw HCI socket, what is lost,
/// and how to grant it. @param error why the socket could not be opened, as an errno value
void WarnOfFallback(int error);

/// That line.
std::string FallbackText(int error);

}  // namespace lyn::linux_platform
