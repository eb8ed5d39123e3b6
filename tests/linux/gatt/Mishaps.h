// SPDX-License-Identifier: Apache-2.0
//
// For sweeps: which calls a request consists of, and what may become of each.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "FakeDaemon.h"

namespace lyn::linux_tests {

struct Mishap {
    const char* name;
    Treatment treatment;
};

inline const std::vector<Mishap>& Mishaps()
{
    static const std::vector<Mishap> mishaps = {
        {"fails", Treatment::Fails("org.bluez.Error.Failed")},
        {"is refused as busy", Treatment::Fails("org.bluez.Error.InProgress")},
        {"is unknown", Treatment::Fails("org.freedesktop.DBus.Error.UnknownObject")},
        {"is late", Treatment::Late(60)},
        {"comes twice", Treatment::Twice()},
        {"is done and never answered", Treatment::DoneWithoutAnswer()},
        {"is never done", Treatment::Ignored()},
        {"kills bluetoothd", Treatment::Dies()},
    };
    return mishaps;
}

/// One call of a request: the nth of its method.
struct Step {
    std::string method;
    int nth = 0;
};

inline std::vector<Step> StepsOf(const std::vector<std::string>& calls)
{
    std::vector<Step> steps;
    for (const std::string& method : calls) {
        const auto before =
            std::count_if(steps.begin(), steps.end(), [&](const Step& step) { return step.method == method; });
        steps.push_back({method, static_cast<int>(before) + 1});
    }
    return steps;
}

}  // namespace lyn::linux_tests
