// SPDX-License-Identifier: Apache-2.0
//
// What the thread sanitizer is to look at: the library and the simulator, and not the schedule around them. The
// threads of a schedule run one after the other, but by no doing of the library's; so the sanitizer is told
// neither of the order (Gate.cpp is built without it) nor of what the schedule itself notes down. What the library
// does without an order of its own is then a race, although nothing ever runs at once.
#pragma once

extern "C" {
void __tsan_ignore_thread_begin() __attribute__((weak));
void __tsan_ignore_thread_end() __attribute__((weak));
}

namespace lyn::schedules {

/// From the library into the schedule. Threads of a schedule begin so.
class OutOfSight {
public:
    OutOfSight() { Begin(); }
    ~OutOfSight() { End(); }
    OutOfSight(const OutOfSight&) = delete;
    OutOfSight& operator=(const OutOfSight&) = delete;

    static void Begin()
    {
        if (__tsan_ignore_thread_begin != nullptr) {
            __tsan_ignore_thread_begin();
        }
    }
    static void End()
    {
        if (__tsan_ignore_thread_end != nullptr) {
            __tsan_ignore_thread_end();
        }
    }
};

/// From the schedule into the library.
class InSight {
public:
    InSight() { OutOfSight::End(); }
    ~InSight() { OutOfSight::Begin(); }
    InSight(const InSight&) = delete;
    InSight& operator=(const InSight&) = delete;
};

}  // namespace lyn::schedules
