// SPDX-License-Identifier: Apache-2.0
//
// What a phone of FUZZ_SERVICE answers. Input: up to two answers, with a 0xFF byte between them; the second
// one answers the second message of NodLink.
#include "Room.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace lyn;
    using simulator::Answer;
    const std::string input = fuzz::Input(data, size).TakeRest();
    const std::size_t border = input.find('\xFF');

    fuzz::PrepareTv();
    simulator::WriteFile("/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json",
                         R"({"screenmirroring_fullview":["video"],"soundmirroring":["music"]})");
    const std::string address = "AA:BB:CC:DD:EE:01";
    simulator::Phone phone = std::string(FUZZ_SERVICE) == "nodlink"
                                 ? simulator::NodLinkPhone(address, true, true)
                                 : simulator::MirroringPhone(address, "Phone", "0123456789abcdefghijkl");
    auto& answers = phone.services.at(0).characteristics.at(0).answers;
    answers = {Answer{.text = input.substr(0, border)}};
    if (border != std::string::npos) {
        answers.push_back(Answer{.text = input.substr(border + 1)});
    }
    simulator::AddPhone(phone);

    fuzz::App app(FUZZ_SERVICE);
    app.RequestAndRequireOneResult(address, "");
    return 0;
}
