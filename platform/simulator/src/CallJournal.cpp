// SPDX-License-Identifier: Apache-2.0
#include "CallJournal.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace lyn::simulator {

namespace {

constexpr std::size_t kMaxEntries = 200'000;

std::uint64_t ThisThread()
{
    thread_local const auto id = static_cast<std::uint64_t>(::syscall(SYS_gettid));
    return id;
}

}  // namespace

void CallJournal::SetEnabled(bool enabled)
{
    m_enabled = enabled;
}

void CallJournal::Clear()
{
    m_entries.clear();
}

CallJournal::Entry* CallJournal::Begin(const char* function)
{
    if (!m_enabled) {
        return nullptr;
    }
    if (m_entries.size() >= kMaxEntries) {
        m_entries.pop_front();
    }
    return &m_entries.emplace_back(Entry{function, {}, 0, ThisThread()});
}

std::vector<Call> CallJournal::Calls() const
{
    std::vector<Call> calls;
    calls.reserve(m_entries.size());
    for (const Entry& entry : m_entries) {
        calls.push_back({entry.function, entry.arguments, entry.result, entry.thread});
    }
    return calls;
}

}  // namespace lyn::simulator
