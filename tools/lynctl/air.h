// SPDX-License-Identifier: Apache-2.0
//
// What passes between the TV and a phone, on platforms that let us listen (the simulator).
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "library.h"
#include "lyn_simulator/air.h"

namespace lynctl {

struct AirEvent {
    lyn_simulator_air_event_e kind;
    std::string_view address;
    std::string_view bytes;  ///< lives until the callback returns
};

/// Listens from construction to destruction. One at a time.
class AirListener {
public:
    using Callback = std::function<void(const AirEvent&)>;

    AirListener(const Library& library, Callback onEvent);
    AirListener(const AirListener&) = delete;
    AirListener& operator=(const AirListener&) = delete;
    ~AirListener();

    /// False when the platform offers no listening.
    bool Offered() const { return m_listen != nullptr; }

private:
    Callback m_onEvent;
    decltype(&lyn_simulator_set_air_listener) m_listen;
};

}  // namespace lynctl
