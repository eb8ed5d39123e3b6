// SPDX-License-Identifier: Apache-2.0
//
// Services whose Bluetooth cannot be made ready: they exist, and every operation fails.
#include "service/AppTest.h"

namespace lyn::test {
namespace {

class ServiceWithoutBluetooth : public AppTest, public ::testing::WithParamInterface<std::string> {
protected:
    ServiceWithoutBluetooth()
    {
        simulator::FailCall("bt_product_init", -7);
        EXPECT_EQ(app.Create(GetParam()), LYN_ERROR_NONE);
    }

    // Fails the test unless the call fails as an internal error with this message.
    static void ExpectInternal(lyn_error_e error, const std::string& message)
    {
        EXPECT_EQ(error, LYN_ERROR_INTERNAL);
        EXPECT_EQ(Messages(ERROR), Texts({message, "exception: " + message}));
        simulator::ClearLog();
    }
};

TEST_P(ServiceWithoutBluetooth, HasAHandleAndHasBegunNothingElse)
{
    EXPECT_NE(app.handle, nullptr);
    EXPECT_EQ(simulator::JournalText(), Texts({"bt_product_init()"}));
    EXPECT_TRUE(app.events.empty());
}

TEST_P(ServiceWithoutBluetooth, FailsEveryOperation)
{
    simulator::ClearLog();
    ExpectInternal(app.StartScan(), "m_pFsm is NULL");
    ExpectInternal(app.StartScanWithSerialization(), "m_pFsm is NULL");
    ExpectInternal(app.StopScan(), "m_pFsm is NULL");
    ExpectInternal(lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_50), "m_pFsm is NULL");
    ExpectInternal(lyn_stop_advertise(app.handle), "m_pFsm is NULL");
    ExpectInternal(lyn_set_nodlink_version(app.handle, "2.0"), "m_pRequester == nullptr");
    nod_link_type type = 77;
    ExpectInternal(lyn_get_nodlink_type(app.handle, &type), "m_pRequester is NULL");
    EXPECT_EQ(type, 77);
    EXPECT_TRUE(app.events.empty());
}

TEST_P(ServiceWithoutBluetooth, FailsARequestAfterItsPreparation)
{
    simulator::ClearLog();
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_INTERNAL);
    const Texts errors = Messages(ERROR);
    ASSERT_EQ(errors.size(), 4U);
    EXPECT_EQ(errors[0], "m_pFsm is NULL");
    EXPECT_TRUE(errors[1].ends_with(", Already stoppted")) << errors[1];
    EXPECT_EQ(errors[2], "m_pFsm is NULL");
    EXPECT_EQ(errors[3], "exception: m_pFsm is NULL");
    EXPECT_EQ(app.Request(kPhone, "{}"), LYN_ERROR_INTERNAL);
    simulator::Settle();
    EXPECT_TRUE(app.events.empty());
}

TEST_P(ServiceWithoutBluetooth, StillNamesResults)
{
    EXPECT_STREQ(lyn_get_request_initiating_error_string(app.handle, LYN_REQUEST_INITIATING_RESULT_CONNECTED),
                 "Connected");
}

TEST_P(ServiceWithoutBluetooth, IsTheOneService)
{
    App another;
    EXPECT_EQ(another.Create(GetParam()), LYN_ERROR_ALREADY_DONE);
}

TEST_P(ServiceWithoutBluetooth, IsDestroyedLikeAnyOther)
{
    simulator::ClearJournal();
    simulator::ClearLog();
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
    EXPECT_EQ(simulator::JournalText(), Texts({"bt_product_deinit()"}));
    EXPECT_EQ(CountLog(INFO, "In custom deleter of IService"), 1);
    EXPECT_EQ(app.Create(GetParam()), LYN_ERROR_NONE);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
}

INSTANTIATE_TEST_SUITE_P(Each, ServiceWithoutBluetooth, ::testing::Values("dummy", "mirroring", "nodlink", "kov"),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace lyn::test
