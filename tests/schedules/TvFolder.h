// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <string>

namespace lyn::schedules {

/// The folder of the TV's files, the same in all schedules: making one takes longer than a schedule.
class TvFolder {
public:
    /// Made by the first call, and removed by the process that made it.
    static const std::string& Path();

private:
    TvFolder();
    ~TvFolder();

    std::string m_path;
    pid_t m_owner;
};

}  // namespace lyn::schedules
