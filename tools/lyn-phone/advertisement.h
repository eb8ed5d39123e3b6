// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "lyn_simulator/simulator.h"
#include "management.h"

namespace lynphone {

/// A phone's packets on the air while this lives.
class Advertisement {
public:
    /// @param adapter the number of the adapter. Throws lynctl::Failure.
    Advertisement(std::uint16_t adapter, const lyn::simulator::Phone& phone);
    ~Advertisement();
    Advertisement(const Advertisement&) = delete;
    Advertisement& operator=(const Advertisement&) = delete;

private:
    ManagementSocket m_management;
    std::uint16_t m_adapter;
};

}  // namespace lynphone
