// SPDX-License-Identifier: Apache-2.0
//
// A scenario file of the simulator: it is taken, or refused with one line that names the place.
#include "Room.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace lyn;
    const std::string text = fuzz::Input(data, size).TakeRest();
    try {
        simulator::LoadScenarioText(text, "room.json");
    } catch (const simulator::ScenarioError& e) {
        const std::string what = e.what();
        fuzz::Require(what.rfind("room.json:", 0) == 0, "an error names the file");
        fuzz::Require(what.find('\n') == std::string::npos, "an error is one line");
    }
    simulator::Reset();
    return 0;
}
