// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "bluez/Adapter.h"
#include "bus/Bus.h"
#include "loop/Deadline.h"
#include "loop/MainContext.h"

namespace lyn::linux_platform {

/// This process's LE discovery in bluetoothd, which goes on for others when it is stopped here. While it is
/// wanted, it is started again when bluetoothd or the adapter has been away. Any thread, unless it says otherwise.
class Discovery {
public:
    /// Starts it, and waits until bluetoothd has said so. @return 0 or a code of the seam
    int Start(const std::string& adapterPath, const Deadline& deadline);

    /// Does not wait for an answer: bluetoothd handles what is called later after it.
    void Stop();

    /// It is on, as far as is known.
    bool IsOn() const;

    /// To be told of each change of the adapter. On the main context.
    void OnAdapter(const AdapterStatus& status);

private:
    enum class State { off, starting, on };

    static int StartNow(const Bus& bus, const std::string& adapterPath, const Deadline& deadline);
    void StartLater(const std::string& adapterPath);
    void OnStarted(int code, const std::string& adapterPath);
    int Settle(int code, const std::string& adapterPath);
    static void SendStop(const std::string& adapterPath);

    mutable std::mutex m_mutex;
    bool m_wanted = false;
    State m_state = State::off;
    std::string m_path;  ///< of the adapter where it was started last; empty when that has gone

    Timer m_retry;  ///< on the main context
};

}  // namespace lyn::linux_platform
