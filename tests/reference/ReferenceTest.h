// SPDX-License-Identifier: Apache-2.0
//
// Fixture: an application and its phone, for tests whose names say how a value comes about.
#pragma once

#include <string>

#include "support/App.h"
#include "support/Seen.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

inline constexpr const char* kPhone = "AA:BB:CC:DD:EE:01";

class ReferenceTest : public SimulatedTv {
protected:
    /// Puts the phone of a service into the room; it gives these answers, the last one again and again.
    static void AddPhone(const std::string& service, const std::vector<std::string>& answers)
    {
        simulator::Phone phone = service == "nodlink"
                                     ? simulator::NodLinkPhone(kPhone, true, true)
                                     : simulator::MirroringPhone(kPhone, "Kitchen", "0123456789abcdefghijkl");
        for (const std::string& answer : answers) {
            phone.services.at(0).characteristics.at(0).answers.push_back(simulator::Answer{.text = answer});
        }
        simulator::AddPhone(phone);
    }

    App app;
};

}  // namespace lyn::test
