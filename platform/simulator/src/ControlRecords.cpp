// SPDX-License-Identifier: Apache-2.0
//
// What the simulation has kept: journal and logs; and the faults that wait for their call.
#include "CallWatch.h"
#include "LogBook.h"
#include "Simulator.h"

namespace lyn::simulator {

std::vector<Call> Journal()
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    return simulator.journal.Calls();
}

std::vector<std::string> JournalText()
{
    std::vector<std::string> text;
    for (const Call& call : Journal()) {
        text.push_back(call.function + "(" + call.arguments + ")");
    }
    return text;
}

void ClearJournal()
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    simulator.journal.Clear();
}

void SetJournal(bool enabled)
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    simulator.journal.SetEnabled(enabled);
}

void FailCall(const std::string& function, int code, int nth)
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    simulator.faults.Fail(function, code, nth);
}

void NullText(const std::string& function, int nth)
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    simulator.faults.GiveNull(function, nth);
}

void FailAnyCall(int code, int nth)
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    simulator.faults.FailAny(code, nth);
}

void ClearFaults()
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    simulator.faults.Clear();
}

void SetCallListener(const std::function<void(const CallMoment&)>& listener)
{
    CallWatch::Listen(listener);
}

std::vector<LogLine> Log()
{
    return LogBook::Instance().Lines();
}

void ClearLog()
{
    LogBook::Instance().Clear();
}

void SetLogCapture(int lowestPriority)
{
    LogBook::Instance().Keep(lowestPriority);
}

void SetLogListener(const std::function<void(const LogLine&)>& listener)
{
    LogBook::Instance().Tell(listener);
}

void SetKernelLogMode(KernelLogMode mode)
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    simulator.kernelLog.SetMode(mode);
}

std::vector<std::string> KernelLog()
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    return simulator.kernelLog.Lines();
}

}  // namespace lyn::simulator
