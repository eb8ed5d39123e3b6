// SPDX-License-Identifier: Apache-2.0
//
// Asks a phone for Kov. The caller's extra data is not sent.
#pragma once

#include "Requester/CRequester.h"

namespace lyn {

class CKovRequester : public CRequester {
public:
    CKovRequester();
    explicit CKovRequester(RequestResultCb requestResultCb);

    std::string BuildData(const Exchange& exchange) override;
};

}  // namespace lyn
