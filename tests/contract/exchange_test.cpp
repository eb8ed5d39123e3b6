// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <cstring>

#include "ContractTest.h"

namespace lyn::contract {
namespace {

constexpr unsigned kLeastMtu = 23;

/// A test with a client of the phone, its characteristic looked up.
class ExchangeTest : public PhoneTest {
protected:
    void SetUp() override
    {
        PhoneTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
        const auto service = Environment("LYN_CONTRACT_SERVICE");
        const auto characteristic = Environment("LYN_CONTRACT_CHARACTERISTIC");
        if (!service || !characteristic) {
            GTEST_SKIP() << "LYN_CONTRACT_SERVICE and LYN_CONTRACT_CHARACTERISTIC name nothing";
        }
        m_serviceUuid = *service;
        m_characteristicUuid = *characteristic;
        Register();
        ASSERT_NO_FATAL_FAILURE(Connect());
        ASSERT_EQ(Call([&] { return bt_gatt_client_create(m_phone.c_str(), &m_client); }), 0);
        ASSERT_EQ(Call([&] { return bt_gatt_client_get_service(m_client, service->c_str(), &m_service); }), 0);
        ASSERT_EQ(Call([&] {
                      return bt_gatt_service_get_characteristic(m_service, characteristic->c_str(),
                                                                &m_characteristic);
                  }),
                  0);
    }

    void TearDown() override
    {
        Destroy();
        PhoneTest::TearDown();
    }

    void Destroy()
    {
        if (m_client != nullptr) {
            EXPECT_EQ(Call([&] { return bt_gatt_client_destroy(m_client); }), 0);
            m_client = nullptr;
        }
    }

    int Listen()
    {
        return Call([&] {
            return bt_gatt_client_set_characteristic_value_changed_cb(m_characteristic, &ExchangeTest::OnValue,
                                                                      this);
        });
    }

    void Write(const std::string& message)
    {
        const int length = static_cast<int>(message.size());
        ASSERT_EQ(Call([&] { return bt_gatt_set_value(m_characteristic, message.data(), length); }), 0);
        ASSERT_EQ(
            Call([&] { return bt_gatt_client_write_value(m_characteristic, &ExchangeTest::OnWritten, this); }), 0);
    }

    static void OnValue(bt_gatt_h characteristic, char* value, int length, void* userData)
    {
        const InCallback scope;
        auto* self = static_cast<ExchangeTest*>(userData);
        EXPECT_EQ(characteristic, self->m_characteristic);
        ASSERT_NE(value, nullptr);
        ASSERT_GE(length, 0);
        EXPECT_EQ(value[length], '\0') << "a NUL stands behind the value";
        const std::string before(value, static_cast<std::size_t>(length));
        if (const auto react = self->m_onValue) {
            react();
        }
        EXPECT_EQ(std::string(value, static_cast<std::size_t>(length) + 1), before + '\0')
            << "a value lives until its callback returns";
        self->m_values.push_back(before);
    }

    static void OnWritten(int result, bt_gatt_h characteristic, void* userData)
    {
        const InCallback scope;
        auto* self = static_cast<ExchangeTest*>(userData);
        EXPECT_EQ(characteristic, self->m_characteristic);
        self->m_completions.push_back(result);
    }

    static void OnMtu(bt_gatt_client_h client, const bt_gatt_client_att_mtu_info_s* info, void* userData)
    {
        const InCallback scope;
        auto* self = static_cast<ExchangeTest*>(userData);
        EXPECT_EQ(client, self->m_client);
        ASSERT_NE(info, nullptr);
        EXPECT_STREQ(info->remote_address, self->m_phone.c_str());
        self->m_mtus.push_back(info->mtu);
    }

