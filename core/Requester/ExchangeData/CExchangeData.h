// SPDX-License-Identifier: Apache-2.0
//
// What the messages of all features are made of: the TV's name and addresses, the channel on which it
// listens for Wi-Fi Direct, its device type and icon. The base builds no message itself.
//
// A value that cannot be had throws LynExceptionInternal (LynExceptionOperationFailed for type and icon),
// which ends the request.
#pragma once

#include <json/value.h>

#include <optional>
#include <string>

#include "Requester/ExchangeData/IExchangeData.h"

namespace lyn {

class CExchangeData : public IExchangeData {
public:
    std::string GetExchangeData(const std::string& dataType) override;
    void SetExtraData(const std::string& extraData) override;
    std::string BuildControlData() override;
    std::string GetServiceType() override;

    std::string GetExtraData() const;
    std::string GetTvName() const;
    std::string GetBtAddress() const;
    std::string GetP2PMac() const;
    /// Blocks up to one second while the listener is not up yet.
    int GetP2PListenChannel() const;
    /// Wi-Fi channel of a frequency in MHz; -1 for 2473 to 2483. Throws LynExceptionInternal for others.
    int ConvertFreqToChannerl(int frequency) const;
    /// Read once: a builder lives for one message.
    virtual int GetDeviceIcon() const;
    virtual int GetDeviceType() const;

protected:
    /// The members that all control messages have.
    Json::Value BuildCommonData();
    /// The addresses by which a phone reaches the TV; here that of Wi-Fi Direct.
    virtual void AddAddresses(Json::Value& message) const;

private:
    std::string m_ExtraData;
    mutable std::optional<int> m_DeviceIcon;
    mutable std::optional<int> m_DeviceType;
};

}  // namespace lyn
