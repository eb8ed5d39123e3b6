// SPDX-License-Identifier: Apache-2.0
//
// Failures as an application sees them: the code that comes back and the lines that say why.
#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "support/App.h"
#include "support/SimulatedTv.h"

namespace lyn::test {
namespace {

using testing::ElementsAre;

struct Operation {
    std::string name;
    std::function<lyn_error_e(lyn_service_h)> call;
};

// Every operation on a service but its destruction.
std::vector<Operation> Operations()
{
    return {
        {"lyn_start_scan", [](lyn_service_h h) { return lyn_start_scan(h, nullptr, nullptr); }},
        {"lyn_start_scan_with_serialization",
         [](lyn_service_h h) { return lyn_start_scan_with_serialization(h, nullptr, nullptr); }},
        {"lyn_stop_scan", [](lyn_service_h h) { return lyn_stop_scan(h); }},
        {"lyn_request_initiating",
         [](lyn_service_h h) { return lyn_request_initiating(h, "AA:BB:CC:DD:EE:01", nullptr, nullptr); }},
        {"lyn_request_initiating_with_extra_data",
         [](lyn_service_h h) {
             return lyn_request_initiating_with_extra_data(h, "AA:BB:CC:DD:EE:01", "", nullptr, nullptr);
         }},
        {"lyn_start_advertise", [](lyn_service_h h) { return lyn_start_advertise(h, LYN_ADV_INTERVAL_50); }},
        {"lyn_stop_advertise", [](lyn_service_h h) { return lyn_stop_advertise(h); }},
        {"lyn_set_nodlink_version", [](lyn_service_h h) { return lyn_set_nodlink_version(h, "2.0"); }},
        {"lyn_get_nodlink_type",
         [](lyn_service_h h) {
             nod_link_type type = 77;
             const lyn_error_e error = lyn_get_nodlink_type(h, &type);
             EXPECT_EQ(type, 77);
             return error;
         }},
        {"lyn_get_request_initiating_error_string",
         [](lyn_service_h h) {
             EXPECT_STREQ(lyn_get_request_initiating_error_string(h, LYN_REQUEST_INITIATING_RESULT_SUCCESS),
                          "UnknownErr");
             // It has no code to return: its lines are compared all the same.
             return static_cast<lyn_error_e>(-1);
         }},
    };
}

class FailureCode : public SimulatedTv {
protected:
    static void ExpectCode(const Operation& operation, lyn_service_h handle, lyn_error_e code)
    {
        const lyn_error_e returned = operation.call(handle);
        if (returned != static_cast<lyn_error_e>(-1)) {
            EXPECT_EQ(returned, code);
        }
    }

