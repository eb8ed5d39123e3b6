// SPDX-License-Identifier: Apache-2.0
//
// Builds one message for a phone; made for the message and destroyed after it.
#pragma once

#include <string>

namespace lyn {

class IExchangeData {
public:
    IExchangeData() = default;
    virtual ~IExchangeData() = default;
    IExchangeData(const IExchangeData&) = delete;
    IExchangeData& operator=(const IExchangeData&) = delete;

    /// The message of a kind of data, for example "control".
    virtual std::string GetExchangeData(const std::string& dataType) = 0;
    virtual void SetExtraData(const std::string& extraData) = 0;
    virtual std::string BuildControlData() = 0;
    /// Value of the message's "type" member.
    virtual std::string GetServiceType() = 0;
};

}  // namespace lyn
