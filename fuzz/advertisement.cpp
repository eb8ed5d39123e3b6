// SPDX-License-Identifier: Apache-2.0
//
// Advertising bytes, as they come from the air, against the scanner of FUZZ_SERVICE. Input: a byte of
// flags (1: no advertising packet, 2: no scan response), the packet with its length in front, the rest is
// the scan response.
#include <glib.h>

#include <cstring>

#include "Room.h"

namespace {

void OnFound(const lyn_device_info_t* info, void* userData)
{
    using lyn::fuzz::Require;
    Require(info->address != nullptr && info->unique_id != nullptr && info->extra_data != nullptr,
            "texts are there");
    Require(info->name == nullptr || *info->name != '\0', "an empty name is absent");
    if (std::strcmp(FUZZ_SERVICE, "mirroring") == 0 && info->name != nullptr) {
        Require(g_utf8_validate(info->name, -1, nullptr) != FALSE, "a name is valid UTF-8");
    }
    ++static_cast<lyn::fuzz::App*>(userData)->phones;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace lyn;
    fuzz::Input input(data, size);
    const unsigned flags = input.TakeByte();
    const simulator::Bytes advertising = input.TakeBytes();
    const std::string rest = input.TakeRest();
    const simulator::Bytes scanResponse(rest.begin(), rest.end());

    fuzz::PrepareTv();
    fuzz::App app(FUZZ_SERVICE);
    fuzz::Require(lyn_start_scan(app.handle, OnFound, &app) == LYN_ERROR_NONE, "a scan starts");
    simulator::DeliverAdvertisement("AA:BB:CC:DD:EE:01", -50,
                                    (flags & 1U) != 0 ? std::nullopt : std::optional(advertising),
                                    (flags & 2U) != 0 ? std::nullopt : std::optional(scanResponse));
    fuzz::Require(app.phones <= 1, "one advertisement is one phone at most");
    fuzz::Require(lyn_stop_scan(app.handle) == LYN_ERROR_NONE, "a scan stops");
    return 0;
}
