// SPDX-License-Identifier: Apache-2.0
#include "holding/Place.h"

#include <utility>

#include "lyn_simulator/simulator.h"
#include "support/Clock.h"
#include "support/LogLines.h"

namespace lyn::test {
namespace {

constexpr const char* kStateIsWritten = "transit to ";
constexpr const char* kLog = "platform_log_print";

bool BeginsWith(const std::string& text, const std::string& beginning)
{
    return text.rfind(beginning, 0) == 0;
}

/// "lyn::CService::Init" of "IN >> [virtual lyn_error_e lyn::CService::Init()(91)]".
std::string TracedFunction(const std::string& message)
{
    const std::size_t open = message.find('[');
    const std::size_t arguments = message.find('(', open);
    const std::size_t blank = message.rfind(' ', arguments);
    if (open == std::string::npos || arguments == std::string::npos) {
        return message;
    }
    const std::size_t begin = blank == std::string::npos || blank < open ? open + 1 : blank + 1;
    return message.substr(begin, arguments - begin);
}

std::string SourceOf(const Line& line)
{
    if (line.function == "ApiTracker" || line.function == "~ApiTracker") {
        return (line.function == "ApiTracker" ? "IN " : "OUT ") + TracedFunction(line.message);
    }
    return line.file + " " + line.function;
}

}  // namespace

thread_local TellsPlaces* TellsPlaces::s_current = nullptr;

TellsPlaces::TellsPlaces(OnPlace onPlace) : m_onPlace(std::move(onPlace))
{
    s_current = this;
}

TellsPlaces::~TellsPlaces()
{
    s_current = nullptr;
}

void TellsPlaces::ComeTo(const std::string& what, const std::string& when)
{
    const int nth = ++m_calls[what];
    Tell(nth == 1 ? what : what + " " + std::to_string(nth), when);
}

void TellsPlaces::ComeToCall(const std::string& function, bool isBefore)
{
    const int nth = isBefore ? ++m_calls[function] : m_calls[function];
    Tell(nth == 1 ? function : function + " " + std::to_string(nth), isBefore ? "before" : "after");
}

void TellsPlaces::ComeToLog(const std::string& text)
{
    const Line line = Parse({0, "", text});
    if (BeginsWith(line.message, kStateIsWritten)) {
        m_reportsState = true;
    }
    const std::string what = "log " + SourceOf(line) + (m_reportsState ? " (reporting)" : "");
    if (m_logs.insert(what).second) {
        Tell(what, "in");
    }
}

void TellsPlaces::Tell(const std::string& what, const std::string& when) const
{
    m_onPlace({what, when, m_insideCalls > 0, m_insideThree > 0, m_reportsState});
}

InsideCall::InsideCall(CallKind kind) : m_ofThree(kind == CallKind::startOrStopOrRequest ? 1 : 0)
{
    Count(1, m_ofThree);
}

InsideCall::~InsideCall()
{
    Count(-1, -m_ofThree);
}

void InsideCall::Count(int calls, int ofThree)
{
    if (TellsPlaces* places = TellsPlaces::s_current) {
        places->m_insideCalls += calls;
        places->m_insideThree += ofThree;
    }
}

InsideCallback::InsideCallback(const std::string& report) : m_isOfState(BeginsWith(report, "state "))
{
    if (TellsPlaces* places = TellsPlaces::s_current) {
        places->ComeTo("callback " + report, "in");
    }
}

// The state machine has nothing more to do under its lock when this callback has returned.
InsideCallback::~InsideCallback()
{
    TellsPlaces* places = TellsPlaces::s_current;
    if (places != nullptr && m_isOfState) {
        places->m_reportsState = false;
    }
}

PlaceHearing::PlaceHearing()
{
    simulator::SetCallListener([](const simulator::CallMoment& moment) {
        TellsPlaces* places = TellsPlaces::s_current;
        if (places == nullptr) {
            return;
        }
        const bool isBefore = moment.phase == simulator::CallMoment::Phase::before;
        if (moment.function != kLog) {
            places->ComeToCall(moment.function, isBefore);
        } else if (isBefore) {  // The work of a log call changes nothing: its two ends are one place.
            places->ComeToLog(moment.text);
        }
    });
    OnSleep([] {
        if (TellsPlaces* places = TellsPlaces::s_current) {
            places->ComeTo("sleep", "in");
        }
    });
}

PlaceHearing::~PlaceHearing()
{
    OnSleep(nullptr);
    simulator::SetCallListener(nullptr);
}

}  // namespace lyn::test
