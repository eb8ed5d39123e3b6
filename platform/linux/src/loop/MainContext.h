// SPDX-License-Identifier: Apache-2.0
//
// Work on the GLib default main context, where all callbacks of the platform come from.
#pragma once

#include <glib.h>

#include <functional>

namespace lyn::linux_platform {

using Task = std::function<void()>;

/// Runs the task on the main context, later: never from inside this call. Tasks keep their order. Any thread.
void Post(Task task);

/// One task after a time, unless the timer is destroyed before. Made, moved and destroyed on the main context.
class Timer {
public:
    Timer() = default;
    Timer(unsigned milliseconds, Task task);
    ~Timer();
    Timer(Timer&& other) noexcept;
    Timer& operator=(Timer&& other) noexcept;
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

private:
    GSource* m_source = nullptr;
};

}  // namespace lyn::linux_platform
