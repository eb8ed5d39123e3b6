// SPDX-License-Identifier: Apache-2.0
#include "session.h"

#include <utility>

#include "failure.h"
#include "names.h"

namespace lynctl {

void Check(lyn_error_e error, const std::string& what)
{
    if (error == LYN_ERROR_NONE) {
        return;
    }
    throw Failure(kExitFailure, "cannot " + what + ": " + ErrorName(error) + " (" +
                                    std::to_string(static_cast<int>(error)) + ")");
}

Session::Session(const Library& library, const std::string& service, StateCallback onState)
    : m_library(library),
      m_onState(std::move(onState))
{
    const auto report = [](lyn_state_e state, void* self) { static_cast<Session*>(self)->m_onState(state); };
    const lyn_error_e error = Call().createService(&m_service, service.c_str(), report, this);
    const bool nodlinkRefused = service == "nodlink" && error == LYN_ERROR_INTERNAL;
    Check(error, "create the service '" + service + "'" +
                     (nodlinkRefused ? " (is Bluetooth off, or the TV going to sleep?)" : ""));
}

Session::~Session()
{
    if (m_service) {
        Call().destroyService(m_service);
    }
}

}  // namespace lynctl
