// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "lyn_simulator/simulator.h"

namespace lyn::simulator {

/// The kernel log. Each opening is a socket pair of its own: it keeps the bytes of one write together,
/// whoever else writes at the same time. The caller holds the simulator's lock.
class KernelLogBook {
public:
    void Reset();
    void SetMode(KernelLogMode mode);

    int Open();
    std::vector<std::string> Lines();

private:
    void Collect();

    KernelLogMode m_mode = KernelLogMode::capture;
    bool m_capturing = false;
    std::vector<int> m_open;  ///< our ends of what is not yet written
    std::vector<std::string> m_lines;
};

}  // namespace lyn::simulator
