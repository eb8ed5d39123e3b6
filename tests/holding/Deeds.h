// SPDX-License-Identifier: Apache-2.0
//
// What is done while a thread is held at a point: each deed on a thread of its own.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "holding/Exceptions.h"
#include "holding/Job.h"
#include "holding/Point.h"
#include "holding/Tally.h"

namespace lyn::test {

class Deeds {
public:
    /// Values that are right; none for any.
    using Answers = std::vector<std::string>;

    /// @param limit for what has to come back
    Deeds(const Point& point, std::chrono::milliseconds limit) : m_point(point), m_limit(limit) {}
    Deeds(const Deeds&) = delete;
    Deeds& operator=(const Deeds&) = delete;

    /// Begins the step that is to be held at the point.
    void Tell(Guest& host);
    /// Waits until it is held there. False when it does not come there.
    bool AwaitHeld() const { return m_trap.AwaitHeld(*m_held, m_limit); }

    /// @param isOfNext it concerns the next service
    void Start(const std::string& name, Work work, bool isOfNext, std::function<std::string()> function,
               Answers answers);

    /// Waits until all have come back that may not wait, and the others are back or asleep. The names of those
    /// that did not come back; empty when all is well.
    std::string AwaitReturns();
    /// Notes what has come back, and what waits for the held thread. When everything else has come back.
    void Note(Tally& tally) const;
    /// Lets the held thread go, and waits until everything has ended. If it never does, the process ends.
    void LetGo();

    /// What was returned and should not have been. When everything has ended.
    std::vector<std::string> WrongAnswers(bool areThoseOfNextRight) const;

private:
    struct Deed {
        std::unique_ptr<Job> job;
        bool isOfNext;
        std::optional<std::size_t> exception;
        Answers answers;
        bool isAtRest = false;
    };

    const Point& m_point;
    const std::chrono::milliseconds m_limit;
    Trap m_trap;
    std::unique_ptr<Job> m_held;
    std::vector<Deed> m_deeds;
};

}  // namespace lyn::test
