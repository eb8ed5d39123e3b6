// SPDX-License-Identifier: Apache-2.0
//
// Null callbacks are allowed: everything goes its way and is logged, and nothing is called.
#include "interface/Functions.h"

namespace lyn::test {
namespace {

class NullCallbacks : public SimulatedTv {
protected:
    void Create(const char* name, lyn_state_changed_cb cb = nullptr)
    {
        ASSERT_EQ(lyn_create_service(&m_handle, name, cb, nullptr), LYN_ERROR_NONE);
    }

    ~NullCallbacks() override { EXPECT_EQ(lyn_destroy_service(m_handle), LYN_ERROR_NONE); }

    lyn_service_h m_handle = nullptr;
};

TEST_F(NullCallbacks, AreAllowedForStates)
{
    Create("dummy");
    EXPECT_EQ(lyn_start_scan(m_handle, nullptr, nullptr), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_start_scan(m_handle, nullptr, nullptr), LYN_ERROR_INVALID_STATE);
    EXPECT_EQ(lyn_stop_scan(m_handle), LYN_ERROR_NONE);
    EXPECT_TRUE(HasLog(INFO, "state : 1"));
    EXPECT_TRUE(HasLog(INFO, "state : 0"));
    EXPECT_FALSE(HasLogWith(ERROR, "m_StateChangeCb is null"));
}

TEST_F(NullCallbacks, AreAllowedForPhones)
{
    Create("dummy");
    EXPECT_EQ(lyn_start_scan(m_handle, nullptr, nullptr), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_stop_scan(m_handle), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_start_scan_with_serialization(m_handle, nullptr, nullptr), LYN_ERROR_NONE);
    EXPECT_EQ(CountLog(INFO, "Device Found : myDevice, 11:22:33:44:55:66, q1w2e3r4t5y6"), 2);
    EXPECT_FALSE(HasLogWith(ERROR, "oundCb is NULL"));
}

TEST_F(NullCallbacks, AreAllowedForResults)
{
    Create("dummy");
    EXPECT_EQ(lyn_request_initiating(m_handle, "id", nullptr, nullptr), LYN_ERROR_NONE);
    simulator::Settle();
    EXPECT_TRUE(HasLog(INFO, "Request result : 0"));
    EXPECT_EQ(lyn_request_initiating_with_extra_data(m_handle, "id", "", nullptr, nullptr), LYN_ERROR_NONE);
    simulator::Settle();
    EXPECT_EQ(lyn_request_initiating(m_handle, "id", nullptr, nullptr), LYN_ERROR_NONE);
    simulator::Settle();
    EXPECT_FALSE(HasLogWith(ERROR, "ResultCb is NULL"));
}

}  // namespace
}  // namespace lyn::test
