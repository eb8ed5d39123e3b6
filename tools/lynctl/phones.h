// SPDX-License-Identifier: Apache-2.0
//
// The phones that a scan has found so far.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "lyn_service.h"

namespace lynctl {

/// One advertisement of a phone, with texts of its own.
struct Sighting {
    std::string name;
    std::string address;
    std::string id;
    std::string extra;
    int rssi = 0;

    static Sighting From(const lyn_device_info_t& info);
    /// Reads the library's serialized form; members that are missing or of another type stay empty.
    static Sighting From(const char* json);
};

struct Phone : Sighting {
    double lastSeen = 0;  ///< seconds since the start
    unsigned long count = 0;
};

/// What a NodLink phone says in its extra data; empty texts where it does not.
struct NodlinkFacts {
    std::string type;
    std::string mirroring;  ///< "yes" or "no"
    std::string version;

    static NodlinkFacts From(const std::string& extra);
};

/// Phones in the order in which they came. Bounded: an advertiser that changes its address all the time
/// pushes out those that have been silent for longest.
class Phones {
public:
    static constexpr std::size_t kMost = 500;

    enum class News { none, changed, added };
    struct Noted {
        const Phone& phone;
        News news;  ///< apart from the RSSI
    };
    /// Takes note of an advertisement.
    Noted Add(const Sighting& sighting, double seconds);

    const std::vector<Phone>& All() const { return m_phones; }
    unsigned long Advertisements() const { return m_advertisements; }

private:
    std::vector<Phone> m_phones;
    unsigned long m_advertisements = 0;
};

}  // namespace lynctl
