// SPDX-License-Identifier: Apache-2.0
//
// A whole request at the seam, from the connect to the link's end, as the library makes one.
#pragma once

#include <string>
#include <vector>

#include "GattRoom.h"

namespace lyn::linux_tests {

class Request {
public:
    Request();
    ~Request();
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    /// Runs it, until the link is down or no more is to come: an answer is waited for so long. @return the phone's
    /// answer, or why there is none.
    std::string Run(int answerMs);

    int connectReports = 0;  ///< ends of the one connect
    int endReports = 0;      ///< of the link
    int completions = 0;     ///< of the one write
    int mtuReports = 0;      ///< of the one MTU request

private:
    void End(const std::string& result);
    void OnConnected();
    void OnMtuKnown();

    bt_gatt_client_h m_client = nullptr;
    bt_gatt_h m_characteristic = nullptr;
    bool m_up = false;
    std::vector<std::string> m_results;
};

}  // namespace lyn::linux_tests
