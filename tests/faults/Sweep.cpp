// SPDX-License-Identifier: Apache-2.0
#include "faults/Sweep.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <map>

#include "faults/Endings.h"
#include "faults/Expectations.h"
#include "lyn_simulator/simulator.h"
#include "support/LastWords.h"

namespace lyn::test {
namespace {

/// One platform call of a good story.
struct Point {
    PlatformFault fault;
    int nthCall;  ///< of all calls of the story
};

/// Notes after each step which platform calls it has made.
class CallCounter {
public:
    void AfterStep()
    {
        const std::vector<simulator::Call> calls = simulator::Journal();
        for (; m_seen < calls.size(); ++m_seen) {
            Note(calls[m_seen].function, calls[m_seen].arguments);
        }
        const std::size_t lines = simulator::KernelLog().size();  // Its opening is not in the journal.
        for (; m_kernelLines < lines; ++m_kernelLines) {
            Note("platform_kmsg_open", "");
        }
        ++m_line;
        m_inStep.clear();
    }

    const std::vector<Point>& Points() const { return m_points; }

private:
    void Note(const std::string& function, const std::string& arguments)
    {
        Point point;
        point.fault = {function, arguments, ++m_inStory[function], m_line, ++m_inStep[function], 0};
        point.nthCall = static_cast<int>(m_points.size()) + 1;
        m_points.push_back(point);
    }

