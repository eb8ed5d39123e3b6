// SPDX-License-Identifier: Apache-2.0
#include "SimulatorTest.h"

#include <cstdlib>
#include <ostream>

namespace lyn::simulator::test {

namespace {

std::optional<Bytes> CopyPacket(const char* data, int length)
{
    if (data == nullptr) {
        return std::nullopt;
    }
    return Bytes(data, data + length);
}

}  // namespace

SimulatorTest::SimulatorTest()
{
    Reset();
}

SimulatorTest::~SimulatorTest()
{
    Reset();
}

Phone AnsweringPhone(const std::vector<Answer>& answers, const std::string& address)
{
    Phone phone = MirroringPhone(address, "Kitchen", kUniqueId);
    phone.services.front().characteristics.front().answers = answers;
    return phone;
}

Answer Text(const std::string& text)
{
    Answer answer;
    answer.text = text;
    return answer;
}

int Listener::Start()
{
    return bt_adapter_le_start_scan(&Listener::OnResult, this);
}

int Listener::Stop()
{
    return bt_adapter_le_stop_scan();
}

std::vector<std::string> Listener::Addresses() const
{
    std::vector<std::string> addresses;
    for (const Result& result : results) {
        addresses.push_back(result.address);
    }
    return addresses;
}

void Listener::OnResult(int result, bt_adapter_le_device_scan_result_info_s* info, void* userData)
{
    EXPECT_EQ(result, 0);
    ASSERT_NE(info, nullptr);
    auto* self = static_cast<Listener*>(userData);
    self->results.push_back({info->remote_address, info->rssi, CopyPacket(info->adv_data, info->adv_data_len),
                             CopyPacket(info->scan_data, info->scan_data_len)});
    if (const auto react = self->onResult) {
        react(info);
    }
}

LinkUser::LinkUser()
{
    Register();
}

void LinkUser::Register()
{
    EXPECT_EQ(bt_gatt_set_connection_state_changed_cb(&LinkUser::OnReport, this), 0);
}

void LinkUser::OnReport(int result, bool connected, const char* address, void* userData)
{
    auto* self = static_cast<LinkUser*>(userData);
    self->reports.push_back({result, connected, address});
    if (const auto react = self->onReport) {
        react(self->reports.back());
    }
}

std::ostream& operator<<(std::ostream& out, const LinkUser::Report& report)
{
    return out << '(' << report.result << ", " << (report.connected ? "up" : "down") << ", " << report.address
               << ')';
}

Peer::Peer(const std::string& address)
{
    EXPECT_EQ(bt_gatt_connect(address.c_str(), false), 0);
    EXPECT_TRUE(RunUntil([&] { return !link.reports.empty(); }));
    EXPECT_EQ(bt_gatt_client_create(address.c_str(), &client), 0);
    EXPECT_EQ(bt_gatt_client_get_service(client, kService, &service), 0);
    EXPECT_EQ(bt_gatt_service_get_characteristic(service, kCharacteristic, &characteristic), 0);
    EXPECT_EQ(bt_gatt_client_set_att_mtu_changed_cb(client, &Peer::OnMtu, this), 0);
}

Peer::~Peer()
{
    Destroy();
}

int Peer::Listen()
{
    return bt_gatt_client_set_characteristic_value_changed_cb(characteristic, &Peer::OnValue, this);
}

int Peer::Write(const std::string& message)
{
    EXPECT_EQ(bt_gatt_set_value(characteristic, message.data(), static_cast<int>(message.size())), 0);
    return bt_gatt_client_write_value(characteristic, &Peer::OnWritten, this);
}

int Peer::RequestMtu(unsigned mtu)
{
    return bt_gatt_client_request_att_mtu_change(client, mtu);
}

void Peer::Destroy()
{
    if (client != nullptr) {
        EXPECT_EQ(bt_gatt_client_destroy(client), 0);
        client = nullptr;
    }
}

void Peer::OnValue(bt_gatt_h, char* value, int length, void* userData)
{
    auto* self = static_cast<Peer*>(userData);
    EXPECT_EQ(value[length], '\0');
    self->values.emplace_back(value, static_cast<std::size_t>(length));
    self->events.push_back("value " + self->values.back());
    if (const auto react = self->onValue) {
        react();
    }
    EXPECT_EQ(value[length], '\0') << "a value lives until its callback returns";
}

void Peer::OnWritten(int result, bt_gatt_h, void* userData)
{
    auto* self = static_cast<Peer*>(userData);
    self->completions.push_back(result);
    self->events.push_back("written " + std::to_string(result));
    if (const auto react = self->onWritten) {
        react();
    }
}

void Peer::OnMtu(bt_gatt_client_h, const bt_gatt_client_att_mtu_info_s* info, void* userData)
{
    auto* self = static_cast<Peer*>(userData);
    self->mtus.push_back(info->mtu);
    self->mtuStatuses.push_back(info->status);
    self->events.push_back("mtu " + std::to_string(info->mtu));
}

std::optional<std::string> TakeText(char* text)
{
    if (text == nullptr) {
        return std::nullopt;
    }
    std::string taken = text;
    std::free(text);
    return taken;
}

}  // namespace lyn::simulator::test
