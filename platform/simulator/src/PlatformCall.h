// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdlib>
#include <cstring>
#include <string>
#include <tuple>

#include "ArgumentText.h"
#include "CallWatch.h"
#include "Simulator.h"

namespace lyn::simulator {

/// A platform function at work: who it is to the journal and to the faults.
class PlatformCall {
public:
    PlatformCall(Simulator& theSimulator, const char* function)
        : simulator(theSimulator),
          m_function(function),
          m_entry(theSimulator.journal.Begin(function))
    {
    }

    template <typename... Values>
    void WriteArguments(const std::tuple<Values...>& in)
    {
        if (m_entry != nullptr) {
            std::apply([&](const auto&... value) { AppendArguments(m_entry->arguments, value...); }, in);
        }
    }

    /// Writes what the function gives out.
    template <typename... Values>
    void Out(const Values&... values)
    {
        if (m_entry != nullptr) {
            m_entry->arguments += m_entry->arguments.empty() ? "-> " : " -> ";
            AppendArguments(m_entry->arguments, values...);
        }
    }

    /// Gives a malloc'ed text out, or the null that a fault asks for.
    int GiveText(const std::string* text, char** out)
    {
        if (text == nullptr || simulator.faults.DrawNull(m_function)) {
            *out = nullptr;
            Out(static_cast<const char*>(nullptr));
            return 0;
        }
        *out = ::strdup(text->c_str());
        Out(*text);
        return *out != nullptr ? 0 : kOutOfMemory;
    }

    int End(int result)
    {
        if (m_entry != nullptr) {
            m_entry->result = result;
        }
        return result;
    }

    Simulator& simulator;

private:
    const char* m_function;
    CallJournal::Entry* m_entry;
};

/// Does what every platform function does: tells the listener, takes the lock, writes the journal, and fails
/// instead of running its body when a fault says so.
template <typename... Values, typename Body>
int Perform(const char* function, const std::tuple<Values...>& in, Body body)
{
    const CallWatch watch(function);
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    PlatformCall call(simulator, function);
    call.WriteArguments(in);
    if (const auto failure = simulator.faults.DrawFailure(function)) {
        return call.End(*failure);
    }
    return call.End(body(call));
}

}  // namespace lyn::simulator
