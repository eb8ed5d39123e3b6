// SPDX-License-Identifier: Apache-2.0
//
// What a phone of FUZZ_SERVICE, mirroring or kov, answers. Input: the notified bytes. The result is compared
// with ExpectedExchange.
#include "ExpectedExchange.h"
#include "Room.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace lyn;
    const std::string answer = fuzz::Input(data, size).TakeRest();

    const fuzz::Tv tv;
    simulator::Phone phone = std::string(FUZZ_SERVICE) == "kov"
                                 ? simulator::KovPhone(fuzz::ADDRESS, "Phone", fuzz::UNIQUE_ID)
                                 : simulator::MirroringPhone(fuzz::ADDRESS, "Phone", fuzz::UNIQUE_ID);
    phone.services.at(0).characteristics.at(0).answers = {simulator::Answer{.text = answer}};
    simulator::AddPhone(phone);

    fuzz::App app(FUZZ_SERVICE);
    fuzz::Require(app.Request(fuzz::ADDRESS) == fuzz::ExpectResult(answer), "the result is the answer's");
    fuzz::Require(simulator::MessagesTo(fuzz::ADDRESS).size() == 1, "there is one message");
    return 0;
}
