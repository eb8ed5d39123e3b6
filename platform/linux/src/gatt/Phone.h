// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "bus/Bus.h"
#include "gatt/Services.h"

namespace lyn::linux_platform {

/// A phone whose link has come up, as its clients see it. Any thread.
struct Phone {
    std::shared_ptr<Bus> bus;
    Services services;
    std::atomic<bool> up = true;  ///< false from the moment in which the link goes down
};

/// The one form of an address, six upper-case pairs; none when the text is no address.
std::optional<std::string> CanonicalAddress(const char* text);

}  // namespace lyn::linux_platform
