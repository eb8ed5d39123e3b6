// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

#include "adverts/Advert.h"

namespace lyn::linux_platform {

/// Manufacturer data of one company.
struct CompanyData {
    std::uint16_t company;
    Bytes data;
};

/// Makes scan results of what BlueZ tells on the bus, where advertising packet and scan response are merged: of
/// data of the same company in both, only those of the one that came last are told.
///
/// What can be told apart: data of a phone of mirroring or Kov are 24 bytes long, as much as goes beside the
/// flags, and begin with its marker at byte 1. Other data of the same phone, from the same company at another time
/// or from another company, can then only be the scan response. NodLink phones say everything in the advertising
/// packet. What cannot: a name that makes the scan response look like an advertising packet. Such a phone's data
/// are delivered alone, which hides the phone but invents nothing.
///
/// The results hold manufacturer data only, in a packet made for them. The signal strength is the last one told.
class MergedData {
public:
    static constexpr std::size_t kMostDevices = 256;

    /// What is told of a device at one time. Nothing is kept of one that has never had a phone's data: strangers
    /// are many, and would push the phones out.
    /// @return the scan result, if the data are those of a phone
    std::optional<Advert> Take(const std::string& address, std::optional<int> rssi,
                               const std::vector<CompanyData>& all);

private:
    struct Device {
        std::string address;
        int rssi;
        std::optional<Bytes> phone;     ///< data that can only be the advertising packet's
        std::optional<Bytes> response;  ///< a packet
        bool ambiguous;                 ///< different data could be the advertising packet's
    };

    Device* Find(const std::string& address);
    Device& FindOrAdd(const std::string& address);

    std::vector<Device> m_devices;  ///< the one known for longest first
};

}  // namespace lyn::linux_platform
