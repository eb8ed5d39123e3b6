// SPDX-License-Identifier: Apache-2.0
//
// One thread held at one point, and what happens meanwhile on others: all functions are called, all that may be
// delivered is delivered, the service is destroyed, and the next one is used. Then the thread is let go.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "holding/Deeds.h"
#include "holding/Deliveries.h"
#include "holding/Guest.h"
#include "holding/Point.h"
#include "holding/Tally.h"

namespace lyn::test {

class Visit {
public:
    enum class Order { deliveriesFirst, callsFirst };

    struct Plan {
        Order order = Order::deliveriesFirst;
        /// Where what moves the state may wait, one such thing can be tried at a time: which.
        std::size_t moving = 0;

        /// What it has of its own; empty for the first.
        std::string Text() const;
    };

    /// @param limit for what has to come back
    Visit(const Point& point, Plan plan, std::chrono::milliseconds limit, Tally& tally);
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

    /// Returns what was wrong; empty for nothing.
    std::vector<std::string> Pay();

    /// Plans that make a difference at this point, beside the first. After Pay().
    std::vector<Plan> FurtherPlans() const;

private:
    void Look();
    void PutInOrder() const;

    // Each says whether to go on.
    bool DoEverything();
    bool DeliverAll();
    bool Deliver(const Delivery& delivery, Work work);
    bool CallAll();
    bool DestroyHost();
    bool CreateNext();
    bool UseNext();
    bool AllCameBack();

    void CallShort(Guest& guest);
    void Call(const std::string& name, Work work, Guest& guest, lyn_error_e (Guest::*function)(),
              Deeds::Answers answers);
    void Ask(Guest& guest, const char* address, Deeds::Answers answers);
    void AskWithExtraData(Guest& guest, const char* address, Deeds::Answers answers);

    void LetGo();
    void CheckNext();
    void CheckRequestOf(const Guest& next);
    void CheckScanOf(const Guest& next);
    void CheckDeviceOf(const Guest& next);
    void EndAll();
    void CheckReports();
    void CheckTv();
    void Complain(const std::string& problem) { m_problems.push_back(problem); }

    bool MayHaveFoundNext() const;
    bool MayLookAtNext() const;

    const Point& m_point;
    const Plan m_plan;
    Tally& m_tally;
    std::vector<std::string> m_problems;

    Guest m_host;
    Guest m_rival;  ///< tries to create a service while there is one
    Guest m_heir;
    Guest* m_pNext = nullptr;  ///< the one of these two whose service comes after the host's

    bool m_hasExchange = false;
    bool m_hasDeviceReports = false;
    Deeds m_deeds;
};

}  // namespace lyn::test
