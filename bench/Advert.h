// SPDX-License-Identifier: Apache-2.0
//
// A scan result as a platform hands it to its callback, to be delivered again and again. What a simulated
// radio does before that is left out, so that the cost is the library's.
#pragma once

#include <optional>
#include <string>

#include "Tv.h"

namespace lyn::bench {

using simulator::Bytes;

class Advert {
public:
    explicit Advert(std::optional<Bytes> advertising, std::optional<Bytes> scanResponse = std::nullopt);
    /// What a phone of the simulator has on the air.
    explicit Advert(const simulator::Phone& phone);
    Advert(const Advert&) = delete;
    Advert& operator=(const Advert&) = delete;

    const bt_adapter_le_device_scan_result_info_s* Info() const { return &m_info; }
    /// One scan result for whoever scans.
    void Deliver(const simulator::Registration<bt_adapter_le_scan_result_cb>& scan)
    {
        scan.callback(0, &m_info, scan.userData);
    }

private:
    std::string m_address = kPhone;
    std::optional<Bytes> m_advertising;
    std::optional<Bytes> m_scanResponse;
    bt_adapter_le_device_scan_result_info_s m_info{};
};

}  // namespace lyn::bench
