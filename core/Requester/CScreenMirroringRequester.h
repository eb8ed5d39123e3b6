// SPDX-License-Identifier: Apache-2.0
//
// Asks a phone for screen mirroring.
#pragma once

#include "Requester/CRequester.h"

namespace lyn {

class CScreenMirroringRequester : public CRequester {
public:
    CScreenMirroringRequester();
    explicit CScreenMirroringRequester(RequestResultCb requestResultCb);

    std::string BuildData(const Exchange& exchange) override;
};

}  // namespace lyn
