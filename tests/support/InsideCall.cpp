// SPDX-License-Identifier: Apache-2.0
#include "support/InsideCall.h"

#include <memory>
#include <utility>

#include "lyn_simulator/simulator.h"

namespace lyn::test {

void InsideCall(const std::string& function, std::function<void()> work)
{
    const auto once = std::make_shared<std::function<void()>>(std::move(work));
    simulator::SetCallListener([function, once](const simulator::CallMoment& moment) {
        if (moment.function == function && moment.phase == simulator::CallMoment::Phase::after && *once) {
            std::exchange(*once, nullptr)();
        }
    });
}

}  // namespace lyn::test
