// SPDX-License-Identifier: Apache-2.0
//
// One service from creation to destruction, for the length of a command.
#pragma once

#include <functional>
#include <string>

#include "library.h"
#include "lyn_service.h"

namespace lynctl {

/// Turns a code other than LYN_ERROR_NONE into a Failure: "cannot DO: MEANING (CODE)".
void Check(lyn_error_e error, const std::string& what);

class Session {
public:
    using StateCallback = std::function<void(lyn_state_e)>;

    /// Creates the service. Throws Failure when the library refuses.
    Session(const Library& library, const std::string& service, StateCallback onState);
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session();

    lyn_service_h Handle() const { return m_service; }
    const Functions& Call() const { return m_library.call; }

private:
    const Library& m_library;
    StateCallback m_onState;
    lyn_service_h m_service = nullptr;
};

}  // namespace lynctl
