// SPDX-License-Identifier: Apache-2.0
//
// The manager checks the handle and passes the operation on as it is.
#include <stdexcept>

#include "service/FakeService.h"
#include "service/Operations.h"
#include "support/LogOrder.h"
#include "support/Thrown.h"

namespace lyn::test {
namespace {

class ManagerForwarding : public FakeServiceTest {
protected:
    ManagerForwarding() : m_handle(Manager().CreateService("any", nullptr))
    {
        TakeCalls();
        simulator::ClearLog();
    }

    lyn_service_h m_handle;
    int m_other = 0;
};

TEST_F(ManagerForwarding, AsksTheServiceOnce)
{
    for (const Forwarding& forwarding : Forwardings()) {
        SCOPED_TRACE(forwarding.name);
        forwarding.call(m_handle);
        EXPECT_EQ(TakeCalls(), Texts({forwarding.asked}));
    }
    EXPECT_TRUE(Messages(ERROR).empty());
    EXPECT_TRUE(Messages(WARN).empty());
}

TEST_F(ManagerForwarding, ReturnsWhatTheServiceReturns)
{
    script.nodlinkType = -5;
    EXPECT_EQ(Manager().GetNodlinkType(m_handle), -5);
    script.errorText = "the text";
    EXPECT_EQ(Manager().GetRequestIntiatingErrorString(m_handle, LYN_REQUEST_INITIATING_RESULT_SUCCESS),
              "the text");
}

TEST_F(ManagerForwarding, HandsTheCallbacksOn)
{
    int devices = 0;
    int results = 0;
    Manager().StartScan(m_handle, [&](const lyn_device_info_t&) { ++devices; });
    Manager().RequestInitiating(m_handle, "id", "", [&](lyn_request_initiating_result_e) { ++results; });
    ASSERT_TRUE(script.deviceCb && script.resultCb);
    script.deviceCb({});
    script.resultCb(LYN_REQUEST_INITIATING_RESULT_SUCCESS);
    EXPECT_EQ(devices, 1);
    EXPECT_EQ(results, 1);
}

TEST_F(ManagerForwarding, HandsTextsOnWithEveryByte)
{
    const std::string text("a\0b", 3);
    Manager().SetNodlinkVersion(m_handle, text);
    EXPECT_EQ(TakeCalls(), Texts({"version '" + text + "'"}));
}

TEST_F(ManagerForwarding, LetsExceptionsPassUnchanged)
{
    for (const Forwarding& forwarding : Forwardings()) {
        SCOPED_TRACE(forwarding.name);
        script.onOperation = [] { throw LynExceptionNotSupported("a message"); };
        EXPECT_EQ(ThrownBy<LynExceptionNotSupported>([&] { forwarding.call(m_handle); }), "a message");
        script.onOperation = [] { throw std::runtime_error("another message"); };
        EXPECT_EQ(ThrownBy<std::runtime_error>([&] { forwarding.call(m_handle); }), "another message");
    }
    EXPECT_TRUE(Messages(ERROR).empty());
}

TEST_F(ManagerForwarding, RefusesANullHandle)
{
    for (const Forwarding& forwarding : Forwardings()) {
        SCOPED_TRACE(forwarding.name);
        simulator::ClearLog();
        EXPECT_EQ(ThrownBy<LynExceptionInvalidHandle>([&] { forwarding.call(nullptr); }), "service is NULL");
        EXPECT_EQ(Messages(ERROR), Texts({"service is NULL"}));
        EXPECT_TRUE(Messages(WARN).empty());
    }
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(ManagerForwarding, RefusesAnotherHandle)
{
    for (const Forwarding& forwarding : Forwardings()) {
        SCOPED_TRACE(forwarding.name);
        simulator::ClearLog();
        EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { forwarding.call(&m_other); }),
                  "Invalid Parameter exception");
        EXPECT_EQ(Messages(WARN), Texts({"no service"}));
        EXPECT_TRUE(Messages(ERROR).empty());
    }
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(ManagerForwarding, RefusesTheHandleOfAServiceThatIsGone)
{
    Manager().DestroyService(m_handle);
    TakeCalls();
    for (const Forwarding& forwarding : Forwardings()) {
        SCOPED_TRACE(forwarding.name);
        EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { forwarding.call(m_handle); }),
                  "Invalid Parameter exception");
    }
    EXPECT_EQ(CountLog(WARN, "no service"), static_cast<int>(Forwardings().size()));
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(ManagerForwarding, RefusesAnEmptyDeviceCallback)
{
    for (const lyn_service_h handle : {m_handle, static_cast<lyn_service_h>(&m_other)}) {
        simulator::ClearLog();
        EXPECT_EQ(ThrownBy<LynExceptionInvalidParam>([&] { Manager().StartScan(handle, nullptr); }),
                  "deviceFoundCb is NULL");
        EXPECT_EQ(Messages(ERROR), Texts({"deviceFoundCb is NULL"}));
        EXPECT_TRUE(Messages(WARN).empty()) << "the handle is looked up afterwards";
    }
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(ManagerForwarding, RefusesAnEmptyResultCallback)
{
    for (const lyn_service_h handle : {m_handle, static_cast<lyn_service_h>(&m_other)}) {
        simulator::ClearLog();
        EXPECT_EQ(
            ThrownBy<LynExceptionInvalidParam>([&] { Manager().RequestInitiating(handle, "id", "", nullptr); }),
            "requestIntiatingResultCb is NULL");
        EXPECT_EQ(Messages(ERROR), Texts({"requestIntiatingResultCb is NULL"}));
        EXPECT_TRUE(Messages(WARN).empty());
    }
    EXPECT_TRUE(TakeCalls().empty());
}

TEST_F(ManagerForwarding, RefusesANullHandleBeforeAnEmptyCallback)
{
    EXPECT_EQ(ThrownBy<LynExceptionInvalidHandle>([] { Manager().StartScan(nullptr, nullptr); }),
              "service is NULL");
    EXPECT_EQ(ThrownBy<LynExceptionInvalidHandle>([] { Manager().RequestInitiating(nullptr, "id", "", nullptr); }),
              "service is NULL");
}

TEST_F(ManagerForwarding, KeepsTheServiceToTheEndOfACallThatDestroysIt)
{
    for (const Forwarding& forwarding : Forwardings()) {
        SCOPED_TRACE(forwarding.name);
        if (script.living == nullptr) {
            m_handle = Manager().CreateService("any", nullptr);
        }
        TakeCalls();
        simulator::ClearLog();
        script.onOperation = [&] {
            Manager().DestroyService(m_handle);
            EXPECT_NE(script.living, nullptr) << "deleted in the middle of its operation";
            EXPECT_FALSE(HasLog(INFO, "In custom deleter of IService"));
        };
        forwarding.call(m_handle);
        EXPECT_EQ(TakeCalls(), Texts({forwarding.asked, "deinit", "delete"}));
        EXPECT_EQ(CountLog(INFO, "In custom deleter of IService"), 1);
        script.onOperation = nullptr;
    }
}

TEST_F(ManagerForwarding, CanBeEnteredAgainFromInsideTheService)
{
    script.nodlinkType = 3;
    int type = 0;
    script.onOperation = [&] {
        script.onOperation = nullptr;
        type = Manager().GetNodlinkType(m_handle);
    };
    Manager().StopScan(m_handle);
    EXPECT_EQ(type, 3);
    EXPECT_EQ(TakeCalls(), Texts({"stop scan", "nodlink type"}));
}

TEST_F(ManagerForwarding, CanBeEnteredAgainFromInsideTheBuilder)
{
    Manager().DestroyService(m_handle);
    script.onBuild = [] { EXPECT_THROW(Manager().StopScan(&Manager()), LynExceptionInvalidParam); };
    EXPECT_NE(Manager().CreateService("any", nullptr), nullptr);
}

}  // namespace
}  // namespace lyn::test
