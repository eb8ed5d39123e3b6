// SPDX-License-Identifier: Apache-2.0
//
// Arbitrary sequences of C calls, platform events, failing platform calls and late reports; Player.h names
// the steps. Whatever happens, the calls and reports are as documented, each accepted request has its one
// result, nothing is reported or left behind after the end, and a normal request works afterwards.
#include "Player.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace lyn;
    {
        const fuzz::Tv tv;
        fuzz::Player(fuzz::Input(data, size)).Play();
    }
    const fuzz::Tv tv;
    simulator::Phone phone = simulator::MirroringPhone(fuzz::ADDRESS, "Phone", fuzz::UNIQUE_ID);
    phone.services.at(0).characteristics.at(0).answers = {simulator::Answer{.text = "Success"}};
    simulator::AddPhone(phone);
    fuzz::Require(fuzz::App("mirroring").Request(fuzz::ADDRESS) == LYN_REQUEST_INITIATING_RESULT_SUCCESS,
                  "a request works afterwards");
    return 0;
}
