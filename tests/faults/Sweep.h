// SPDX-License-Identifier: Apache-2.0
//
// Tells one scenario again and again, each time with one thing going wrong, and looks at each ending.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <tuple>

#include "faults/Memory.h"
#include "faults/Scenarios.h"

namespace lyn::test {

enum class Kind {
    platform,  ///< a platform call fails
    once,      ///< one allocation fails
    lasting    ///< an allocation fails, and all that follow in its step
};

const char* NameOf(Kind kind);

struct Count {
    int points = 0;   ///< platform calls or allocations of the story that goes well
    int runs = 0;     ///< stories with a fault
    int leftOut = 0;  ///< allocations that failed already in another scenario that is like this one
    int failures = 0;
};

class Sweep {
public:
    /// @param onlyNth 0 for all
    Sweep(Kind kind, int onlyNth, std::function<void(const Count&)> onProgress)
        : m_kind(kind),
          m_onlyNth(onlyNth),
          m_onProgress(std::move(onProgress))
    {
    }

    Count Run(const Scenario& scenario);

private:
    void SweepPlatform();
    void SweepMemory(Shortage kind);
    void RunShort(int nth, Shortage kind, const Application& clean);
    bool IsWanted(int nth) const { return m_onlyNth == 0 || m_onlyNth == nth; }

    void TellClean(Application& app);
    void Begin(int nth, const std::string& what);
    void CheckLeft(unsigned mayLeave);
    void CheckPlainScenario();
    void Complain(const std::string& problem);

    Kind m_kind;
    int m_onlyNth;
    std::function<void(const Count&)> m_onProgress;
    const Scenario* m_scenario = nullptr;
    Count m_count;
    int m_nth = 0;
    /// Allocations that have failed: the story, their way, and the how many-th of it.
    std::set<std::tuple<std::string, Way, int>> m_done;
};

}  // namespace lyn::test
