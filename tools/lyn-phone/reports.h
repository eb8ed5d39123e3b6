// SPDX-License-Identifier: Apache-2.0
//
// What the phone tells about what happens: lines for people or for programs, on standard output.
#pragma once

#include <json/json.h>

#include <string>
#include <string_view>

#include "loop.h"
#include "lyn_simulator/simulator.h"

namespace lynphone {

std::string Hex(std::string_view bytes);

class Reports {
public:
    Reports(bool json, const lynctl::Loop& loop) : m_json(json), m_loop(loop) {}

    void Advertising(const std::string& adapter, const std::string& address,
                     const lyn::simulator::Phone& phone) const;
    void Connected(const std::string& peer) const { Tell("connected", peer); }
    void Disconnected(const std::string& peer) const { Tell("disconnected", peer); }
    void Written(const std::string& peer, const std::string& characteristic, std::string_view bytes,
                 int mtu) const;
    void Notified(const std::string& characteristic, std::string_view bytes) const;
    void Subscribed(const std::string& characteristic, bool on) const;
    /// bluetoothd has gone; the phone waits for it.
    void Waiting() const { Tell("waiting", ""); }
    /// A line beside the events, on standard error.
    static void Remark(const std::string& text);

private:
    void Tell(const char* event, const std::string& peer) const;
    void Print(const Json::Value& event, const std::string& line) const;

    bool m_json;
    const lynctl::Loop& m_loop;
};

}  // namespace lynphone
