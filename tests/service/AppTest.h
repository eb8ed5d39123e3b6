// SPDX-License-Identifier: Apache-2.0
//
// Fixture: an application that uses the services through the C interface, and a phone for each of them.
#pragma once

#include <string>
#include <vector>

#include "support/App.h"
#include "support/LogOrder.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

inline constexpr const char* kPhone = "AA:BB:CC:DD:EE:01";
inline constexpr const char* kMirroringTrigger = "memory/org.nuvex.bleapp/mirroring_trigger";
inline constexpr const char* kKovTrigger = "memory/org.nuvex.bleapp/kov_trigger";

using Texts = std::vector<std::string>;
using States = std::vector<lyn_state_e>;
using Results = std::vector<lyn_request_initiating_result_e>;

/// The phone kPhone of a service, which gives one answer again and again; an empty text is silence.
inline simulator::Phone PhoneFor(const std::string& service, const std::string& answer)
{
    const std::string uniqueId = "0123456789abcdefghijkl";
    simulator::Phone phone = service == "nodlink" ? simulator::NodLinkPhone(kPhone, true, true)
                             : service == "kov"   ? simulator::KovPhone(kPhone, "Kitchen", uniqueId)
                                                  : simulator::MirroringPhone(kPhone, "Kitchen", uniqueId);
    simulator::Answer reply;
    reply.kind = answer.empty() ? simulator::Answer::Kind::silent : simulator::Answer::Kind::notify;
    reply.text = answer;
    phone.services.at(0).characteristics.at(0).answers = {reply};
    return phone;
}

class AppTest : public SimulatedTv {
protected:
    /// Creates the service; what creating it did is no longer in the journal and the log.
    void Begin(const std::string& service)
    {
        ASSERT_EQ(app.Create(service), LYN_ERROR_NONE);
        EXPECT_TRUE(app.events.empty());
        Forget();
    }

    void Forget()
    {
        simulator::ClearJournal();
        simulator::ClearLog();
        app.states.clear();
        app.events.clear();
    }

    static void SetBluetooth(bt_adapter_state_e state)
    {
        simulator::SetAdapterState(state);
        simulator::Settle();
    }

    App app;
};

}  // namespace lyn::test
