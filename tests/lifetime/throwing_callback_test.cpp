// SPDX-License-Identifier: Apache-2.0
//
// Exceptions of the application's callbacks. From a callback that the main loop makes they go no further than
// the library; the service works on.
#include <ostream>
#include <stdexcept>
#include <tuple>

#include "lifetime/Lives.h"

namespace lyn::test {
namespace {

constexpr const char* kText = "the application's own trouble";

[[noreturn]] void ThrowStandard()
{
    throw std::runtime_error(kText);
}

[[noreturn]] void ThrowOther()
{
    throw 42;  // NOLINT(hicpp-exception-baseclass)
}

struct Throw {
    const char* name;
    void (*now)();
    const char* dropped;  ///< how the outermost frame logs it

    friend void PrintTo(const Throw& what, std::ostream* out) { *out << what.name; }
};

const std::vector<Throw>& Throws()
{
    static const std::vector<Throw> throws = {
        {"StandardException", ThrowStandard, "exception dropped : the application's own trouble"},
        {"AnyObject", ThrowOther, "exception dropped : not a standard exception"},
    };
    return throws;
}

using Case = std::tuple<std::string, Throw>;

std::string CaseName(const ::testing::TestParamInfo<Case>& info)
{
    return std::get<0>(info.param) + std::get<1>(info.param).name;
}

class AThrowingCallback : public Lives, public ::testing::WithParamInterface<Case> {
protected:
    AThrowingCallback() { simulator::AddPhone(PhoneFor(Service())); }

    static const std::string& Service() { return std::get<0>(GetParam()); }
    static const Throw& What() { return std::get<1>(GetParam()); }
    static bool IsStandard() { return What().now == ThrowStandard; }

    static void ExpectToServe(App& app)
    {
        app.onState = nullptr;
        app.onPhone = nullptr;
        app.onResult = nullptr;
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        EXPECT_TRUE(app.WaitForResult());
        EXPECT_EQ(app.states.back(), LYN_STATE_READY);
    }
};

TEST_P(AThrowingCallback, ForAResultIsLoggedAndDropped)
{
    App& app = Begin(Service());
    app.onResult = [](lyn_request_initiating_result_e) { What().now(); };
    for (int round = 1; round <= 20; ++round) {
        ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        ASSERT_TRUE(app.WaitForResult());
        ASSERT_EQ(CountLog(ERROR, What().dropped), round);
    }
    ExpectToServe(app);
    ExpectNothingLeft();
}

TEST_P(AThrowingCallback, ForTheStateAtTheEndOfARequestIsLoggedAndKeepsTheResultBack)
{
    App& app = Begin(Service());
    bool thrown = false;
    app.onState = [&](lyn_state_e) {
        if (app.states.size() == 3) {
            thrown = true;
            What().now();
        }
    };
    EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([&] { return thrown; }));
    simulator::Settle();
    EXPECT_THAT(app.results, ::testing::IsEmpty());
    EXPECT_EQ(CountLog(ERROR, IsStandard() ? std::string("exception : ") + kText : What().dropped), 1);
    ExpectToServe(app);
    ExpectNothingLeft();
}

TEST_P(AThrowingCallback, ForTheStateDuringACallLeavesThatCallAndTheServiceWorksOn)
{
    App& app = Begin(Service());
    app.onState = [](lyn_state_e) { What().now(); };
    if (IsStandard()) {
        EXPECT_THROW(app.StartScan(), std::runtime_error);
        EXPECT_THROW(app.StopScan(), std::runtime_error);
    } else {
        EXPECT_THROW(app.StartScan(), int);
        EXPECT_THROW(app.StopScan(), int);
    }
    EXPECT_EQ(app.states.front(), LYN_STATE_SCANNING);
    EXPECT_EQ(app.states.back(), LYN_STATE_READY);
    ExpectToServe(app);
    ExpectNothingLeft();
}

TEST_P(AThrowingCallback, ForTheBeginOfARequestLeavesTheCallAndTheResultStillComes)
{
    App& app = Begin(Service());
    app.onState = [&](lyn_state_e state) {
        if (state == LYN_STATE_REQUESTING) {
            What().now();
        }
    };
    if (IsStandard()) {
        EXPECT_THROW(app.Request(kPhone), std::runtime_error);
    } else {
        EXPECT_THROW(app.Request(kPhone), int);
    }
    EXPECT_TRUE(app.WaitForResult());
    ExpectToServe(app);
    ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Each, AThrowingCallback,
                         ::testing::Combine(::testing::ValuesIn(AllServices()), ::testing::ValuesIn(Throws())),
                         CaseName);

class AThrowingDeviceCallback : public AThrowingCallback {};

TEST_P(AThrowingDeviceCallback, OfTheMainLoopIsLoggedAndTheScanGoesOn)
{
    App& app = Begin(Service());
    app.onPhone = [](const FoundPhone&) { What().now(); };
    EXPECT_EQ(app.StartScan(), LYN_ERROR_NONE);
    EXPECT_TRUE(simulator::RunUntil([&] { return app.phones.size() >= 5; }));
    EXPECT_GE(CountLog(ERROR, IsStandard() ? std::string("exception ") + kText : What().dropped), 5);
    EXPECT_EQ(app.StopScan(), LYN_ERROR_NONE);
    ExpectToServe(app);
    ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Each, AThrowingDeviceCallback,
                         ::testing::Combine(::testing::ValuesIn(RadioServices()), ::testing::ValuesIn(Throws())),
                         CaseName);

class AThrowingReportOfTheDevice : public AThrowingCallback {};

TEST_P(AThrowingReportOfTheDevice, IsLoggedAndDropped)
{
    App& app = Begin("nodlink");
    app.onState = [](lyn_state_e) { What().now(); };
    const std::vector<std::function<void()>> reports = {
        [] { simulator::AmbientPowerOff(); }, [] { simulator::SetAdapterState(BT_ADAPTER_ENABLED); },
        [] { simulator::PowerOff(0x40000000); }, [] { simulator::SetAdapterState(BT_ADAPTER_ENABLED); }};
    int count = 0;
    for (const auto& report : reports) {
        report();
        simulator::Settle();
        EXPECT_EQ(CountLog(ERROR, What().dropped), ++count);
    }
    EXPECT_EQ(app.states.size(), reports.size());
    ExpectToServe(app);
    ExpectNothingLeft();
}

INSTANTIATE_TEST_SUITE_P(Each, AThrowingReportOfTheDevice,
                         ::testing::Combine(::testing::Values(std::string("nodlink")),
                                            ::testing::ValuesIn(Throws())),
                         CaseName);

}  // namespace
}  // namespace lyn::test
