// SPDX-License-Identifier: Apache-2.0
//
// What the functions pass on, seen from the service behind them.
#include "lyn_service.h"
#include "service/FakeService.h"

namespace lyn::test {
namespace {

class InterfaceShell : public FakeServiceTest {
protected:
    InterfaceShell() { EXPECT_EQ(lyn_create_service(&m_handle, "any name", KeepState, this), LYN_ERROR_NONE); }

    static void KeepState(lyn_state_e state, void* self)
    {
        static_cast<InterfaceShell*>(self)->m_kept.push_back("state " + std::to_string(state));
    }

    static void KeepDevice(const lyn_device_info_t* info, void* self)
    {
        static_cast<InterfaceShell*>(self)->m_devices.push_back(info);
    }

    static void KeepResult(lyn_request_initiating_result_e result, void* self)
    {
        static_cast<InterfaceShell*>(self)->m_kept.push_back("result " + std::to_string(result));
    }

    void* m_handle = nullptr;
    Texts m_kept;
    std::vector<const lyn_device_info_t*> m_devices;
};

TEST_F(InterfaceShell, GivesTheNameOnAndTheHandleOut)
{
    EXPECT_EQ(TakeCalls(), Texts({"build any name"}));
    EXPECT_EQ(m_handle, script.living->GetHandle());
}

TEST_F(InterfaceShell, AsksTheServiceOncePerCall)
{
    TakeCalls();
    lyn_start_scan(m_handle, KeepDevice, this);
    EXPECT_EQ(TakeCalls(), Texts({"start scan"}));
    lyn_start_scan_with_serialization(m_handle, nullptr, nullptr);
    EXPECT_EQ(TakeCalls(), Texts({"start scan"}));
    lyn_stop_scan(m_handle);
    EXPECT_EQ(TakeCalls(), Texts({"stop scan"}));
    lyn_stop_advertise(m_handle);
    EXPECT_EQ(TakeCalls(), Texts({"stop advertise"}));
    lyn_set_nodlink_version(m_handle, "any version");
    EXPECT_EQ(TakeCalls(), Texts({"version 'any version'"}));
    lyn_destroy_service(m_handle);
    EXPECT_EQ(TakeCalls(), Texts({"deinit", "delete"}));
}

TEST_F(InterfaceShell, PassesEmptyExtraDataWhereNoneIsGiven)
{
    TakeCalls();
    lyn_request_initiating(m_handle, "the id", KeepResult, this);
    EXPECT_EQ(TakeCalls(), Texts({"request 'the id' ''"}));
    lyn_request_initiating_with_extra_data(m_handle, "the id", "the data", KeepResult, this);
    EXPECT_EQ(TakeCalls(), Texts({"request 'the id' 'the data'"}));
    lyn_request_initiating_with_extra_data(m_handle, "", "", KeepResult, this);
    EXPECT_EQ(TakeCalls(), Texts({"request '' ''"}));
}

TEST_F(InterfaceShell, PassesTheValueOfAnInterval)
{
    TakeCalls();
    for (const int interval : {0, 1, 2, 3, 4}) {
        EXPECT_EQ(lyn_start_advertise(m_handle, static_cast<lyn_adv_interval_e>(interval)), LYN_ERROR_NONE);
    }
    EXPECT_EQ(TakeCalls(), Texts({"start advertise 50", "start advertise 100", "start advertise 150",
                                  "start advertise 200", "start advertise 300"}));
}

TEST_F(InterfaceShell, GivesTheTypeOutWhateverItIs)
{
    for (const int expected : {0, 1, 2, -1, 0x7FFFFFFF}) {
        script.nodlinkType = expected;
        nod_link_type type = 77;
        EXPECT_EQ(lyn_get_nodlink_type(m_handle, &type), LYN_ERROR_NONE);
        EXPECT_EQ(type, expected);
    }
}

TEST_F(InterfaceShell, GivesTheNameOfAResultOutWhateverItIs)
{
    script.errorText = "some text";
    EXPECT_STREQ(
        lyn_get_request_initiating_error_string(m_handle, static_cast<lyn_request_initiating_result_e>(99)),
        "some text");
    EXPECT_EQ(TakeCalls().back(), "error string 99");
    EXPECT_TRUE(HasLog(INFO, "errorString : some text"));
    script.errorText = "";
    EXPECT_STREQ(lyn_get_request_initiating_error_string(m_handle, LYN_REQUEST_INITIATING_RESULT_SUCCESS), "");
}

TEST_F(InterfaceShell, ReportsStatesAsTheyAre)
{
    for (const int state : {0, 1, 2, 3, 4, -1}) {
        script.stateCb(static_cast<lyn_state_e>(state));
    }
    EXPECT_EQ(m_kept, Texts({"state 0", "state 1", "state 2", "state 3", "state 4", "state -1"}));
    EXPECT_TRUE(HasLog(INFO, "state : -1"));
}

TEST_F(InterfaceShell, ReportsADeviceByItsOwnAddress)
{
    lyn_start_scan(m_handle, KeepDevice, this);
    const lyn_device_info_t nothing = {};
    script.deviceCb(nothing);
    EXPECT_EQ(m_devices, std::vector<const lyn_device_info_t*>({&nothing}));
    EXPECT_TRUE(HasLog(INFO, "Device Found : (null), (null), (null)"));
}

TEST_F(InterfaceShell, ReportsResultsAsTheyAre)
{
    lyn_request_initiating(m_handle, "id", KeepResult, this);
    script.resultCb(static_cast<lyn_request_initiating_result_e>(11));
    script.resultCb(static_cast<lyn_request_initiating_result_e>(-7));
    EXPECT_TRUE(HasLog(INFO, "Request result : 11"));
    EXPECT_TRUE(HasLog(INFO, "Request result : -7"));
    lyn_request_initiating_with_extra_data(m_handle, "id", "", KeepResult, this);
    simulator::ClearLog();
    script.resultCb(static_cast<lyn_request_initiating_result_e>(3));
    EXPECT_EQ(m_kept, Texts({"result 11", "result -7", "result 3"}));
    EXPECT_TRUE(LogLines().empty());
}

TEST_F(InterfaceShell, KeepsNothingOfTheTextsThatItIsGiven)
{
    std::string id = "the id";
    std::string data = "the data";
    script.onOperation = [&] {
        id.assign(id.size(), 'x');
        data.assign(data.size(), 'x');
    };
    TakeCalls();
    lyn_request_initiating_with_extra_data(m_handle, id.c_str(), data.c_str(), KeepResult, this);
    EXPECT_EQ(TakeCalls(), Texts({"request 'the id' 'the data'"}));
}

}  // namespace
}  // namespace lyn::test