    std::size_t m_seen = 0;
    std::size_t m_kernelLines = 0;
    std::size_t m_line = 0;
    std::map<std::string, int> m_inStory;
    std::map<std::string, int> m_inStep;
    std::vector<Point> m_points;
};

void Arm(const PlatformFault& fault)
{
    if (fault.code) {
        simulator::FailCall(fault.function, *fault.code, fault.nth);
    } else {
        simulator::NullText(fault.function, fault.nth);
    }
}

std::string Describe(const PlatformFault& fault)
{
    return fault.function + "(" + fault.arguments + ") " +
           (fault.code ? "gives " + std::to_string(*fault.code) : std::string("gives a null text"));
}

}  // namespace

const char* NameOf(Kind kind)
{
    switch (kind) {
    case Kind::platform:
        return "platform";
    case Kind::once:
        return "once";
    case Kind::lasting:
        return "lasting";
    }
    return "";
}

Count Sweep::Run(const Scenario& scenario)
{
    m_scenario = &scenario;
    m_count = {};
    switch (m_kind) {
    case Kind::platform:
        SweepPlatform();
        break;
    case Kind::once:
        SweepMemory(Shortage::once);
        break;
    case Kind::lasting:
        SweepMemory(Shortage::lasting);
        break;
    }
    simulator::Reset();
    return m_count;
}

void Sweep::Begin(int nth, const std::string& what)
{
    m_nth = nth;
    SayWhatIsDone(m_scenario->service + ", " + m_scenario->name + ": " + NameOf(m_kind) + ": " + what);
    simulator::Reset();
    simulator::SetLogCapture(7);
    simulator::SetJournal(false);
    m_scenario->setUp();
}

void Sweep::Complain(const std::string& problem)
{
    ++m_count.failures;
    std::printf(
        "\nFAILED  %s\n%s\n        again: fault_sweep --kind %s --service %s --scenario \"%s\" --nth %d\n\n",
        WhatIsDone(), problem.c_str(), NameOf(m_kind), m_scenario->service.c_str(), m_scenario->name.c_str(),
        m_nth);
}

void Sweep::TellClean(Application& app)
{
    Begin(0, "nothing fails");
    simulator::SetJournal(true);
    m_scenario->story(app);
    const auto result =
        std::find_if(app.Told().begin(), app.Told().end(), [](const Line& line) { return line.step == "result"; });
    if (result != app.Told().end() && result->said != m_scenario->result) {
        Complain("        the result is " + result->said + ", and not " + m_scenario->result);
    }
    CheckLeft(kNothing);
}

void Sweep::SweepPlatform()
{
    CallCounter counter;
    Application good(m_scenario->service);
    good.afterStep = [&] { counter.AfterStep(); };
    TellClean(good);
    const Lines& clean = good.Told();
    CheckPlainScenario();
    m_count.points = static_cast<int>(counter.Points().size());
    for (const Point& point : counter.Points()) {
        if (!IsWanted(point.nthCall)) {
            continue;
        }
        for (const std::optional<int>& code : FaultsOf(point.fault.function)) {
            PlatformFault fault = point.fault;
            fault.code = code;
            Begin(point.nthCall, "call " + std::to_string(point.nthCall) + ", " + Describe(fault));
            Arm(fault);
            Application app(m_scenario->service);
            m_scenario->story(app);
            const Expected expected = Expect(clean, fault);
            if (!expected.isKnown) {
                Complain("        nobody says what has to come of this call\n" + Compare(clean, app.Told()));
            } else if (!IsSame(expected.lines, app.Told())) {
                Complain(Compare(expected.lines, app.Told()));
            }
            if (app.LateReports() > 0) {
                Complain("        reports came without a service");
            }
            simulator::ClearFaults();
            CheckLeft(expected.mayLeave);
            CheckPlainScenario();
            ++m_count.runs;
            m_onProgress(m_count);
        }
    }
}

void Sweep::SweepMemory(Shortage kind)
{
    std::vector<std::size_t> stepEnds;
    Application good(m_scenario->service);
    good.afterStep = [&] { stepEnds.push_back(WaysOfAllocations().size()); };
    BeginShortage(0, kind);
    TellClean(good);
    EndShortage();
    const std::vector<Way> ways = WaysOfAllocations();
    CheckPlainScenario();

    m_count.points = static_cast<int>(ways.size());
    const std::string& story = m_scenario->alike.empty() ? m_scenario->name : m_scenario->alike;
    std::map<Way, int> seen;
    for (std::size_t i = 0; i < ways.size(); ++i) {
        // All stories of a service begin with the same creation.
        const bool isCreation = i < stepEnds.front();
        const std::string past = m_scenario->service + "/" + (isCreation ? "" : story);
        const bool isNew = m_done.insert({past, ways[i], ++seen[ways[i]]}).second;
        const int nth = static_cast<int>(i) + 1;
        if (m_onlyNth == nth || (m_onlyNth == 0 && isNew)) {
            RunShort(nth, kind, good);
        } else if (m_onlyNth == 0) {
            ++m_count.leftOut;
        }
    }
}

void Sweep::RunShort(int nth, Shortage kind, const Application& clean)
{
    Begin(nth, "allocation " + std::to_string(nth));
    Application app(m_scenario->service);
    BeginShortage(nth, kind);
    m_scenario->story(app);
    EndShortage();
    if (!HasFailed()) {
        return;  // What is made once in a process was there already.
    }
    std::string problem = CheckShortStory(clean.Told(), app.Told()) + CheckContents(clean, app);
    if (app.LateReports() > 0) {
        problem += "        reports came without a service\n";
    }
    if (!problem.empty()) {
        std::array<char, 64> place{};
        std::snprintf(place.data(), place.size(), "        asked for at liblyn_service.so.0+0x%zx\n",
                      PlaceOfFailure());
        Complain(place.data() + problem);
    }
    CheckLeft(kScan);  // A request whose stop of the scan found no memory goes on without it.
    CheckPlainScenario();
    ++m_count.runs;
    m_onProgress(m_count);
}

void Sweep::CheckLeft(unsigned mayLeave)
{
    const std::string problem = WhatIsLeft(mayLeave | m_scenario->leaves);
    if (!problem.empty()) {
        Complain("        left on the TV: " + problem);
    }
}

void Sweep::CheckPlainScenario()
{
    const Scenario plain = PlainScenario(m_scenario->service);
    plain.setUp();
    Application app(plain.service);
    plain.story(app);
    const Lines expected = PlainLines(plain.service);
    if (!IsSame(expected, app.Told())) {
        Complain("        afterwards, a good story goes wrong:\n" + Compare(expected, app.Told()));
    }
    const simulator::Counts alive = simulator::Alive();
    if (alive.links > 0 || alive.scanning || alive.boosted) {
        Complain("        afterwards, a good story leaves a link, a scan or the boost");
    }
}

}  // namespace lyn::test
