// SPDX-License-Identifier: Apache-2.0
//
// What an application may do inside the state callback of its service: everything that makes no transition. A
// start, a stop or a request that would make one is refused at once, with one line that says what to do instead.
#include <glib.h>

#include <functional>
#include <utility>

#include "service/AppTest.h"

namespace lyn::test {
namespace {

constexpr const char* kRefusal = "exception: Invalid State: the state callback has not returned, use g_idle_add()";

class InStateCallback : public AppTest, public ::testing::WithParamInterface<std::string> {
protected:
    InStateCallback()
    {
        simulator::AddPhone(PhoneFor(GetParam(), "Success"));
        Begin(GetParam());
    }

    /// Runs the work once, inside the next report of this state; what was before is forgotten.
    void At(lyn_state_e state, std::function<void()> work)
    {
        due = std::move(work);
        app.onState = [this, state](lyn_state_e reported) {
            if (due && reported == state) {
                Forget();
                std::exchange(due, nullptr)();
                ++worked;
            }
        };
    }

    /// Brings the service to a report of each state that it has, with the work inside.
    void AtReady(const std::function<void()>& work)
    {
        At(LYN_STATE_READY, work);
        EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    }
    void AtScanning(const std::function<void()>& work)
    {
        At(LYN_STATE_SCANNING, work);
        EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    }
    void AtRequesting(const std::function<void()>& work)
    {
        At(LYN_STATE_REQUESTING, work);
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    }

    void ExpectRefused(lyn_error_e error)
    {
        EXPECT_EQ(error, LYN_ERROR_INVALID_STATE);
        EXPECT_EQ(Messages(ERROR), Texts({kRefusal}));
        EXPECT_TRUE(simulator::JournalText().empty());
        EXPECT_TRUE(app.states.empty());
        simulator::ClearLog();
    }

    void ExpectStartAndRequestRefused()
    {
        ExpectRefused(app.StartScan());
        ExpectRefused(app.StartScanWithSerialization());
        ExpectRefused(app.Request(kPhone));
        ExpectRefused(app.Request(kPhone, "{}"));
    }

