// SPDX-License-Identifier: Apache-2.0
#include "ContractTest.h"

namespace lyn::contract {
namespace {

TEST_F(PhoneTest, AConnectHasExactlyOneReport)
{
    Register();
    Connect();
    RunQuietly();
    EXPECT_EQ(m_reports.size(), 1U);
    EXPECT_EQ(m_reports[0].address, m_phone);
}

TEST_F(PhoneTest, ADisconnectHasExactlyOneReportAndIsNotWaitedFor)
{
    Register();
    Connect();
    ASSERT_EQ(Call([&] { return bt_gatt_disconnect(m_phone.c_str()); }), 0);
    ASSERT_EQ(m_reports.size(), 1U);
    ASSERT_TRUE(RunUntil([&] { return m_reports.size() == 2; }));
    RunQuietly();
    ASSERT_EQ(m_reports.size(), 2U);
    EXPECT_EQ(m_reports[1].result, 0);
    EXPECT_FALSE(m_reports[1].connected);
    EXPECT_NE(bt_gatt_disconnect(m_phone.c_str()), 0) << "no link is up";
}

TEST_F(BluetoothTest, AConnectToAnAbsentPhoneFailsOnceInBoundedTime)
{
    const auto absent = Environment("LYN_CONTRACT_ABSENT_PHONE");
    if (!absent) {
        GTEST_SKIP() << "LYN_CONTRACT_ABSENT_PHONE names no address";
    }
    struct Report {
        int result;
        bool connected;
    };
    std::vector<Report> reports;
    const auto keep = [](int result, bool connected, const char*, void* data) {
        const InCallback scope;
        static_cast<std::vector<Report>*>(data)->push_back({result, connected});
    };
    ASSERT_EQ(bt_gatt_set_connection_state_changed_cb(keep, &reports), 0);
    ASSERT_EQ(Call([&] { return bt_gatt_connect(absent->c_str(), false); }), 0);
    ASSERT_TRUE(RunUntil([&] { return !reports.empty(); }));
    RunQuietly();
    bt_gatt_unset_connection_state_changed_cb();
    ASSERT_EQ(reports.size(), 1U);
    EXPECT_NE(reports[0].result, 0);
    EXPECT_TRUE(reports[0].connected);
}

TEST_F(PhoneTest, AReportRepeatsTheAddressAsItWasGiven)
{
    const auto change = [&](gchar (*convert)(gchar)) {
        for (char& character : m_phone) {
            character = convert(character);
        }
    };
    for (const auto convert : {g_ascii_tolower, g_ascii_toupper}) {
        change(convert);
        Register();
        Connect();
        Disconnect();
        ASSERT_EQ(m_reports.size(), 2U);
        EXPECT_EQ(m_reports[0].address, m_phone);
        EXPECT_EQ(m_reports[1].address, m_phone);
    }
}

TEST_F(PhoneTest, AReportWhoseRegistrationHasEndedIsDropped)
{
    Register();
    ASSERT_EQ(bt_gatt_connect(m_phone.c_str(), false), 0);
    ASSERT_EQ(bt_gatt_unset_connection_state_changed_cb(), 0);
    // The link comes up all the same: it can be taken down then.
    EXPECT_TRUE(RunUntil([&] { return bt_gatt_disconnect(m_phone.c_str()) == 0; }));
    RunQuietly();
    EXPECT_TRUE(m_reports.empty());
}

TEST_F(PhoneTest, AReportWhoseRegistrationWasReplacedIsDropped)
{
    struct Other {
        static void OnReport(int, bool, const char*, void* data) { ++*static_cast<int*>(data); }
    };
    int old = 0;
    ASSERT_EQ(bt_gatt_set_connection_state_changed_cb(&Other::OnReport, &old), 0);
    ASSERT_EQ(bt_gatt_connect(m_phone.c_str(), false), 0);
    Register();
    EXPECT_TRUE(RunUntil([&] { return bt_gatt_disconnect(m_phone.c_str()) == 0; }));
    RunQuietly();
    EXPECT_EQ(old, 0);
    EXPECT_TRUE(m_reports.empty());
}

TEST_F(PhoneTest, AConnectIsAcceptedWhileTheOldLinkGoesDown)
{
    Register();
    Connect();
    ASSERT_EQ(bt_gatt_disconnect(m_phone.c_str()), 0);
    ASSERT_EQ(Call([&] { return bt_gatt_connect(m_phone.c_str(), false); }), 0);
    ASSERT_TRUE(RunUntil([&] { return m_reports.size() == 3; }));
    EXPECT_FALSE(m_reports[1].connected);
    EXPECT_TRUE(m_reports[2].connected);
    EXPECT_EQ(m_reports[2].result, 0);
}

TEST_F(PhoneTest, AConnectFromInsideTheReportOfTheEndIsAccepted)
{
    Register();
    Connect();
    m_onReport = [&] {
        if (!m_reports.back().connected) {
            EXPECT_EQ(Call([&] { return bt_gatt_connect(m_phone.c_str(), false); }), 0);
        }
    };
    ASSERT_EQ(bt_gatt_disconnect(m_phone.c_str()), 0);
    ASSERT_TRUE(RunUntil([&] { return m_reports.size() == 3; }));
    m_onReport = nullptr;
    EXPECT_TRUE(m_reports[2].connected);
    EXPECT_EQ(m_reports[2].result, 0);
}

TEST_F(PhoneTest, ALinkThatWasLeftUpMayBeTakenOver)
{
    Register();
    Connect();
    Register();
    Connect();
    RunQuietly();
    EXPECT_EQ(m_reports.size(), 1U);
}

}  // namespace
}  // namespace lyn::contract
