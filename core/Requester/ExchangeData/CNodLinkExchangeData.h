// SPDX-License-Identifier: Apache-2.0
//
// The two messages of NodLink: the control message, and the mirroring-type message that answers a phone
// which has named the application in its foreground.
#pragma once

#include <string>

#include "Requester/ExchangeData/CExchangeData.h"

namespace lyn {

class CNodLinkExchangeData : public CExchangeData {
public:
    /// `data` is the version suffix of the control message's type, or the phone's message when the
    /// mirroring-type message is wanted.
    explicit CNodLinkExchangeData(std::string data);

    /// The mirroring-type message for "mirroringType", else the control message.
    std::string GetExchangeData(const std::string& dataType) override;
    std::string BuildControlData() override;
    std::string GetServiceType() override;

    std::string BuildMirroringTypeData();
    /// "screenmirroring_fullview", "soundmirroring" or "screenmirroring_multiview". Throws
    /// LynExceptionInternal when the metadata file is missing or unparsable.
    std::string GetMirroringTypeFromAppId(const std::string& appId) const;

    int GetDeviceIcon() const override;
    int GetDeviceType() const override;

protected:
    void AddAddresses(Json::Value& message) const override;

private:
    std::string m_Data;
    std::string m_MetaDataPath = "/usr/apps/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";
    std::string m_MetaDataRwPath = "/home/owner/apps_rw/com.calyxon.tv.nfc-daemon/data/meta_data_nodlink.json";
};

}  // namespace lyn
