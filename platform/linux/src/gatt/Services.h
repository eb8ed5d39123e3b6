// SPDX-License-Identifier: Apache-2.0
//
// What a phone offers: the objects that BlueZ shows below the phone's own.
#pragma once

#include <string>
#include <vector>

#include "bus/Bus.h"

namespace lyn::linux_platform {

struct Characteristic {
    std::string path;
    std::string uuid;  ///< lower case
};

struct Service {
    std::string path;
    std::string uuid;  ///< lower case
    std::vector<Characteristic> characteristics;
};

using Services = std::vector<Service>;

/// The services of one device, taken from an answer to AllObjects().
Services ServicesOf(const Reply& objects, const std::string& devicePath);

/// A text in lower case, as UUIDs are compared.
std::string LowerCase(std::string text);

}  // namespace lyn::linux_platform
