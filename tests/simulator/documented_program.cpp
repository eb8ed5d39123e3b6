// SPDX-License-Identifier: Apache-2.0
#include <cstdio>
#include <string>

#include "lyn_service.h"
#include "lyn_simulator/simulator.h"

int main()
{
    using namespace lyn::simulator;
    Reset();
    Phone phone = MirroringPhone("AA:BB:CC:DD:EE:01", "Kitchen", "0123456789abcdefghijkl");
    phone.connects = {{133, 0}, {0, 0}};  // the first connect fails, and the library tries again
    phone.services[0].characteristics[0].answers = {Answer{.text = "Success"}};
    AddPhone(phone);

    lyn_service_h service = nullptr;
    if (lyn_create_service(&service, "mirroring", nullptr, nullptr) != LYN_ERROR_NONE) {
        return 1;
    }
    int result = -1;
    const auto keep = [](lyn_request_initiating_result_e value, void* out) { *static_cast<int*>(out) = value; };
    lyn_request_initiating(service, phone.address.c_str(), keep, &result);
    const bool came = RunUntil([&] { return result >= 0; });
    lyn_destroy_service(service);

    for (const std::string& call : JournalText()) {
        std::printf("%s\n", call.c_str());
    }
    for (const std::string& message : MessagesTo(phone.address)) {
        std::printf("the phone got %s\n", message.c_str());
    }
    return came && result == LYN_REQUEST_INITIATING_RESULT_SUCCESS ? 0 : 1;
}
