// SPDX-License-Identifier: Apache-2.0
//
// What the functions return, or throw, for arguments of their own, and how a service comes and goes.
#include <stdexcept>

#include "reference/ReferenceTest.h"

namespace lyn::test {
namespace {

lyn_error_e Create(lyn_service_h* handle, const char* name)
{
    return Returned("lyn_create_service", lyn_create_service(handle, name, nullptr, nullptr));
}

lyn_error_e Advertise(lyn_service_h handle, int interval)
{
    return Returned("lyn_start_advertise", lyn_start_advertise(handle, static_cast<lyn_adv_interval_e>(interval)));
}

/// Notes a T that `work` throws.
template <typename T, typename Work>
bool Throws(const std::string& type, const std::string& function, const Work& work)
{
    try {
        work();
    } catch (const T&) {
        NoteThrown(type, function);
        return true;
    }
    return false;
}

class Creation : public ReferenceTest {
protected:
    lyn_service_h m_handle = nullptr;
};

TEST_F(Creation, AndDestructionSucceed)
{
    EXPECT_EQ(app.Create("dummy"), LYN_ERROR_NONE);
    EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
}

TEST_F(Creation, WithoutANameIsRefused)
{
    EXPECT_EQ(Create(&m_handle, nullptr), LYN_ERROR_INVALID_PARAMETER);
}

TEST_F(Creation, WithoutAPlaceForTheHandleIsRefused)
{
    EXPECT_EQ(Create(nullptr, "dummy"), LYN_ERROR_INVALID_PARAMETER);
}

TEST_F(Creation, IntoAHandleThatIsNotNullIsRefused)
{
    m_handle = &app;
    EXPECT_EQ(Create(&m_handle, "dummy"), LYN_ERROR_INVALID_PARAMETER);
}

TEST_F(Creation, OfAnUnknownServiceIsRefused)
{
    EXPECT_EQ(Create(&m_handle, "karaoke"), LYN_ERROR_INVALID_PARAMETER);
}

TEST_F(Creation, OfASecondServiceIsRefused)
{
    app.Create("dummy");
    EXPECT_EQ(Create(&m_handle, "dummy"), LYN_ERROR_ALREADY_DONE);
}

TEST_F(Creation, OfNodLinkFailsWhileBluetoothIsOff)
{
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    EXPECT_EQ(Create(&m_handle, "nodlink"), LYN_ERROR_INTERNAL);
}

TEST_F(Creation, OfNodLinkFailsInAPowerStateThatDoesNotServe)
{
    simulator::SetPowerState(3);
    EXPECT_EQ(Create(&m_handle, "nodlink"), LYN_ERROR_INTERNAL);
}

using Destruction = ReferenceTest;

TEST_F(Destruction, OfNullIsRefused)
{
    EXPECT_EQ(app.Destroy(), LYN_ERROR_INVALID_HANDLE);
}

TEST_F(Destruction, OfAHandleThatIsNotAliveIsRefused)
{
    int other = 0;
    app.handle = &other;
    EXPECT_EQ(app.Destroy(), LYN_ERROR_INVALID_HANDLE);
}

class Arguments : public ReferenceTest {
protected:
    Arguments() { app.Create("nodlink"); }
};

TEST_F(Arguments, OfARequestNameAPhone)
{
    EXPECT_EQ(Returned("lyn_request_initiating", lyn_request_initiating(app.handle, nullptr, nullptr, nullptr)),
              LYN_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Returned("lyn_request_initiating_with_extra_data",
                       lyn_request_initiating_with_extra_data(app.handle, nullptr, "", nullptr, nullptr)),
              LYN_ERROR_INVALID_PARAMETER);
}

TEST_F(Arguments, OfAnAdvertisementAreAnIntervalOfTheEnumeration)
{
    EXPECT_EQ(Advertise(app.handle, 5), LYN_ERROR_INVALID_PARAMETER);
    EXPECT_EQ(Advertise(app.handle, -1), LYN_ERROR_INVALID_PARAMETER);
}

TEST_F(Arguments, ThrowWhenTheExtraDataAreNull)
{
    EXPECT_TRUE(Throws<std::logic_error>("std::logic_error", "lyn_request_initiating_with_extra_data", [&] {
        lyn_request_initiating_with_extra_data(app.handle, kPhone, nullptr, nullptr, nullptr);
    }));
}

TEST_F(Arguments, ThrowWhenTheVersionIsNull)
{
    EXPECT_TRUE(Throws<std::logic_error>("std::logic_error", "lyn_set_nodlink_version",
                                         [&] { lyn_set_nodlink_version(app.handle, nullptr); }));
}

TEST_F(Arguments, ThrowTheVersionWhenItIsNotSupported)
{
    EXPECT_TRUE(Throws<const char*>("const char *", "lyn_set_nodlink_version",
                                    [&] { lyn_set_nodlink_version(app.handle, "4.0"); }));
}

}  // namespace
}  // namespace lyn::test
