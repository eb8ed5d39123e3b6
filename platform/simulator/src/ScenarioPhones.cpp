// SPDX-License-Identifier: Apache-2.0
#include "ScenarioPhones.h"

#include <fstream>
#include <set>
#include <sstream>

#include "ScenarioParts.h"

namespace lyn::simulator {

void CheckScenarioMembers(const JsonField& root)
{
    root.OnlyMembers({"$schema", "description", "tv", "phones"});
    for (const char* text : {"$schema", "description"}) {
        if (const auto field = root.Find(text)) {
            field->Text();
        }
    }
}

std::vector<Phone> ParsePhones(const JsonField& root)
{
    std::vector<Phone> phones;
    const auto field = root.Find("phones");
    if (!field) {
        return phones;
    }
    std::set<std::string> addresses;
    for (const JsonField& element : field->Elements()) {
        phones.push_back(ParsePhone(element));
        if (!addresses.insert(phones.back().address).second) {
            element.Get("address").Fail("another phone has this address");
        }
    }
    return phones;
}

std::string ScenarioText(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf())) {
        throw ScenarioError(path + ": cannot be read");
    }
    return text.str();
}

std::vector<Phone> ReadPhones(const std::string& path)
{
    const JsonDocument document(ScenarioText(path), path);
    const JsonField root(document);
    CheckScenarioMembers(root);
    return ParsePhones(root);
}

}  // namespace lyn::simulator
