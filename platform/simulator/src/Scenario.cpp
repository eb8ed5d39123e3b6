// SPDX-License-Identifier: Apache-2.0
#include "Scenario.h"

#include "ScenarioParts.h"
#include "ScenarioPhones.h"

namespace lyn::simulator {

Scenario ParseScenario(const std::string& json, const std::string& nameForErrors)
{
    const JsonDocument document(json, nameForErrors);
    const JsonField root(document);
    CheckScenarioMembers(root);
    Scenario scenario;
    if (const auto tv = root.Find("tv")) {
        scenario.tv = ParseTv(*tv);
    }
    scenario.phones = ParsePhones(root);
    return scenario;
}

Scenario ReadScenarioFile(const std::string& path)
{
    return ParseScenario(ScenarioText(path), path);
}

}  // namespace lyn::simulator
