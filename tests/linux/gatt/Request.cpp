// SPDX-License-Identifier: Apache-2.0
#include "Request.h"

#include <glib.h>

namespace lyn::linux_tests {

Request::Request()
{
    const auto onReport = [](int result, bool connected, const char*, void* data) {
        auto& self = *static_cast<Request*>(data);
        ++(connected ? self.connectReports : self.endReports);
        self.m_up = connected && result == 0;
        if (!connected) {
            self.End("link lost");
        } else if (result == 0) {
            self.OnConnected();
        } else {
            self.End("connect failed");
        }
    };
    bt_gatt_set_connection_state_changed_cb(onReport, this);
}

Request::~Request()
{
    bt_gatt_unset_connection_state_changed_cb();
}

std::string Request::Run(int answerMs)
{
    if (bt_gatt_connect(kPhone, false) != 0) {
        return "connect refused";
    }
    EXPECT_TRUE(RunUntil([&] { return connectReports == 1; })) << "no report of the connect";
    const gint64 late = g_get_monotonic_time() + gint64{answerMs} * 1000;
    RunUntil([&] { return !m_results.empty() || g_get_monotonic_time() > late; });
    if (m_results.empty()) {
        End("no answer");
    }
    EXPECT_TRUE(RunUntil([&] { return !m_up; })) << "no report of the link's end";
    RunQuietly(30);  // For what must not come.
    return m_results.front();
}

void Request::End(const std::string& result)
{
    m_results.push_back(result);
    if (m_client != nullptr) {
        bt_gatt_client_destroy(m_client);
        m_client = nullptr;
    }
    bt_gatt_disconnect(kPhone);
}

void Request::OnConnected()
{
    bt_gatt_h service = nullptr;
    const auto onValue = [](bt_gatt_h, char* value, int, void* data) { static_cast<Request*>(data)->End(value); };
    const auto onMtu = [](bt_gatt_client_h, const bt_gatt_client_att_mtu_info_s*, void* data) {
        auto& self = *static_cast<Request*>(data);
        ++self.mtuReports;
        self.OnMtuKnown();
    };
    if (bt_gatt_client_create(kPhone, &m_client) != 0) {
        End("no client");
    } else if (bt_gatt_client_get_service(m_client, kServiceUuid, &service) != 0 ||
               bt_gatt_service_get_characteristic(service, kCharacteristicUuid, &m_characteristic) != 0) {
        End("not offered");
    } else if (bt_gatt_client_set_characteristic_value_changed_cb(m_characteristic, onValue, this) != 0) {
        End("no notifications");
    } else {
        bt_gatt_client_set_att_mtu_changed_cb(m_client, onMtu, this);
        bt_gatt_client_request_att_mtu_change(m_client, 256);
    }
}

void Request::OnMtuKnown()
{
    const std::string message(512, 'm');
    const auto onWritten = [](int result, bt_gatt_h, void* data) {
        auto& self = *static_cast<Request*>(data);
        ++self.completions;
        if (result != 0) {
            self.End("write failed");
        }
    };
    bt_gatt_set_value(m_characteristic, message.data(), static_cast<int>(message.size()));
    if (bt_gatt_client_write_value(m_characteristic, onWritten, this) != 0) {
        End("write refused");
    }
}

}  // namespace lyn::linux_tests
