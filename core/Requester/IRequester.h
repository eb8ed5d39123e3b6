// SPDX-License-Identifier: Apache-2.0
//
// What a service asks of its requester: to start the feature of one phone. The outcome comes later, as
// one text, on the main loop. Held by a shared pointer, so that a step in progress keeps it while another thread
// destroys the service.
#pragma once

#include <memory>
#include <string>

namespace lyn {

class IRequester : public std::enable_shared_from_this<IRequester> {
public:
    IRequester() = default;
    virtual ~IRequester() = default;
    IRequester(const IRequester&) = delete;
    IRequester& operator=(const IRequester&) = delete;

    /// False when the platform refuses to connect; no result follows then. One request begins at a time.
    virtual bool RequestInitiating(const std::string& deviceAddress, const std::string& extraData) = 0;
    /// The call that has begun the latest request is over: its result may be delivered.
    virtual void EndRequestCall() = 0;
    /// Asked while a result is delivered: whether it is that of the latest request.
    virtual bool IsResultOfLatest() const = 0;
    /// The service is destroyed: a request that is under way ends without a word, and no other one begins.
    virtual void Retire() = 0;

    virtual void SetNodLinkVersion(const std::string& version) = 0;
    virtual int GetNodlinkType() = 0;
};

}  // namespace lyn
