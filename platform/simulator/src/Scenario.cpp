// SPDX-License-Identifier: Apache-2.0
#include "Scenario.h"

#include <fstream>
#include <set>
#include <sstream>

#include "ScenarioParts.h"

namespace lyn::simulator {

namespace {

std::vector<Phone> ParsePhones(const JsonField& field)
{
    std::vector<Phone> phones;
    std::set<std::string> addresses;
    for (const JsonField& element : field.Elements()) {
        phones.push_back(ParsePhone(element));
        if (!addresses.insert(phones.back().address).second) {
            element.Get("address").Fail("another phone has this address");
        }
    }
    return phones;
}

}  // namespace

Scenario ParseScenario(const std::string& json, const std::string& nameForErrors)
{
    const JsonDocument document(json, nameForErrors);
    const JsonField root(document);
    root.OnlyMembers({"$schema", "description", "tv", "phones"});
    Scenario scenario;
    for (const char* text : {"$schema", "description"}) {
        if (const auto field = root.Find(text)) {
            field->Text();
        }
    }
    if (const auto tv = root.Find("tv")) {
        scenario.tv = ParseTv(*tv);
    }
    if (const auto phones = root.Find("phones")) {
        scenario.phones = ParsePhones(*phones);
    }
    return scenario;
}

Scenario ReadScenarioFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf())) {
        throw ScenarioError(path + ": cannot be read");
    }
    return ParseScenario(text.str(), path);
}

}  // namespace lyn::simulator
