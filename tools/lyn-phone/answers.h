// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

#include "lyn_simulator/simulator.h"

namespace lynphone {

/// A characteristic's answers in their order, as the simulator gives them: the last one again and again; silence
/// when there are none.
class Answers {
public:
    Answers(std::vector<lyn::simulator::Answer> answers, bool perLink);

    /// The next answer. `link` is a number that differs for each link.
    lyn::simulator::Answer Next(unsigned link);

private:
    std::vector<lyn::simulator::Answer> m_answers;
    bool m_perLink;
    unsigned m_link = 0;
    std::size_t m_used = 0;
};

}  // namespace lynphone
