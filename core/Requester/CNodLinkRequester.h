// SPDX-License-Identifier: Apache-2.0
//
// Asks a phone for NodLink, in one step or two: the phone may answer the control message with the name of
// its foreground application ("fgApp"); the TV then chooses how to mirror it, says so in a second message,
// and waits for the final result. One time-out covers both steps.
#pragma once

#include <list>
#include <string>

#include "Requester/CRequester.h"

namespace lyn {

class CNodLinkRequester : public CRequester {
public:
    CNodLinkRequester();
    explicit CNodLinkRequester(RequestResultCb requestResultCb);
    ~CNodLinkRequester() override;

    bool RequestInitiating(const std::string& deviceAddress, const std::string& extraData) override;
    /// "2.0" or "3.0". Any other version is thrown as the `const char*` of `version`; the one set before stays.
    void SetNodLinkVersion(const std::string& version) override;
    /// How the last request is mirrored: 0 multi-view, 1 full view, 2 sound.
    int GetNodlinkType() override;
    void NotifyRequestResult(Exchange& exchange, const std::string& result) override;
    void OnCharateristicValueChangedCb(Exchange& exchange, const char* value, int length) override;
    void OnMtuChanged(Exchange& exchange, bt_gatt_client_h client,
                      const bt_gatt_client_att_mtu_info_s* mtuInfo) override;

    void SetMirroringMode(Exchange& exchange, const std::string& data);
    void WriteScreenMirroringModeToVconf(int mode);

private:
    void InitSupportedVersionList();
    void DeinitSupportedVersionList();
    std::string GetVersion() const;

    void HandleAnswer(Exchange& exchange, const std::string& answer);
    void HandleMessage(Exchange& exchange, const std::string& type, const std::string& answer);
    void HandleResult(Exchange& exchange, const std::string& result);

    std::string m_Version;  ///< Guarded by the requester's lock.
    std::list<std::string> m_SupportedVersionList;
};

}  // namespace lyn
