// SPDX-License-Identifier: Apache-2.0
//
// What a NodLink phone answers. Input: up to four answers, one to each message of the TV, with a 0xFF byte
// between them. Whatever they are, the exchange is the expected one.
#include "ExpectedExchange.h"
#include "NodLinkTalk.h"
#include "Room.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace lyn::fuzz;
    constexpr std::size_t mostAnswers = 4;
    TalkNodLink(Split(Input(data, size).TakeRest(), '\xFF', mostAnswers),
                R"({"screenmirroring_fullview":["video"],"soundmirroring":["music"]})");
    return 0;
}
