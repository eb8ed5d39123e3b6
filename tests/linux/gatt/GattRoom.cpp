// SPDX-License-Identifier: Apache-2.0
#include "GattRoom.h"

#include <cstdlib>
#include <ostream>

#include "PrivateBus.h"
#include "bluez/Adapter.h"

namespace lyn::linux_tests {

using linux_platform::Adapter;
using linux_platform::TimeLimits;

std::ostream& operator<<(std::ostream& out, const Report& report)
{
    return out << '(' << report.result << ", " << report.connected << ", " << report.address << ')';
}

GattRoom::GattRoom()
{
    PrivateBus::Instance();
    ::setenv("LYN_LOG_TARGET", "stderr", 1);
    UseLongLimits();
    bluez = std::make_unique<FakeBluez>();
    bluez->AddPhone(phone);
    EXPECT_EQ(bt_product_init(), 0);
    WaitForAdapter(true);
    bluez->Forget();
}

GattRoom::~GattRoom()
{
    onReport = nullptr;
    onValue = nullptr;
    if (client != nullptr) {
        bt_gatt_client_destroy(client);
    }
    bt_gatt_unset_connection_state_changed_cb();
    bt_product_deinit();
    bluez.reset();  // And with it all links.
    WaitForAdapter(false);
    EXPECT_TRUE(RunUntil([] { return g_main_context_pending(nullptr) == FALSE; }));
}

void GattRoom::UseLongLimits()
{
    constexpr int kNeverReached = 20'000;
    TimeLimits() = {.connect = kNeverReached,
                    .strangersLink = 50,
                    .takeDown = kNeverReached,
                    .secondLook = 10,
                    .startNotify = kNeverReached,
                    .write = kNeverReached,
                    .readMtu = kNeverReached};
}

void GattRoom::UseShortLimits()
{
    UseLongLimits();
    TimeLimits().connect = 250;
    TimeLimits().takeDown = 150;
    TimeLimits().startNotify = 150;
    TimeLimits().write = 150;
    TimeLimits().readMtu = 150;
}

void GattRoom::WaitForAdapter(bool powered)
{
    EXPECT_TRUE(RunUntil([&] { return Adapter::Instance().Known().powered == powered; }));
    RunQuietly(10);
}

void GattRoom::Register()
{
    ASSERT_EQ(bt_gatt_set_connection_state_changed_cb(&GattRoom::OnReport, this), 0);
}

void GattRoom::Connect()
{
    Register();
    ASSERT_EQ(bt_gatt_connect(kPhone, false), 0);
    ASSERT_TRUE(WaitForReports(1));
    ASSERT_EQ(reports[0], (Report{0, true, kPhone}));
}

bool GattRoom::WaitForReports(std::size_t count)
{
    return RunUntil([&] { return reports.size() >= count; });
}

void GattRoom::MakeClient()
{
    ASSERT_EQ(bt_gatt_client_create(kPhone, &client), 0);
    ASSERT_EQ(bt_gatt_client_get_service(client, kServiceUuid, &service), 0);
    ASSERT_EQ(bt_gatt_service_get_characteristic(service, kCharacteristicUuid, &characteristic), 0);
}

void GattRoom::Listen()
{
    ASSERT_EQ(bt_gatt_client_set_characteristic_value_changed_cb(characteristic, &GattRoom::OnValue, this), 0);
}

int GattRoom::Write(const std::string& value)
{
    const int set = bt_gatt_set_value(characteristic, value.data(), static_cast<int>(value.size()));
    return set != 0 ? set : bt_gatt_client_write_value(characteristic, &GattRoom::OnWritten, this);
}

void GattRoom::RequestMtu()
{
    ASSERT_EQ(bt_gatt_client_set_att_mtu_changed_cb(client, &GattRoom::OnMtu, this), 0);
    ASSERT_EQ(bt_gatt_client_request_att_mtu_change(client, 256), 0);
}

void GattRoom::OnReport(int result, bool connected, const char* address, void* userData)
{
    auto* self = static_cast<GattRoom*>(userData);
    self->reports.push_back({result, connected, address});
    if (const auto react = self->onReport) {
        react();
    }
}

void GattRoom::OnValue(bt_gatt_h characteristic, char* value, int length, void* userData)
{
    auto* self = static_cast<GattRoom*>(userData);
    EXPECT_EQ(characteristic, self->characteristic);
    EXPECT_EQ(value[length], '\0');
    if (const auto react = self->onValue) {
        react();
    }
    self->values.emplace_back(value, static_cast<std::size_t>(length));
}

void GattRoom::OnWritten(int result, bt_gatt_h characteristic, void* userData)
{
    auto* self = static_cast<GattRoom*>(userData);
    EXPECT_EQ(characteristic, self->characteristic);
    self->written.push_back(result);
}

void GattRoom::OnMtu(bt_gatt_client_h client, const bt_gatt_client_att_mtu_info_s* info, void* userData)
{
    auto* self = static_cast<GattRoom*>(userData);
    EXPECT_EQ(client, self->client);
    EXPECT_STREQ(info->remote_address, kPhone);
    self->mtus.push_back(info->mtu);
    self->mtuStatus.push_back(info->status);
}

}  // namespace lyn::linux_tests
