// SPDX-License-Identifier: Apache-2.0
//
// A client's connections: what it asks of the platform, what it makes of the reports, whom it tells.
#include <functional>

#include "Common/LynException.h"
#include "gatt/GattTest.h"

namespace lyn::test {
namespace {

constexpr int kReportedAsSuccess = static_cast<int>(0xFE400103);
constexpr int kHciDisconnection = static_cast<int>(0xFE400104);
constexpr int kConnectTimedOut = static_cast<int>(0xC0000001);

class GattConnection : public ClientTest {
protected:
    static void Report(int result, bool connected, const char* address)
    {
        const auto registration = simulator::ConnectionRegistration();
        ASSERT_NE(registration.callback, nullptr);
        registration.callback(result, connected, address, registration.userData);
    }
};

TEST_F(GattConnection, RegistersAndConnects)
{
    const auto client = MakeClient();
    EXPECT_TRUE(client->Connect(kPhone));
    EXPECT_EQ(simulator::JournalText(), (Texts{"bt_gatt_set_connection_state_changed_cb()",
                                               "bt_gatt_connect(\"AA:BB:CC:DD:EE:01\", false)"}));
    EXPECT_TRUE(reports.empty());
}

TEST_F(GattConnection, EndsWhenTheRegistrationIsRefused)
{
    const auto client = MakeClient();
    simulator::FailCall("bt_gatt_set_connection_state_changed_cb", -1);
    EXPECT_FALSE(client->Connect(kPhone));
    EXPECT_EQ(simulator::JournalText(), Texts{"bt_gatt_set_connection_state_changed_cb()"});
    EXPECT_EQ(Messages(ERROR), Texts{"fail to bt_gatt_set_connection_state_changed_cb"});
    EXPECT_FALSE(client->Disconnect()) << "there is no address";
}

TEST_F(GattConnection, EndsWhenTheConnectIsRefused)
{
    const auto client = MakeClient();
    simulator::FailCall("bt_gatt_connect", -1);
    EXPECT_FALSE(client->Connect(kPhone));
    EXPECT_EQ(simulator::JournalText().back(), "bt_gatt_unset_connection_state_changed_cb()");
    EXPECT_EQ(Messages(ERROR), Texts{"fail to bt_gatt_connect to AA:BB:CC:DD:EE:01"});
    EXPECT_FALSE(client->Disconnect()) << "there is no address";
}

TEST_F(GattConnection, ForgetsTheAddressBeforeWhenARefusalComes)
{
    const auto client = MakeConnectedClient();
    simulator::FailCall("bt_gatt_set_connection_state_changed_cb", -1);
    EXPECT_FALSE(client->Connect(kOtherPhone));
    EXPECT_FALSE(client->Disconnect());
    EXPECT_TRUE(HasLog(ERROR, "remote address is empty"));
}

TEST_F(GattConnection, SetsAllServicesUpInTheOrderOfTheirUuids)
{
    const auto client = MakeClient({{kServiceB, {kCharacteristicB1}}, {kServiceA, {kCharacteristicA1}}});
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::ClearJournal();
    simulator::Settle();
    const auto quoted = [](const char* uuid) { return "(\"" + std::string(uuid) + "\")"; };
    EXPECT_EQ(simulator::JournalText(), (Texts{"bt_gatt_client_create(\"AA:BB:CC:DD:EE:01\")",
                                               "bt_gatt_client_get_service" + quoted(kServiceA),
                                               "bt_gatt_service_get_characteristic" + quoted(kCharacteristicA1),
                                               "bt_gatt_client_set_characteristic_value_changed_cb()",
                                               "bt_gatt_client_get_service" + quoted(kServiceB),
                                               "bt_gatt_service_get_characteristic" + quoted(kCharacteristicB1),
                                               "bt_gatt_client_set_characteristic_value_changed_cb()"}));
    EXPECT_TRUE(LogsInOrder({{INFO, "AA:BB:CC:DD:EE:01 is connected"}, {INFO, "forward callback to user"}}));
    EXPECT_EQ(reports, Texts{"connected 0 AA:BB:CC:DD:EE:01"});
}

TEST_F(GattConnection, ReleasesTheServicesBeforeWhenOneIsMissing)
{
    phone.services.pop_back();
    simulator::AddPhone(phone);
    const auto client = MakeClient();
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::Settle();
    EXPECT_EQ(reports, Texts{"connected 0 AA:BB:CC:DD:EE:01"}) << "told all the same";
    EXPECT_EQ(Messages(ERROR), (Texts{std::string("fail to bt_gatt_client_get_service for ") + kServiceB,
                                      "fail to register gatt service"}));
    EXPECT_EQ(CountCalls("bt_gatt_client_unset_characteristic_value_changed_cb"), 2);
    EXPECT_THROW(client->WriteData(kServiceA, kCharacteristicA1, "a", nullptr), LynExceptionInvalidParam);
}

TEST_F(GattConnection, TellsOfAClientThatCouldNotBeMade)
{
    const auto client = MakeClient();
    simulator::FailCall("bt_gatt_client_create", -1);
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::Settle();
    EXPECT_EQ(reports, Texts{"connected 0 AA:BB:CC:DD:EE:01"});
    EXPECT_EQ(Messages(ERROR), Texts{"fail to bt_gatt_client_create"});
    EXPECT_FALSE(client->RequestSetMtu(256, [](void*, const bt_gatt_client_att_mtu_info_s*) {}));
    EXPECT_TRUE(client->Disconnect()) << "the link is up";
    EXPECT_EQ(CountCalls("bt_gatt_client_destroy"), 0);
    simulator::Settle();
    EXPECT_EQ(reports.back(), "disconnected 0 AA:BB:CC:DD:EE:01");
}

TEST_F(GattConnection, IsTriedAgainFiveTimesAtMost)
{
    phone.connects = {{133, 0}};
    simulator::AddPhone(phone);
    const auto client = MakeClient();
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::Settle();
    EXPECT_EQ(CountCalls("bt_gatt_connect"), 6);
    EXPECT_EQ(reports, Texts{"connected 133 AA:BB:CC:DD:EE:01"}) << "the last failure alone";
    EXPECT_EQ(CountLog(ERROR, "133 error, try again"), 5);
    EXPECT_EQ(CountLog(ERROR, "Connection Error"), 1);

    // The count is back at nought, without another Connect().
    simulator::ClearJournal();
    Report(133, true, kPhone);
    EXPECT_EQ(CountCalls("bt_gatt_connect"), 1);
    EXPECT_EQ(CountLog(ERROR, "133 error, try again, m_GattRetryCount : 1, address : AA:BB:CC:DD:EE:01 "), 2);
}

TEST_F(GattConnection, CountsItsRepetitions)
{
    const auto client = MakeClient();
    for (int round = 0; round < 2; ++round) {
        for (int count = 1; count <= 5; ++count) {
            simulator::ClearLog();
            simulator::FailCall("bt_gatt_connect", 0);
            EXPECT_TRUE(client->RetryConnect(kPhone));
            EXPECT_EQ(Messages(ERROR), Texts{"133 error, try again, m_GattRetryCount : " + std::to_string(count) +
                                             ", address : AA:BB:CC:DD:EE:01 "});
        }
        simulator::ClearJournal();
        simulator::ClearLog();
        EXPECT_FALSE(client->RetryConnect(kPhone));
        EXPECT_EQ(simulator::JournalText(), Texts{});
        EXPECT_EQ(Messages(ERROR), Texts{});
    }
}

TEST_F(GattConnection, CountsAnewAfterARefusedRepetition)
{
    const auto client = MakeClient();
    simulator::FailCall("bt_gatt_connect", 0, 1);
    EXPECT_TRUE(client->RetryConnect(kPhone));
    simulator::FailCall("bt_gatt_connect", -1, 1);
    EXPECT_FALSE(client->RetryConnect(kPhone));
    simulator::ClearLog();
    simulator::FailCall("bt_gatt_connect", 0, 1);
    EXPECT_TRUE(client->RetryConnect(kPhone));
    EXPECT_TRUE(HasLog(ERROR, "133 error, try again, m_GattRetryCount : 1, address : AA:BB:CC:DD:EE:01 "));
}

TEST_F(GattConnection, CountsAnewWithEachConnect)
{
    const auto client = MakeClient();
    ASSERT_TRUE(client->Connect(kPhone));
    for (int count = 1; count <= 3; ++count) {
        simulator::FailCall("bt_gatt_connect", 0, 1);
        Report(133, true, kPhone);
    }
    simulator::Settle();
    ASSERT_TRUE(client->Disconnect());
    simulator::Settle();
    simulator::ClearLog();
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::FailCall("bt_gatt_connect", 0, 1);
    Report(133, true, kPhone);
    EXPECT_TRUE(HasLog(ERROR, "133 error, try again, m_GattRetryCount : 1, address : AA:BB:CC:DD:EE:01 "));
}

struct FailedReport {
    int result;
    int told;
    Texts errors;
};

TEST_F(GattConnection, TellsWhatItIsToldOfFailures)
{
    const auto client = MakeClient();
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::FailCall("bt_gatt_connect", -1, 0);
    const std::vector<FailedReport> cases = {
        {kConnectTimedOut, kConnectTimedOut, {"connection timeout", "connection timeout"}},
        {133, 133, {"Connection Error"}},
        {-1, -1, {"Connection Error"}},
        {kHciDisconnection, kHciDisconnection, {"Connection Error"}},
    };
    for (const FailedReport& tested : cases) {
        SCOPED_TRACE(tested.result);
        reports.clear();
        simulator::ClearLog();
        Report(tested.result, true, kPhone);
        EXPECT_EQ(reports, Texts{"connected " + std::to_string(tested.told) + " AA:BB:CC:DD:EE:01"});
        EXPECT_EQ(Messages(ERROR), tested.errors);
        EXPECT_TRUE(HasLog(INFO, "forward callback to user"));
    }
}

TEST_F(GattConnection, TakesOneFailureForSuccess)
{
    phone.connects = {{kReportedAsSuccess, 0}};
    simulator::AddPhone(phone);
    const auto client = MakeClient();
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::Settle();
    EXPECT_EQ(reports, Texts{"connected 0 AA:BB:CC:DD:EE:01"});
    EXPECT_EQ(simulator::Alive().clients, 1);
    Report(kReportedAsSuccess, false, kPhone);
    EXPECT_EQ(reports.back(), "disconnected 0 AA:BB:CC:DD:EE:01");
    EXPECT_EQ(simulator::Alive().clients, 0);
}

TEST_F(GattConnection, LeavesReportsAboutOthersAlone)
{
    const auto client = MakeConnectedClient();
    Report(0, false, kOtherPhone);
    Report(133, true, kOtherPhone);
    Report(0, true, "aa:bb:cc:dd:ee:01");
    EXPECT_EQ(Messages(ERROR), (Texts{"other device", "other device", "other device"}));
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_TRUE(reports.empty());
}

TEST_F(GattConnection, LeavesReportsAloneBeforeItConnects)
{
    const auto client = MakeClient();
    client->OnConnectionStateChanged(0, true, kPhone);
    EXPECT_EQ(Messages(ERROR), Texts{"other device"});
    EXPECT_TRUE(reports.empty());
}

TEST_F(GattConnection, IsIdleAfterItsDisconnection)
{
    const auto client = MakeConnectedClient();
    Report(0, false, kPhone);
    const Texts end(3, "bt_gatt_client_unset_characteristic_value_changed_cb()");
    Texts expected = end;
    expected.insert(expected.end(), {"bt_gatt_client_destroy()", "bt_gatt_unset_connection_state_changed_cb()"});
    EXPECT_EQ(simulator::JournalText(), expected);
    EXPECT_EQ(reports, Texts{"disconnected 0 AA:BB:CC:DD:EE:01"});
    EXPECT_TRUE(LogsInOrder({{INFO, "AA:BB:CC:DD:EE:01 is disconnected"}, {INFO, "forward callback to user"}}));
    EXPECT_FALSE(client->Disconnect());
    EXPECT_EQ(Messages(ERROR), Texts{"remote address is empty"});
}

TEST_F(GattConnection, KeepsItsStateAfterADisconnectionWithAFailure)
{
    const auto client = MakeConnectedClient();
    for (const int code : {kHciDisconnection, 133, -1, kConnectTimedOut}) {
        simulator::ClearLog();
        Report(code, false, kPhone);
        EXPECT_EQ(Messages(ERROR), Texts{"error case"});
        EXPECT_EQ(reports.back(), "disconnected " + std::to_string(code) + " AA:BB:CC:DD:EE:01");
    }
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_TRUE(client->Disconnect());
}

TEST_F(GattConnection, DropsReportsWithoutAddressOrUserData)
{
    const auto client = MakeConnectedClient();
    const auto registration = simulator::ConnectionRegistration();
    registration.callback(0, false, nullptr, registration.userData);
    registration.callback(0, false, kPhone, nullptr);
    registration.callback(0, false, nullptr, nullptr);
    EXPECT_EQ(Messages(ERROR),
              (Texts{"remote_address is nullptr", "userData is nullptr", "remote_address is nullptr"}));
    EXPECT_TRUE(reports.empty());
}

TEST_F(GattConnection, LetsOtherExceptionsPassAndThePlatformHearsOfNone)
{
    const auto client = MakeBareClient();
    ASSERT_TRUE(client->Init(
        [](int, bool, const std::string&) { throw std::runtime_error("the requester's own"); }, nullptr, {}));
    ASSERT_TRUE(client->Connect(kPhone));
    EXPECT_THROW(client->OnConnectionStateChanged(0, true, kPhone), std::runtime_error);
    simulator::ClearLog();
    EXPECT_NO_THROW(Report(kConnectTimedOut, true, kPhone));
    EXPECT_TRUE(HasLogWith(ERROR, "the requester's own"));
}

TEST_F(GattConnection, MayHaveNobodyToTell)
{
    const auto client = MakeBareClient();
    ASSERT_TRUE(client->Init(nullptr, nullptr, {}));
    ASSERT_TRUE(client->Connect(kPhone));
    simulator::Settle();
    EXPECT_EQ(simulator::Alive().clients, 1);
    EXPECT_FALSE(HasLog(INFO, "forward callback to user"));
    EXPECT_EQ(Messages(ERROR), Texts{});
}

TEST_F(GattConnection, TakesTheSameReportTwice)
{
    const auto client = MakeConnectedClient();
    Report(0, true, kPhone);
    EXPECT_EQ(simulator::Alive().clients, 1) << "the client of the first report is not lost";
    EXPECT_EQ(reports, Texts{"connected 0 AA:BB:CC:DD:EE:01"});
    client->WriteData(kServiceA, kCharacteristicA1, "a", nullptr);
    simulator::Settle();
    EXPECT_EQ(simulator::MessagesTo(kPhone), Texts{"a"});
}

TEST_F(GattConnection, LeavesTheRegistrationToTheClientThatCameLater)
{
    auto first = MakeConnectedClient();
    phone.address = kOtherPhone;
    simulator::AddPhone(phone);
    auto second = MakeClient();
    ASSERT_TRUE(second->Connect(kOtherPhone));
    simulator::ClearJournal();
    first.reset();
    EXPECT_EQ(CountCalls("bt_gatt_unset_connection_state_changed_cb"), 0);
    simulator::Settle();
    EXPECT_EQ(reports, Texts{"connected 0 AA:BB:CC:DD:EE:02"});
    simulator::ClearJournal();
    second.reset();
    EXPECT_EQ(CountCalls("bt_gatt_unset_connection_state_changed_cb"), 1);
    EXPECT_EQ(simulator::ConnectionRegistration().callback, nullptr);
}

TEST_F(GattConnection, IsNotReportedToAClientThatIsGone)
{
    auto client = MakeConnectedClient();
    const auto registration = simulator::ConnectionRegistration();
    client.reset();
    simulator::ClearLog();
    simulator::ClearJournal();
    registration.callback(0, false, kPhone, registration.userData);
    EXPECT_TRUE(reports.empty());
    EXPECT_TRUE(LogLines().empty());
    EXPECT_EQ(simulator::JournalText(), Texts{});
}

TEST_F(GattConnection, IsNotReportedToAClientThatNobodyCanKeep)
{
    CGattClient client;
    ASSERT_TRUE(client.Init([this](int, bool, const std::string&) { reports.emplace_back("told"); }, nullptr, {}));
    ASSERT_TRUE(client.Connect(kPhone));
    Report(0, true, kPhone);
    EXPECT_TRUE(reports.empty());
    client.Deinit();
}

TEST_F(GattConnection, CannotBeMadeByAClientWhenALaterOneHasMadeOne)
{
    const auto first = MakeClient();
    const auto second = MakeClient();
    ASSERT_TRUE(second->Connect(kPhone));
    simulator::ClearJournal();
    EXPECT_FALSE(first->Connect(kPhone));
    EXPECT_EQ(Messages(ERROR), Texts{}) << "the platform was not asked";
    EXPECT_EQ(simulator::JournalText(), Texts{});
    EXPECT_FALSE(first->Disconnect()) << "there is no address";
    simulator::Settle();
    EXPECT_EQ(reports, Texts{"connected 0 AA:BB:CC:DD:EE:01"}) << "told to the later one, once";
}

TEST_F(GattConnection, MayGoInsideItsReport)
{
    for (const bool connected : {true, false}) {
        SCOPED_TRACE(connected);
        ClientPtr client = MakeBareClient();
        std::string told;
        auto life = std::make_shared<int>();
        const std::weak_ptr<int> callable = life;
        ASSERT_TRUE(client->Init(
            [&, held = std::move(life)](int, bool reported, const std::string& address) {
                if (reported == connected) {
                    client.reset();
                    EXPECT_FALSE(callable.expired()) << "what is being called lives";
                    told = address;
                }
            },
            nullptr, {{kServiceA, {kCharacteristicA1}}}));
        ASSERT_TRUE(client->Connect(kPhone));
        simulator::Settle();
        if (client) {
            client->Disconnect();
            simulator::Settle();
        }
        EXPECT_EQ(told, kPhone);
        EXPECT_EQ(client, nullptr);
        EXPECT_EQ(simulator::Alive().clients, 0);
        simulator::RemovePhone(kPhone);
        simulator::Settle();
        simulator::AddPhone(phone);
    }
}

}  // namespace
}  // namespace lyn::test
