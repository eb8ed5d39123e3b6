// SPDX-License-Identifier: Apache-2.0
//
// The reader's half of the agreement between reader and published schema; check_schema.py is the other half.
#include <json/json.h>

#include <filesystem>
#include <fstream>

#include "SimulatorTest.h"

namespace lyn::simulator::test {
namespace {

class ScenarioSamples : public SimulatorTest {
protected:
    static Json::Value Samples(const std::string& file)
    {
        Json::Value samples;
        std::ifstream(std::string(SIMULATOR_SAMPLES) + "/" + file) >> samples;
        EXPECT_FALSE(samples.empty()) << file;
        return samples;
    }

    static std::string Text(const Json::Value& scenario)
    {
        return Json::writeString(Json::StreamWriterBuilder(), scenario);
    }

    static void ExpectRefused(const std::string& file)
    {
        const Json::Value samples = Samples(file);
        for (const std::string& name : samples.getMemberNames()) {
            EXPECT_THROW(LoadScenarioText(Text(samples[name]), name), ScenarioError) << name;
        }
    }
};

TEST_F(ScenarioSamples, ThatAreValidAreAccepted)
{
    const Json::Value samples = Samples("valid.json");
    for (const std::string& name : samples.getMemberNames()) {
        EXPECT_NO_THROW(LoadScenarioText(Text(samples[name]), name)) << name;
    }
}

TEST_F(ScenarioSamples, ThatAreInvalidAreRefused)
{
    ExpectRefused("invalid.json");
}

TEST_F(ScenarioSamples, ThatOnlyTheReaderCanTellAreRefused)
{
    ExpectRefused("invalid_for_the_reader.json");
}

TEST_F(ScenarioSamples, ThatAreShippedAreAccepted)
{
    int shipped = 0;
    for (const auto& entry : std::filesystem::directory_iterator(SIMULATOR_SCENARIOS)) {
        EXPECT_NO_THROW(LoadScenarioFile(entry.path().string())) << entry.path();
        EXPECT_FALSE(Phones().empty()) << entry.path();
        ++shipped;
    }
    EXPECT_GE(shipped, 2);
}

}  // namespace
}  // namespace lyn::simulator::test
