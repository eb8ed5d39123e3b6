// SPDX-License-Identifier: Apache-2.0
//
// What a service asks of its requester: to start the feature of one phone. The outcome comes later, as
// one text, on the main loop.
#pragma once

#include <string>

#include "lyn_platform/gatt.h"

namespace lyn {

class IRequester {
public:
    IRequester() = default;
    virtual ~IRequester() = default;
    IRequester(const IRequester&) = delete;
    IRequester& operator=(const IRequester&) = delete;

    /// False when the platform refuses to connect; no result follows then.
    virtual bool RequestInitiating(const std::string& deviceAddress, const std::string& extraData) = 0;
    virtual void SetNodLinkVersion(const std::string& version) = 0;
    virtual int GetNodlinkType() = 0;
    virtual void NotifyRequestResult(const std::string& result) = 0;
    virtual void WriteControlData(const std::string& data) = 0;
    virtual void OnConnectionStateChanged(int result, bool connected, const std::string& address) = 0;
    virtual void OnCharateristicValueChangedCb(const char* value, int length) = 0;
    virtual void OnWriteComplete(int result) = 0;
    virtual void OnMtuChanged(bt_gatt_client_h client, const bt_gatt_client_att_mtu_info_s* mtuInfo) = 0;
    virtual void OnGattConnected(int result, const std::string& address) = 0;
    virtual void OnGattDisConnected(int result, const std::string& address) = 0;
    virtual std::string BuildData() = 0;
};

}  // namespace lyn