    std::function<void()> due;
    int worked = 0;
};

TEST_P(InStateCallback, RefusesAStartAStopAndARequestAtReady)
{
    AtReady([&] {
        ExpectStartAndRequestRefused();
        ExpectRefused(app.StopScan());
    });
    EXPECT_EQ(worked, 1);
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE) << "and is over with the callback";
}

TEST_P(InStateCallback, RefusesAStartAStopAndARequestAtScanning)
{
    AtScanning([&] {
        ExpectStartAndRequestRefused();
        ExpectRefused(app.StopScan());
    });
    EXPECT_EQ(worked, 1);
    EXPECT_TRUE(simulator::Alive().scanning);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
}

TEST_P(InStateCallback, RefusesAStartAndARequestAtRequestingButNotAStop)
{
    AtRequesting([&] {
        ExpectStartAndRequestRefused();
        EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
        EXPECT_TRUE(app.states.empty());
        EXPECT_EQ(CountCalls("bt_adapter_le_stop_scan"), 1);
        EXPECT_TRUE(Messages(ERROR).empty());
    });
    EXPECT_EQ(worked, 1);
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(app.results, Results({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
}

TEST_P(InStateCallback, RefusesTheNextRequestAtTheReadyOfAResultAndDeliversThatResult)
{
    ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    At(LYN_STATE_READY, [&] { ExpectStartAndRequestRefused(); });
    ASSERT_TRUE(app.WaitForResult());
    EXPECT_EQ(worked, 1);
    EXPECT_EQ(app.events, Texts({"result 0"}));
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    ASSERT_TRUE(app.WaitForResult());
}

TEST_P(InStateCallback, StartsAndStopsAnAdvertisement)
{
    const auto advertise = [&] {
        EXPECT_EQ(lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_50), LYN_ERROR_NONE);
        EXPECT_EQ(lyn_stop_advertise(app.handle), LYN_ERROR_NONE);
        EXPECT_TRUE(Messages(ERROR).empty());
    };
    AtReady(advertise);
    AtScanning(advertise);
    EXPECT_EQ(worked, 2);
}

TEST_P(InStateCallback, RefusesAnAdvertisementAtRequestingAsEverInThatState)
{
    AtRequesting([&] {
        EXPECT_EQ(lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_50), LYN_ERROR_INVALID_STATE);
        EXPECT_EQ(Messages(ERROR), Texts({"Invalid State", "exception: Invalid State"}));
    });
    EXPECT_EQ(worked, 1);
    ASSERT_TRUE(app.WaitForResult());
}

TEST_P(InStateCallback, GivesTheTextOfAResult)
{
    AtReady([&] {
        EXPECT_STREQ(lyn_get_request_initiating_error_string(app.handle, LYN_REQUEST_INITIATING_RESULT_NOT_TAP),
                     "NotTap");
    });
    EXPECT_EQ(worked, 1);
}

TEST_P(InStateCallback, TakesAVersionAndGivesAType)
{
    const lyn_error_e expected = GetParam() == "nodlink" ? LYN_ERROR_NONE : LYN_ERROR_NOT_SUPPORTED;
    AtReady([&] {
        nod_link_type type = 42;
        EXPECT_EQ(lyn_set_nodlink_version(app.handle, "3.0"), expected);
        EXPECT_EQ(lyn_get_nodlink_type(app.handle, &type), expected);
    });
    EXPECT_EQ(worked, 1);
}

TEST_P(InStateCallback, DestroysTheServiceAndCreatesAnother)
{
    AtScanning([&] {
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
        EXPECT_EQ(app.Create(GetParam()), LYN_ERROR_NONE);
        EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE) << "the new one reports nothing yet";
    });
    EXPECT_EQ(worked, 1);
    EXPECT_EQ(app.states, States({LYN_STATE_READY}));
    EXPECT_EQ(app.lateReports, 0);
}

TEST_P(InStateCallback, LeavesTheReceiversOfReportsAloneWhenItRefuses)
{
    Texts heard;
    const auto keep = [](const lyn_device_info_t* info, void* userData) {
        static_cast<Texts*>(userData)->push_back(info->address);
    };
    AtScanning([&] { EXPECT_EQ(lyn_start_scan(app.handle, keep, &heard), LYN_ERROR_INVALID_STATE); });
    EXPECT_EQ(worked, 1);
    ASSERT_TRUE(simulator::RunUntil([&] { return !app.phones.empty(); }));
    EXPECT_TRUE(heard.empty());
}

TEST_P(InStateCallback, LooksAtArgumentsFirst)
{
    AtReady([&] {
        EXPECT_EQ(lyn_request_initiating(app.handle, nullptr, nullptr, nullptr), LYN_ERROR_INVALID_PARAMETER);
        EXPECT_EQ(lyn_stop_scan(nullptr), LYN_ERROR_INVALID_HANDLE);
        EXPECT_EQ(lyn_stop_scan(&worked), LYN_ERROR_INVALID_PARAMETER);
        EXPECT_FALSE(HasLog(ERROR, kRefusal));
    });
    EXPECT_EQ(worked, 1);
}

TEST_P(InStateCallback, CanLeaveItsNextStepToTheMainLoop)
{
    ASSERT_EQ(app.StartScan(), LYN_ERROR_NONE);
    AtReady([&] {
        const auto start = [](gpointer self) {
            EXPECT_EQ(static_cast<App*>(self)->StartScan(), LYN_ERROR_NONE);
            return static_cast<gboolean>(G_SOURCE_REMOVE);
        };
        g_idle_add(start, &app);
    });
    EXPECT_TRUE(simulator::RunUntil([&] { return app.states == States({LYN_STATE_SCANNING}); }));
}

INSTANTIATE_TEST_SUITE_P(Of, InStateCallback, ::testing::Values("mirroring", "nodlink", "kov"),
                         [](const auto& test) { return test.param; });

class InDeviceStateCallback : public AppTest {};

TEST_F(InDeviceStateCallback, RefusesEveryTransitionAtNotReadyAndAtTheReadyThatFollows)
{
    Begin("nodlink");
    for (const bt_adapter_state_e state : {BT_ADAPTER_DISABLED, BT_ADAPTER_ENABLED}) {
        int worked = 0;
        app.onState = [&](lyn_state_e) {
            ++worked;
            simulator::ClearLog();
            EXPECT_EQ(app.StartScan(), LYN_ERROR_INVALID_STATE);
            EXPECT_EQ(app.StopScan(), LYN_ERROR_INVALID_STATE);
            EXPECT_EQ(app.Request(kPhone), LYN_ERROR_INVALID_STATE);
            EXPECT_EQ(Messages(ERROR), Texts(3, kRefusal));
        };
        SetBluetooth(state);
        EXPECT_EQ(worked, 1);
    }
    app.onState = nullptr;
    EXPECT_EQ(app.states, States({LYN_STATE_NOT_READY, LYN_STATE_READY}));
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
}

}  // namespace
}  // namespace lyn::test
