// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>

namespace lyn::schedules {

/// Where one thread waits until another lets it pass.
class Gate {
public:
    /// Lets one thread pass: the one that waits, or the next to come.
    void Open();
    void Pass();

private:
    std::atomic<int> m_isOpen{0};
};

}  // namespace lyn::schedules