    std::string m_serviceUuid;
    std::string m_characteristicUuid;
    bt_gatt_client_h m_client = nullptr;
    bt_gatt_h m_service = nullptr;
    bt_gatt_h m_characteristic = nullptr;
    std::vector<std::string> m_values;
    std::vector<int> m_completions;
    std::vector<unsigned> m_mtus;
    std::function<void()> m_onValue;
};

TEST_F(ExchangeTest, AMessageIsWrittenAndAnswered)
{
    ASSERT_EQ(Listen(), 0);
    Write("contract test");
    EXPECT_TRUE(RunUntil([&] { return !m_values.empty() && !m_completions.empty(); }));
    EXPECT_EQ(m_completions, std::vector<int>{0});
    EXPECT_FALSE(m_values.at(0).empty());
}

TEST_F(ExchangeTest, AMessageOf512BytesIsWritten)
{
    Write(std::string(512, 'x'));
    EXPECT_TRUE(RunUntil([&] { return !m_completions.empty(); }));
    EXPECT_EQ(m_completions, std::vector<int>{0});
    const std::string tooLong(513, 'x');
    EXPECT_NE(bt_gatt_set_value(m_characteristic, tooLong.data(), 513), 0);
}

TEST_F(ExchangeTest, EveryMtuRequestIsReportedWithTheMtuInForce)
{
    ASSERT_EQ(bt_gatt_client_set_att_mtu_changed_cb(m_client, &ExchangeTest::OnMtu, this), 0);
    ASSERT_EQ(Call([&] { return bt_gatt_client_request_att_mtu_change(m_client, 256); }), 0);
    ASSERT_TRUE(RunUntil([&] { return m_mtus.size() == 1; }));
    ASSERT_EQ(Call([&] { return bt_gatt_client_request_att_mtu_change(m_client, 256); }), 0);
    ASSERT_TRUE(RunUntil([&] { return m_mtus.size() == 2; })) << "also when it does not change";
    EXPECT_GE(m_mtus[0], kLeastMtu);
    EXPECT_EQ(m_mtus[0], m_mtus[1]);
}

TEST_F(ExchangeTest, TheMtuIsNotReportedAfterItsUnset)
{
    ASSERT_EQ(bt_gatt_client_set_att_mtu_changed_cb(m_client, &ExchangeTest::OnMtu, this), 0);
    ASSERT_EQ(bt_gatt_client_request_att_mtu_change(m_client, 256), 0);
    ASSERT_EQ(Call([&] { return bt_gatt_client_unset_att_mtu_changed_cb(m_client); }), 0);
    RunQuietly();
    EXPECT_TRUE(m_mtus.empty());
}

TEST_F(ExchangeTest, ValuesDoNotComeAfterTheirUnset)
{
    ASSERT_EQ(Listen(), 0);
    Write("contract test");
    ASSERT_EQ(Call([&] { return bt_gatt_client_unset_characteristic_value_changed_cb(m_characteristic); }), 0);
    RunQuietly();
    EXPECT_TRUE(m_values.empty());
}

TEST_F(ExchangeTest, NothingComesAfterTheClientsDestruction)
{
    ASSERT_EQ(Listen(), 0);
    Write("contract test");
    Destroy();
    RunQuietly();
    EXPECT_TRUE(m_values.empty());
    EXPECT_TRUE(m_completions.empty());
}

TEST_F(ExchangeTest, AClientMayBeDestroyedInsideItsValueCallback)
{
    ASSERT_EQ(Listen(), 0);
    m_onValue = [&] {
        Destroy();
        EXPECT_EQ(Call([&] { return bt_gatt_disconnect(m_phone.c_str()); }), 0);
    };
    Write("contract test");
    EXPECT_TRUE(RunUntil([&] { return m_reports.size() == 2; }));
    EXPECT_EQ(m_values.size(), 1U);
    EXPECT_FALSE(m_reports.back().connected);
}

TEST_F(ExchangeTest, HandlesLeadToServiceAndUuids)
{
    bt_gatt_h service = nullptr;
    char* uuid = nullptr;
    ASSERT_EQ(bt_gatt_characteristic_get_service(m_characteristic, &service), 0);
    ASSERT_EQ(bt_gatt_get_uuid(service, &uuid), 0);
    EXPECT_EQ(uuid, m_serviceUuid);
    std::free(uuid);
    ASSERT_EQ(bt_gatt_get_uuid(m_characteristic, &uuid), 0);
    EXPECT_EQ(uuid, m_characteristicUuid);
    std::free(uuid);
}

TEST_F(ExchangeTest, WhatThePhoneDoesNotOfferIsNotGiven)
{
    bt_gatt_h handle = nullptr;
    EXPECT_NE(bt_gatt_client_get_service(m_client, "00000000-0000-4000-8000-00000000dead", &handle), 0);
    EXPECT_NE(bt_gatt_service_get_characteristic(m_service, "00000000-0000-4000-8000-00000000dead", &handle), 0);
    EXPECT_EQ(handle, nullptr);
}

TEST_F(PhoneTest, AClientNeedsALink)
{
    bt_gatt_client_h client = nullptr;
    EXPECT_NE(bt_gatt_client_create(m_phone.c_str(), &client), 0);
    EXPECT_EQ(client, nullptr);
}

}  // namespace
}  // namespace lyn::contract
