// SPDX-License-Identifier: Apache-2.0
//
// Asks a phone for NodLink, in one step or two: the phone may answer the control message with the name of
// its foreground application ("fgApp"); the TV then chooses how to mirror it, says so in a second message,
// and waits for the final result. One time-out covers both steps.
#pragma once

#include <atomic>
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
    /// "2.0" or "3.0". Any other version is thrown as `const char*`, valid until this thread's next such
    /// throw; the version set before stays.
    void SetNodLinkVersion(const std::string& version) override;
    /// How the last request is mirrored: 0 multi-view, 1 full view, 2 sound.
    int GetNodlinkType() override;
    void NotifyRequestResult(const std::string& result) override;
    void OnCharateristicValueChangedCb(const char* value, int length) override;
    void OnMtuChanged(bt_gatt_client_h client, const bt_gatt_client_att_mtu_info_s* mtuInfo) override;

    void SetMirroringMode(const std::string& data);
    void WriteScreenMirroringModeToVconf(int mode);

private:
    void InitSupportedVersionList();
    void DeinitSupportedVersionList();

    void HandleAnswer(const std::string& answer);
    void HandleMessage(const std::string& type, const std::string& answer);
    void HandleResult(const std::string& result);

    std::string m_Version;
    std::list<std::string> m_SupportedVersionList;
    std::atomic<int> m_NodlinkType{0};
};

}  // namespace lyn
