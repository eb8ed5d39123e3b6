// SPDX-License-Identifier: Apache-2.0
//
// What a process holds: memory, descriptors, main-loop sources, and what is alive on the simulated TV.
#pragma once

#include <glib.h>

#include <string>
#include <vector>

namespace lyn::bench {

struct Census {
    long rssKb = 0;        ///< resident memory
    long blocks = 0;       ///< memory allocated and not freed, in blocks: every object that lives is one or more
    long descriptors = 0;  ///< open files
    long sources = 0;      ///< of the default main context
    long timeouts = 0;     ///< of them, time-outs of the library
    long platform = 0;     ///< clients, links, registrations and initialisations on the TV, and scans and boosts
    long records = 0;      ///< journal, log and kernel log of the simulator
};

/// One column of a census, to print and to compare.
struct Column {
    const char* name;
    long Census::*value;
    bool isNothingAtRest = false;  ///< without a service it is 0; the others only may not grow
};
const std::vector<Column>& Columns();

class CensusTaker {
public:
    /// Main loop thread.
    Census Take();

private:
    long CountSources();

    guint m_lastId = 0;
    std::vector<guint> m_living;
};

/// The largest resident memory so far, in kB.
long PeakRssKb();

}  // namespace lyn::bench
