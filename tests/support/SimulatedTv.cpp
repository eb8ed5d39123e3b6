// SPDX-License-Identifier: Apache-2.0
#include "support/SimulatedTv.h"

#include "support/Seen.h"

namespace lyn::test {

SimulatedTv::SimulatedTv()
{
    simulator::Reset();
    NoteLogLines();
}

SimulatedTv::~SimulatedTv()
{
    const simulator::Counts alive = simulator::Alive();
    EXPECT_EQ(alive.clients, 0) << "GATT clients left behind";
    EXPECT_EQ(alive.productInits, 0) << "Bluetooth initialisations left behind";
    EXPECT_EQ(alive.wifiDirectInits, 0) << "Wi-Fi Direct initialisations left behind";
    WriteSeen();
    simulator::Reset();
}

std::vector<std::string> SimulatedTv::Calls(const std::string& prefix)
{
    std::vector<std::string> calls;
    for (const simulator::Call& call : simulator::Journal()) {
        if (call.function.rfind(prefix, 0) == 0) {
            calls.push_back(call.function + "(" + call.arguments + ")");
        }
    }
    return calls;
}

int SimulatedTv::CountCalls(const std::string& function)
{
    int count = 0;
    for (const simulator::Call& call : simulator::Journal()) {
        count += call.function == function ? 1 : 0;
    }
    return count;
}

}  // namespace lyn::test
