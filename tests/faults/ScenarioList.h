// SPDX-License-Identifier: Apache-2.0
//
// What scenarios are made of.
#pragma once

#include <string>
#include <vector>

#include "faults/Scenarios.h"
#include "lyn_simulator/simulator.h"

namespace lyn::test {

inline constexpr const char* kListenChannel = "memory/menu/network/screenmirroring/p2p_listen_channel";

/// The phone of a service; it agrees, and advertises once in each scan.
simulator::Phone QuietPhone(const std::string& service);

/// A room with this phone.
SetUp RoomWith(const simulator::Phone& phone);

/// Request, result, and back to rest.
void Ask(Application& app);

/// The scenarios of one service.
class ScenarioList {
public:
    explicit ScenarioList(std::string service) : m_service(std::move(service)) {}

    const std::string& Service() const { return m_service; }

    /// Adds a scenario; it may be changed until the next is added.
    Scenario& Add(const std::string& name, const SetUp& setUp, const Story& story)
    {
        return m_scenarios.emplace_back(Scenario{m_service, name, setUp, story});
    }
    Scenario& Add(const std::string& name, const Story& story)
    {
        return Add(name, RoomWith(QuietPhone(m_service)), story);
    }

    const std::vector<Scenario>& All() const { return m_scenarios; }

private:
    std::string m_service;
    std::vector<Scenario> m_scenarios;
};

/// Requests to a phone, to each of their endings.
void AddRequests(ScenarioList& list);

/// What only "nodlink" does.
void AddNodLink(ScenarioList& list);

}  // namespace lyn::test
