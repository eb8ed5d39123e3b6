// SPDX-License-Identifier: Apache-2.0
#include "Census.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "lyn_simulator/simulator.h"
#include "support/Clock.h"
#include "support/Costs.h"

namespace lyn::bench {
namespace {

// A line "NAME:   1234 kB" of the process's status.
long StatusKb(const std::string& name)
{
    std::ifstream status("/proc/self/status");
    std::string word;
    while (status >> word) {
        if (word == name + ":") {
            long kb = 0;
            status >> kb;
            return kb;
        }
    }
    return -1;
}

long CountDescriptors()
{
    const std::filesystem::directory_iterator open("/proc/self/fd");
    return std::distance(begin(open), end(open)) - 1;  // Without the one that reads the folder.
}

long CountPlatform()
{
    const simulator::Counts alive = simulator::Alive();
    return alive.clients + alive.links + alive.registrations + alive.productInits + alive.wifiInits +
           alive.wifiDirectInits + (alive.scanning ? 1 : 0) + (alive.boosted ? 1 : 0);
}

long CountRecords()
{
    return static_cast<long>(simulator::Journal().size() + simulator::Log().size() +
                             simulator::KernelLog().size());
}

}  // namespace

const std::vector<Column>& Columns()
{
    static const std::vector<Column> columns = {
        {"rss_kb", &Census::rssKb},
        {"blocks", &Census::blocks},
        {"descriptors", &Census::descriptors},
        {"sources", &Census::sources},
        {"timeouts", &Census::timeouts, true},
        {"platform", &Census::platform, true},
        {"records", &Census::records, true},
    };
    return columns;
}

Census CensusTaker::Take()
{
    Census census;
    census.timeouts = static_cast<long>(test::ArmedTimeouts().size());
    census.platform = CountPlatform();
    census.records = CountRecords();
    census.sources = CountSources();
    census.descriptors = CountDescriptors();
    census.rssKb = StatusKb("VmRSS");
    census.blocks = test::LiveBlocks() - (m_living.capacity() > 0 ? 1 : 0);
    return census;
}

// The main context numbers its sources: whatever was attached since the last census has a number between that
// census's and one that is given out now.
long CensusTaker::CountSources()
{
    GSource* const latest = g_idle_source_new();
    const guint end = g_source_attach(latest, nullptr);
    g_source_destroy(latest);
    g_source_unref(latest);
    const auto lives = [](guint id) { return g_main_context_find_source_by_id(nullptr, id) != nullptr; };
    std::erase_if(m_living, [&](guint id) { return !lives(id); });
    for (guint id = m_lastId + 1; id < end; ++id) {
        if (lives(id)) {
            m_living.push_back(id);
        }
    }
    m_lastId = end;
    return static_cast<long>(m_living.size());
}

long PeakRssKb()
{
    return StatusKb("VmHWM");
}

}  // namespace lyn::bench