    // The ERROR lines since the last look.
    static std::vector<std::string> NewErrors()
    {
        std::vector<std::string> errors = Messages(ERROR);
        simulator::ClearLog();
        return errors;
    }
};

TEST_F(FailureCode, IsInvalidHandleForANullServiceInEveryOperation)
{
    std::vector<Operation> operations = Operations();
    operations.push_back({"lyn_destroy_service", [](lyn_service_h h) { return lyn_destroy_service(h); }});
    for (const Operation& operation : operations) {
        SCOPED_TRACE(operation.name);
        ExpectCode(operation, nullptr, LYN_ERROR_INVALID_HANDLE);
        EXPECT_THAT(NewErrors(), ElementsAre("service is NULL", "exception: service is NULL"));
    }
}

TEST_F(FailureCode, IsInvalidParameterForAStaleServiceInEveryOperationButDestroy)
{
    App app("mirroring");
    void* const stale = app.handle;
    ASSERT_EQ(app.Destroy(), LYN_ERROR_NONE);
    simulator::ClearLog();
    for (const Operation& operation : Operations()) {
        SCOPED_TRACE(operation.name);
        ExpectCode(operation, stale, LYN_ERROR_INVALID_PARAMETER);
        EXPECT_THAT(Messages(WARN), ElementsAre("no service"));
        EXPECT_THAT(NewErrors(), ElementsAre("exception: Invalid Parameter exception"));
    }
}

TEST_F(FailureCode, IsInvalidHandleForTheDestructionOfAStaleService)
{
    App app("mirroring");
    void* const stale = app.handle;
    ASSERT_EQ(app.Destroy(), LYN_ERROR_NONE);
    simulator::ClearLog();
    EXPECT_EQ(lyn_destroy_service(stale), LYN_ERROR_INVALID_HANDLE);
    EXPECT_THAT(NewErrors(), ElementsAre("exception: not mached service"));
}

TEST_F(FailureCode, IsInvalidParameterForAServiceNameThatIsNotKnown)
{
    App app;
    EXPECT_EQ(app.Create("radio"), LYN_ERROR_INVALID_PARAMETER);
    EXPECT_THAT(NewErrors(), ElementsAre("radio is not defined service", "exception: not defined service"));
}

TEST_F(FailureCode, IsInvalidParameterForAnIntervalThatIsNotKnown)
{
    const App app("mirroring");
    for (const int interval : {5, -1, 50, 2147483647}) {
        SCOPED_TRACE(interval);
        EXPECT_EQ(lyn_start_advertise(app.handle, static_cast<lyn_adv_interval_e>(interval)),
                  LYN_ERROR_INVALID_PARAMETER);
        EXPECT_THAT(NewErrors(), ElementsAre("wrong interval value", "exception: wrong interval value"));
    }
}

TEST_F(FailureCode, IsAlreadyDoneForASecondService)
{
    const App first("mirroring");
    App second;
    EXPECT_EQ(second.Create("dummy"), LYN_ERROR_ALREADY_DONE);
    EXPECT_THAT(NewErrors(), ElementsAre("already service is running", "exception: Already Done exception"));
}

TEST_F(FailureCode, IsInternalForAServiceWhoseBluetoothDidNotStart)
{
    simulator::FailCall("bt_product_init", -1);
    App app("mirroring");
    simulator::ClearLog();
    EXPECT_EQ(app.StartScan(), LYN_ERROR_INTERNAL);
    EXPECT_THAT(NewErrors(), ElementsAre("m_pFsm is NULL", "exception: m_pFsm is NULL"));
    EXPECT_EQ(lyn_set_nodlink_version(app.handle, "2.0"), LYN_ERROR_INTERNAL);
    EXPECT_THAT(NewErrors(), ElementsAre("m_pRequester == nullptr", "exception: m_pRequester == nullptr"));
    nod_link_type type = 0;
    EXPECT_EQ(lyn_get_nodlink_type(app.handle, &type), LYN_ERROR_INTERNAL);
    EXPECT_THAT(NewErrors(), ElementsAre("m_pRequester is NULL", "exception: m_pRequester is NULL"));
    // The product was never started; the end of the service gives one surplus deinit, which is harmless.
}

TEST_F(FailureCode, IsInternalForANodLinkServiceOnATvThatCannotServe)
{
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    App app;
    EXPECT_EQ(app.Create("nodlink"), LYN_ERROR_INTERNAL);
    EXPECT_THAT(NewErrors(), ElementsAre("m_StateChangedCb is nullptr", "exception: m_StateChangedCb is nullptr"));
}

TEST_F(FailureCode, IsInvalidStateForAnOperationThatTheStateDoesNotAllow)
{
    App app("mirroring");
    ASSERT_EQ(app.StartScan(), LYN_ERROR_NONE);
    simulator::ClearLog();
    EXPECT_EQ(app.StartScan(), LYN_ERROR_INVALID_STATE);
    EXPECT_THAT(NewErrors(), ElementsAre("Invalid State", "exception: Invalid State"));
}

TEST_F(FailureCode, IsOperationFailedWhenThePlatformCannotStartTheScan)
{
    App app("mirroring");
    simulator::FailCall("bt_adapter_le_start_scan", -5);
    EXPECT_EQ(app.StartScan(), LYN_ERROR_OPERATION_FAILED);
    EXPECT_THAT(NewErrors(), ElementsAre("bt_adapter_le_start_scan failed with [0xfffffffb]", "fail to start scan",
                                         "exception: fail to start scan"));
}

TEST_F(FailureCode, IsOperationFailedWhenThePlatformCannotStopTheScan)
{
    App app("mirroring");
    simulator::FailCall("bt_adapter_le_stop_scan", -5);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_OPERATION_FAILED);
    EXPECT_THAT(NewErrors(), ElementsAre("bt_adapter_le_stop_scan failed with [0xfffffffb]", "fail to stop scan",
                                         "exception: fail to stop scan"));
}

TEST_F(FailureCode, IsOperationFailedWhenTheAdvertisementCannotBeSet)
{
    const App app("mirroring");
    simulator::FailCall("vconf_set_int", -5);
    EXPECT_EQ(lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_100), LYN_ERROR_OPERATION_FAILED);
    EXPECT_THAT(NewErrors(),
                ElementsAre("vconf_set_int failed for key : memory/org.nuvex.bleapp/mirroring_trigger",
                            "exception: Failed to set ble adv interval"));
}

TEST_F(FailureCode, IsOperationFailedWhenThePlatformRefusesToConnect)
{
    App app("mirroring");
    simulator::FailCall("bt_gatt_connect", -5, 0);
    EXPECT_EQ(app.Request("AA:BB:CC:DD:EE:01"), LYN_ERROR_OPERATION_FAILED);
    const std::vector<std::string> errors = NewErrors();
    ASSERT_GE(errors.size(), 2U);
    EXPECT_EQ(errors[errors.size() - 2], "fail to RequestInitiating");
    EXPECT_EQ(errors.back(), "exception: fail to RequestInitiating");
}

TEST_F(FailureCode, IsNotSupportedForNodLinkOperationsOfAnotherService)
{
    for (const std::string name : {"mirroring", "kov", "dummy"}) {
        SCOPED_TRACE(name);
        const App app(name);
        simulator::ClearLog();
        nod_link_type type = 77;
        EXPECT_EQ(lyn_get_nodlink_type(app.handle, &type), LYN_ERROR_NOT_SUPPORTED);
        EXPECT_EQ(type, 77);
        EXPECT_EQ(Messages(ERROR).back(), "exception: Not supported api for this service");
        EXPECT_EQ(lyn_set_nodlink_version(app.handle, "2.0"), LYN_ERROR_NOT_SUPPORTED);
        EXPECT_EQ(Messages(ERROR).back(), "exception: Not supported api for this service");
    }
}

TEST_F(FailureCode, IsWrittenAsUnknownErrForAResultThatHasNoName)
{
    const App app("mirroring");
    simulator::ClearLog();
    for (const int result : {7, 12, -1}) {
        SCOPED_TRACE(result);
        EXPECT_STREQ(lyn_get_request_initiating_error_string(app.handle,
                                                             static_cast<lyn_request_initiating_result_e>(result)),
                     "UnknownErr");
        EXPECT_EQ(NewErrors().back(), "exception: Not mached errorCode");
    }
}

TEST_F(FailureCode, IsNoneForEveryOperationThatSucceeds)
{
    App app("dummy");
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_300), LYN_ERROR_NONE);
    EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    EXPECT_EQ(app.StartScanWithSerialization(), LYN_ERROR_NONE);
    EXPECT_EQ(app.Request("11:22:33:44:55:66"), LYN_ERROR_NONE);
    EXPECT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
}

}  // namespace
}  // namespace lyn::test
