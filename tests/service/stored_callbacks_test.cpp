// SPDX-License-Identifier: Apache-2.0
//
// Callbacks are stored when a call comes, before the state machine is asked: a refused second call takes
// over what is reported from then on.
#include "service/AppTest.h"

namespace lyn::test {
namespace {

// One receiver of reports, by its address as the user data.
struct Receiver {
    Texts heard;

    static void Device(const lyn_device_info_t* info, void* userData)
    {
        static_cast<Receiver*>(userData)->heard.push_back("device " + std::string(info->address));
    }

    static void Json(const char* json, void* userData)
    {
        static_cast<Receiver*>(userData)->heard.push_back("json " + std::string(json));
    }

    static void Result(lyn_request_initiating_result_e result, void* userData)
    {
        static_cast<Receiver*>(userData)->heard.push_back("result " + std::to_string(result));
    }
};

class StoredCallback : public AppTest, public ::testing::WithParamInterface<std::string> {
protected:
    StoredCallback()
    {
        simulator::AddPhone(PhoneFor(GetParam(), "Success"));
        Begin(GetParam());
    }

    lyn_error_e Scan(Receiver& receiver) { return lyn_start_scan(app.handle, Receiver::Device, &receiver); }
    lyn_error_e Request(Receiver& receiver)
    {
        return lyn_request_initiating(app.handle, kPhone, Receiver::Result, &receiver);
    }

    static bool RunUntilHeard(const Receiver& receiver)
    {
        return simulator::RunUntil([&] { return !receiver.heard.empty(); });
    }

    Receiver m_first;
    Receiver m_second;
};

TEST_P(StoredCallback, OfPhonesIsReplacedByARefusedScan)
{
    ASSERT_EQ(Scan(m_first), LYN_ERROR_NONE);
    EXPECT_EQ(Scan(m_second), LYN_ERROR_INVALID_STATE);
    ASSERT_TRUE(RunUntilHeard(m_second));
    EXPECT_EQ(m_second.heard.front(), std::string("device ") + kPhone);
    EXPECT_TRUE(m_first.heard.empty());
}

TEST_P(StoredCallback, OfPhonesIsReplacedByARefusedScanWithSerialization)
{
    ASSERT_EQ(Scan(m_first), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_start_scan_with_serialization(app.handle, Receiver::Json, &m_second), LYN_ERROR_INVALID_STATE);
    ASSERT_TRUE(RunUntilHeard(m_second));
    EXPECT_EQ(m_second.heard.front().rfind("json {", 0), 0U) << m_second.heard.front();
    EXPECT_TRUE(m_first.heard.empty());
}

TEST_P(StoredCallback, OfPhonesIsReplacedByAScanThatThePlatformRefuses)
{
    ASSERT_EQ(Scan(m_first), LYN_ERROR_NONE);
    simulator::FailCall("bt_adapter_le_stop_scan", -7);
    app.StopScan();
    EXPECT_EQ(Scan(m_second), LYN_ERROR_INVALID_STATE);
    ASSERT_TRUE(RunUntilHeard(m_second));
    EXPECT_TRUE(m_first.heard.empty());
}

TEST_P(StoredCallback, OfAResultIsReplacedByARefusedRequest)
{
    ASSERT_EQ(Request(m_first), LYN_ERROR_NONE);
    EXPECT_EQ(Request(m_second), LYN_ERROR_INVALID_STATE);
    ASSERT_TRUE(RunUntilHeard(m_second));
    simulator::Settle();
    EXPECT_EQ(m_second.heard, Texts({"result 0"}));
    EXPECT_TRUE(m_first.heard.empty());
}

TEST_P(StoredCallback, OfAResultIsReplacedByARefusedRequestWithExtraData)
{
    ASSERT_EQ(Request(m_first), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_request_initiating_with_extra_data(app.handle, kPhone, "", Receiver::Result, &m_second),
              LYN_ERROR_INVALID_STATE);
    ASSERT_TRUE(RunUntilHeard(m_second));
    simulator::Settle();
    EXPECT_EQ(m_second.heard, Texts({"result 0"}));
    EXPECT_TRUE(m_first.heard.empty());
}

TEST_P(StoredCallback, IsKeptWhenACallIsRefusedForItsArguments)
{
    ASSERT_EQ(Request(m_first), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_request_initiating(app.handle, nullptr, Receiver::Result, &m_second),
              LYN_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(lyn_request_initiating(nullptr, kPhone, Receiver::Result, &m_second), LYN_ERROR_INVALID_HANDLE);
    EXPECT_EQ(lyn_request_initiating(&m_second, kPhone, Receiver::Result, &m_second), LYN_ERROR_INVALID_PARAMETER);
    ASSERT_TRUE(RunUntilHeard(m_first));
    EXPECT_EQ(m_first.heard, Texts({"result 0"}));
    EXPECT_TRUE(m_second.heard.empty());
}

TEST_P(StoredCallback, IsReplacedByTheNextScan)
{
    ASSERT_EQ(Scan(m_first), LYN_ERROR_NONE);
    ASSERT_TRUE(RunUntilHeard(m_first));
    app.StopScan();
    ASSERT_EQ(Scan(m_second), LYN_ERROR_NONE);
    const std::size_t heard = m_first.heard.size();
    ASSERT_TRUE(RunUntilHeard(m_second));
    EXPECT_EQ(m_first.heard.size(), heard) << "the first scan is over";
}

INSTANTIATE_TEST_SUITE_P(Of, StoredCallback, ::testing::Values("mirroring", "nodlink", "kov"),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace lyn::test
