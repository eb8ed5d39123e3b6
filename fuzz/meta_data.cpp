// SPDX-License-Identifier: Apache-2.0
//
// The NodLink metadata file. Input: the package name with its length in front, the rest is the file.
#include "Room.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace lyn;
    using simulator::Answer;
    fuzz::Input input(data, size);
    const std::string package = input.TakeText();
    const std::string file = input.TakeRest();
    const std::string address = "AA:BB:CC:DD:EE:01";

    fuzz::PrepareTv();
    simulator::WriteFile("/home/owner/apps_rw/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json", file);
    simulator::Phone phone = simulator::NodLinkPhone(address, true, true);
    phone.services.at(0).characteristics.at(0).answers = {
        Answer{.text = R"({"type":"fgApp","packageName":")" + package + R"("})"}, Answer{.text = "Success"}};
    simulator::AddPhone(phone);

    fuzz::App app("nodlink");
    app.RequestAndRequireOneResult(address, "");
    nod_link_type type = -1;
    fuzz::Require(lyn_get_nodlink_type(app.handle, &type) == LYN_ERROR_NONE, "the type can be read");
    fuzz::Require(type >= LYN_NOD_LINK_TYPE_MULTI_VIEW && type <= LYN_NOD_LINK_TYPE_SOUND, "the type is known");
    return 0;
}
