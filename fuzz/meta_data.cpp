// SPDX-License-Identifier: Apache-2.0
//
// The NodLink metadata file. Input: the package name with its length in front, the rest is the file. The
// exchange is the expected one, whatever the file says.
#include "NodLinkTalk.h"
#include "Room.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    lyn::fuzz::Input input(data, size);
    const std::string package = input.TakeText();
    lyn::fuzz::TalkNodLink({R"({"type":"fgApp","packageName":")" + package + R"("})", "Success"},
                           input.TakeRest());
    return 0;
}
