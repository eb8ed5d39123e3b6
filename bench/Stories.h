// SPDX-License-Identifier: Apache-2.0
//
// What happens in one cycle of the soak: a scan that finds a phone, and a request to it that ends in one of the
// ways in which requests end.
#pragma once

#include <memory>
#include <string>

#include "Tv.h"

namespace lyn::bench {

/// Tells one story after the other, with one service after the other.
class Narrator {
public:
    /// A service is used for so many cycles before the next one takes its place.
    explicit Narrator(long cyclesPerService) : m_cyclesPerService(cyclesPerService) {}

    /// One cycle. Throws std::runtime_error when something is not as it should be.
    void Next();
    /// No service any more, nothing under way, and the TV at rest: a request that was left in its middle leaves
    /// its link and the scan boost to the next one, so one plain cycle comes before.
    void ComeToRest();

private:
    void Tell(const std::string& service, long number);
    void EndService();

    long m_cyclesPerService;
    long m_cycles = 0;
    std::unique_ptr<App> m_app;
};

/// How many ways to end there are.
long StoryCount();

}  // namespace lyn::bench
