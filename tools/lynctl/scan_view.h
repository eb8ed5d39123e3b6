// SPDX-License-Identifier: Apache-2.0
//
// How a scan is shown: a live table on a terminal, lines for a pipe, JSON for programs.
#pragma once

#include <memory>
#include <string>

#include "arguments.h"
#include "phones.h"

namespace lynctl {

/// What every view is told beside the news.
struct ScanStatus {
    const Arguments& arguments;
    const std::string& platform;
    const Phones& phones;
    lyn_state_e state = LYN_STATE_READY;
    double seconds = 0;
    bool interrupted = false;
};

class ScanView {
public:
    virtual ~ScanView() = default;

    virtual void Begin(const ScanStatus&) {}
    virtual void StateChanged(const ScanStatus&) {}
    /// @param json the library's serialized form, or null when the scan was not asked for it
    virtual void Found(const ScanStatus&, const Phone&, Phones::News, const char* json) = 0;
    /// A few times a second.
    virtual void Tick(const ScanStatus&) {}
    virtual void End(const ScanStatus&) = 0;
};

std::unique_ptr<ScanView> MakeScanView(const Arguments& arguments);

}  // namespace lynctl
