// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "Slot.h"

namespace lyn::simulator {

class Simulator;
struct Attribute;

/// What passes over a link that is up: MTU requests, writes, and what the phone does with a message. The
/// caller holds the simulator's lock.
class Exchange {
public:
    explicit Exchange(Simulator& simulator);

    int RequestMtu(bt_gatt_client_h handle, unsigned mtu);
    int Write(bt_gatt_h handle, bt_gatt_client_request_completed_cb callback, void* userData);

private:
    struct Target {
        std::string address;
        std::uint64_t link;
        std::string serviceUuid;
        std::string uuid;
    };
    using Completion = Slot<bt_gatt_client_request_completed_cb>;

    Answer NextAnswer(const Target& target);
    void Act(const Target& target, const Answer& answer, bt_gatt_h characteristic, const Completion& completion);
    void PostCompletion(bt_gatt_h characteristic, const Completion& completion, int result, int delayMs);
    void PostNotifications(const Target& target, const Answer& answer);
    void PostDrop(const Target& target, const Answer& answer, bt_gatt_h characteristic,
                  const Completion& completion);

    // Steps on the main loop, without the lock.
    void EndMtuRequest(bt_gatt_client_h handle, unsigned mtu);
    void Arrive(const Target& target, const std::string& message, bt_gatt_h characteristic,
                const Completion& completion);
    void Complete(bt_gatt_h characteristic, const Completion& completion, int result);
    void Notify(const Target& target, const std::string& text);
    void Hand(bt_gatt_h listener, const std::string& text);

    Simulator& m_simulator;
};

}  // namespace lyn::simulator
