// SPDX-License-Identifier: Apache-2.0
#include "schedules/Actor.h"

#include <algorithm>

namespace lyn::schedules {
namespace {

std::string Describe(const Frame& frame)
{
    switch (frame.kind) {
    case Frame::Kind::call:
    case Frame::Kind::platform:
        return frame.name;
    case Frame::Kind::state:
        return "the state callback";
    case Frame::Kind::found:
        return "the device callback";
    case Frame::Kind::result:
        return "the result callback";
    case Frame::Kind::loop:
        return "a turn of the main loop";
    case Frame::Kind::exit:
        return "the end of the process";
    }
    return "";
}

std::string Describe(StopKind at, const char* place)
{
    switch (at) {
    case StopKind::top:
    case StopKind::callback:
        return "between calls";
    case StopKind::before:
        return std::string("before ") + place;
    case StopKind::after:
        return std::string("after ") + place;
    case StopKind::sleep:
        return "sleeping";
    case StopKind::lock:
        return "before a lock";
    case StopKind::log:
        return "at a log line";
    case StopKind::wait:
        return "has waited for a lock";
    }
    return "";
}

}  // namespace

bool Actor::IsInLibrary() const
{
    if (frames.empty()) {
        return false;
    }
    const Frame::Kind inner = frames.back().kind;
    return inner == Frame::Kind::call || inner == Frame::Kind::platform || inner == Frame::Kind::loop;
}

std::size_t Actor::Count(Frame::Kind kind) const
{
    return static_cast<std::size_t>(
        std::count_if(frames.begin(), frames.end(), [&](const Frame& frame) { return frame.kind == kind; }));
}

bool Actor::IsInside(Frame::Kind kind, const Life* life) const
{
    return std::any_of(frames.begin(), frames.end(),
                       [&](const Frame& frame) { return frame.kind == kind && frame.life == life; });
}

std::string Actor::Describe() const
{
    std::string text(1, name);
    for (const Frame& frame : frames) {
        text += " in " + schedules::Describe(frame) + ",";
    }
    switch (state) {
    case State::blocked:
        return text + " waits for a lock";
    case State::ended:
        return text + " ended";
    default:
        return text + " " + schedules::Describe(at, place);
    }
}

}  // namespace lyn::schedules
