// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <glib.h>

#include <algorithm>

namespace lyn::linux_platform {

/// How much is left of the time that a call of the core may take, for the steps of that call.
class Deadline {
public:
    explicit Deadline(int milliseconds) : m_end(g_get_monotonic_time() + gint64{milliseconds} * 1000) {}

    /// At least 1: the limit of a step that has hardly any time left.
    int LeftMs() const { return static_cast<int>(std::max<gint64>((m_end - g_get_monotonic_time()) / 1000, 1)); }
    bool IsOver() const { return g_get_monotonic_time() >= m_end; }

private:
    gint64 m_end;  ///< microseconds
};

}  // namespace lyn::linux_platform
