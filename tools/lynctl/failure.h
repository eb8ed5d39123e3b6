// SPDX-License-Identifier: Apache-2.0
//
// Why lynctl ends early: one line for standard error, and the exit status that goes with it.
#pragma once

#include <stdexcept>
#include <string>

namespace lynctl {

enum ExitStatus : int {
    kExitSuccess = 0,
    kExitFailure = 1,        ///< the library, a platform call or lynctl itself failed
    kExitUsage = 2,          ///< bad arguments or a bad scenario
    kExitResult = 10,        ///< added to the value of a request's result other than Success
    kExitInterrupted = 130,  ///< Ctrl-C before a request had its result
    kExitTerminated = 143,   ///< SIGTERM before a request had its result
};

class Failure : public std::runtime_error {
public:
    Failure(ExitStatus status, const std::string& text) : std::runtime_error(text), m_status(status) {}
    ExitStatus Status() const { return m_status; }

private:
    ExitStatus m_status;
};

}  // namespace lynctl
