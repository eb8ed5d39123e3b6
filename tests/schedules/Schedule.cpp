// SPDX-License-Identifier: Apache-2.0
#include "schedules/Schedule.h"

#include <glib.h>

#include <unordered_set>

#include "lyn_simulator/simulator.h"
#include "schedules/Application.h"
#include "schedules/Freed.h"
#include "schedules/Outcome.h"
#include "schedules/PlainStory.h"
#include "schedules/Sight.h"
#include "support/Clock.h"

namespace lyn::schedules {
namespace {

/// A text that stays.
const char* Keep(const std::string& text)
{
    static auto* const kept = new std::unordered_set<std::string>;
    return kept->insert(text).first->c_str();
}

void StopAtCall(const simulator::CallMoment& moment)
{
    Actor* const me = Conductor::Me();
    if (me == nullptr) {
        return;
    }
    const OutOfSight schedule;
    const char* name = Keep(moment.function);
    if (moment.phase == simulator::CallMoment::Phase::before) {
        me->frames.push_back({Frame::Kind::platform, What::goOn, name});
        Conductor::Instance().Stop(StopKind::before, name);
    } else {
        Conductor::Instance().Stop(StopKind::after, name);
        me->frames.pop_back();
    }
}

void StopAtSleep()
{
    if (Conductor::Me() != nullptr) {
        const OutOfSight schedule;
        Conductor::Instance().Stop(StopKind::sleep, "");
    }
}

void TurnUntilIdle()
{
    while (g_main_context_pending(nullptr) != FALSE) {
        TheApplication().Turn(*Conductor::Me());
    }
}

void RequireNothingLeft()
{
    const simulator::Counts alive = simulator::Alive();
    const auto require = [](bool holds, const char* what) { Require(holds, "left", std::string(what) + " left"); };
    require(alive.clients == 0, "a client is");
    require(alive.productInits == 0, "an initialisation of Bluetooth is");
    require(alive.wifiInits == 0 && alive.wifiDirectInits == 0, "an initialisation of Wi-Fi is");
    require(alive.registrations == (alive.scanning ? 1 : 0), "a registration is");
}

// A service that says that it scans is the one that hears.
void RequireHearing(const Life& life)
{
    const bool isScanning = life.IsAlive() && life.state == LYN_STATE_SCANNING && life.service != "dummy";
    if (!isScanning || TheRoom().HasFaults() || TheRoom().HasBluetoothBeenOff()) {
        return;
    }
    const int before = life.phones;
    {
        const FrameScope scope(*Conductor::Me(), {Frame::Kind::loop});
        const InSight library;
        Room::Advertise(life.service);
    }
    Require(life.phones == before + 1, "left", "a service that scans hears nothing");
}

// What was accepted comes to its end, at last by the time-out, and the service is destroyed.
void ComeToTheEnd()
{
    TheRoom().Calm();
    TurnUntilIdle();
    while (test::ElapseTimeout()) {
        TurnUntilIdle();
    }
    TheLedger().CheckEnd();
    const Life* life = TheLedger().Latest();
    if (life != nullptr && life->IsAlive()) {
        RequireHearing(*life);
        TheApplication().Perform(*Conductor::Me(), {'M', What::destroy});
    }
    TurnUntilIdle();
}

}  // namespace

void BeginPlaying()
{
    simulator::Reset();
    Conductor& conductor = Conductor::Instance();
    conductor.onTv = [](const Move& move) { TheRoom().Happen(move); };
    simulator::SetCallListener(StopAtCall);
    test::OnSleep(StopAtSleep);
    conductor.Start(kMostWorkers, [](const Move& first) { TheApplication().RunWorker(first); });
}

void EndPlaying()
{
    Conductor::Instance().Quit();
    test::OnSleep({});
    simulator::SetCallListener({});
    simulator::Reset();
}

void Play(Chooser& chooser, const Script& header)
{
    TheOutcome().BeginScript(HeaderOf(header));
    TheRoom().Begin(header.room);
    TheLedger().Begin();
    Conductor& conductor = Conductor::Instance();
    conductor.Begin(chooser, header);
    TheApplication().RunMainLoop();
    ComeToTheEnd();
    conductor.End();
    GiveBackFreed();
    RequireNothingLeft();
    TheRoom().Mend();
    simulator::Settle();
    Require(simulator::Alive().links == 0, "left", "a link is left");
    TellPlainStory(header.story);
    RequireNothingLeft();
    Require(!simulator::Alive().scanning, "left", "a scan is left");
    Require(!simulator::Alive().boosted, "left", "the boost is left on");
    test::ForgetSleeps();
    TheOutcome().counts.schedules += 1;
    TheOutcome().counts.moves += conductor.Now();
}

}  // namespace lyn::schedules
