// SPDX-License-Identifier: Apache-2.0
#include "Scenario.h"
#include "Simulator.h"

namespace lyn::simulator {

namespace {

void Begin(const Scenario& scenario)
{
    Simulator& simulator = Simulator::Instance();
    const std::lock_guard lock(simulator.mutex);
    simulator.Apply(scenario);
}

}  // namespace

void Reset()
{
    Begin(Scenario{});
}

void LoadScenarioFile(const std::string& path)
{
    Begin(ReadScenarioFile(path));
}

void LoadScenarioText(const std::string& json, const std::string& nameForErrors)
{
    Begin(ParseScenario(json, nameForErrors));
}

void LoadDefaultScenario()
{
    LoadScenarioText(DefaultScenarioText(), "default scenario");
}

std::string DefaultScenarioText()
{
    return kDefaultScenarioText;
}

}  // namespace lyn::simulator
