// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <fstream>

namespace lyn {

/// Opens a file of the TV for reading, wherever this platform keeps it. Not open when it cannot be read.
std::ifstream OpenTvFile(const char* path);

}  // namespace lyn
