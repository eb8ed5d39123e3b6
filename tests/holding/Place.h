// SPDX-License-Identifier: Apache-2.0
//
// Where the library is outside itself: inside a platform function, in a sleep, or in a callback of the
// application. While a thread takes a step of a story, each such place that it comes to is told; this is how
// the test finds the places by itself.
#pragma once

#include <functional>
#include <map>
#include <set>
#include <string>

namespace lyn::test {

struct Place {
    std::string what;           ///< "bt_gatt_connect 2", "log CScanner.cpp StartScan", "sleep", "callback READY"
    std::string when;           ///< "before" and "after" the work of a platform function, else "in"
    bool isInCall = false;      ///< inside a function of the interface
    bool isInThree = false;     ///< inside a start scan, a stop scan or a request
    bool reportsState = false;  ///< while the state machine writes and reports a state

    /// Of all calls of one function in a step each is a place; of log lines, the first of each function.
    std::string Name() const { return what + "/" + when; }
};

using OnPlace = std::function<void(const Place&)>;

/// The thread that has made this tells its places, as long as this lives.
class TellsPlaces {
public:
    explicit TellsPlaces(OnPlace onPlace);
    ~TellsPlaces();
    TellsPlaces(const TellsPlaces&) = delete;
    TellsPlaces& operator=(const TellsPlaces&) = delete;

private:
    friend class InsideCall;
    friend class InsideCallback;
    friend class PlaceHearing;

    void ComeTo(const std::string& what, const std::string& when);
    void ComeToCall(const std::string& function, bool isBefore);
    void ComeToLog(const std::string& text);
    void Tell(const std::string& what, const std::string& when) const;

    static thread_local TellsPlaces* s_current;

    OnPlace m_onPlace;
    std::map<std::string, int> m_calls;
    std::set<std::string> m_logs;
    int m_insideCalls = 0;
    int m_insideThree = 0;
    bool m_reportsState = false;
};

enum class CallKind { startOrStopOrRequest, other };

/// The present thread is inside a function of the interface, as long as this lives.
class InsideCall {
public:
    explicit InsideCall(CallKind kind);
    ~InsideCall();
    InsideCall(const InsideCall&) = delete;
    InsideCall& operator=(const InsideCall&) = delete;

private:
    static void Count(int calls, int ofThree);

    int m_ofThree;
};

/// The present thread is in a callback of the application, as long as this lives.
class InsideCallback {
public:
    explicit InsideCallback(const std::string& report);
    ~InsideCallback();
    InsideCallback(const InsideCallback&) = delete;
    InsideCallback& operator=(const InsideCallback&) = delete;

private:
    bool m_isOfState;
};

/// Hears of platform calls and sleeps, as long as this lives.
class PlaceHearing {
public:
    PlaceHearing();
    ~PlaceHearing();
    PlaceHearing(const PlaceHearing&) = delete;
    PlaceHearing& operator=(const PlaceHearing&) = delete;
};

}  // namespace lyn::test
