// SPDX-License-Identifier: Apache-2.0
//
// Fixture: a requester by itself, a phone that it may ask, and the results that it delivers.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Requester/CScreenMirroringRequester.h"
#include "support/Clock.h"
#include "support/LogOrder.h"
#include "support/SimulatedTv.h"

namespace lyn::test {

inline constexpr const char* kPhone = "AA:BB:CC:DD:EE:01";
inline constexpr const char* kServiceUuid = "f7608236-13bd-4a99-bbcd-9426bccb6c24";
inline constexpr const char* kCharacteristicUuid = "9be85432-b1db-416c-9e1c-d6d381305337";

using Texts = std::vector<std::string>;
using ExchangePtr = std::shared_ptr<Exchange>;

/// A requester whose exchanges are open to tests.
template <typename Requester>
class Open : public Requester {
public:
    using CRequester::Latest;
    using Requester::Requester;

    /// An exchange whose call has ended.
    ExchangePtr Begin()
    {
        ExchangePtr exchange = BeginInACall();
        this->EndRequestCall();
        return exchange;
    }
    ExchangePtr BeginInACall() { return this->BeginExchange(""); }
};

class RequesterTest : public SimulatedTv {
protected:
    RequesterTest()
    {
        while (ElapseTimeout()) {
            simulator::Settle();
        }
        simulator::Answer answer;
        answer.text = "Success";
        PhoneAnswers({answer});
    }

    static void PhoneAnswers(const std::vector<simulator::Answer>& answers, int disconnectDelayMs = 0)
    {
        simulator::Characteristic characteristic;
        characteristic.uuid = kCharacteristicUuid;
        characteristic.answers = answers;
        simulator::Phone phone;
        phone.address = kPhone;
        phone.services = {{kServiceUuid, {characteristic}}};
        phone.disconnectDelayMs = disconnectDelayMs;
        simulator::AddPhone(phone);
    }

    RequestResultCb Keep()
    {
        return [this](const std::string& result) { m_results.push_back(result); };
    }

    template <typename Requester = CScreenMirroringRequester>
    std::shared_ptr<Open<Requester>> Make()
    {
        return std::make_shared<Open<Requester>>(Keep());
    }

    /// A request and the end of its call. False when it is refused.
    static bool Ask(CRequester& requester, const std::string& extraData = "")
    {
        const bool begun = requester.RequestInitiating(kPhone, extraData);
        requester.EndRequestCall();
        return begun;
    }

    Texts m_results;
};

}  // namespace lyn::test
