// SPDX-License-Identifier: Apache-2.0
//
// How a request is shown: as a timeline for people, as JSON for programs.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "air.h"
#include "arguments.h"

namespace lynctl {

struct RequestOutcome {
    lyn_request_initiating_result_e result = LYN_REQUEST_INITIATING_RESULT_SUCCESS;
    std::string name;  ///< by the library, for example "Success"
    std::optional<nod_link_type> nodlinkType;
};

class RequestView {
public:
    virtual ~RequestView() = default;

    virtual void Begin(const Arguments&, const std::string& /*platform*/) {}
    virtual void StateChanged(double seconds, lyn_state_e state) = 0;
    virtual void OnAir(double seconds, const AirEvent& event) = 0;
    virtual void End(double seconds, const RequestOutcome& outcome) = 0;
    /// A signal came before the result.
    virtual void Interrupted(double seconds) = 0;
};

std::unique_ptr<RequestView> MakeRequestView(const Arguments& arguments);

}  // namespace lynctl
