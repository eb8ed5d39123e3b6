// SPDX-License-Identifier: Apache-2.0
//
// What an application may do from inside its state callback: destroy the service that reports, and begin
// another one. Every moment at which a state is reported is tried with each of them.
#include <ostream>
#include <tuple>

#include "lifetime/Lives.h"

namespace lyn::test {
namespace {

constexpr std::uint32_t kSuspend = 0x40000000;

/// A report of a state: which one of an application's life it is, and how it comes.
struct Moment {
    const char* name;
    std::size_t report;
    void (*bring)(App& app);

    friend void PrintTo(const Moment& moment, std::ostream* out) { *out << moment.name; }
};

void RunUntilReported(const App& app, std::size_t report)
{
    EXPECT_TRUE(simulator::RunUntil([&] { return app.states.size() >= report; }));
}

void Ask(App& app)
{
    app.Request(kPhone);  // Its outcome depends on what the callback does.
}

const std::vector<Moment>& MomentsOfEach()
{
    static const std::vector<Moment> moments = {
        {"ScanStarted", 1, [](App& app) { app.StartScan(); }},
        {"ScanStopped", 2,
         [](App& app) {
             app.StartScan();
             app.StopScan();
         }},
        {"ScanStoppedForARequest", 1, Ask},
        {"RequestBegun", 2, Ask},
        {"RequestEnded", 3,
         [](App& app) {
             Ask(app);
             RunUntilReported(app, 3);
         }},
    };
    return moments;
}

const std::vector<Moment>& MomentsOfNodLink()
{
    static const std::vector<Moment> moments = {
        {"BluetoothOff", 1,
         [](App& app) {
             simulator::SetAdapterState(BT_ADAPTER_DISABLED);
             RunUntilReported(app, 1);
         }},
        {"BluetoothOn", 2,
         [](App& app) {
             simulator::SetAdapterState(BT_ADAPTER_DISABLED);
             RunUntilReported(app, 1);
             simulator::SetAdapterState(BT_ADAPTER_ENABLED);
             RunUntilReported(app, 2);
         }},
        {"PowerOff", 1,
         [](App& app) {
             simulator::PowerOff(kSuspend);
             RunUntilReported(app, 1);
         }},
        {"AmbientPowerOff", 1,
         [](App& app) {
             simulator::AmbientPowerOff();
             RunUntilReported(app, 1);
         }},
    };
    return moments;
}

using Case = std::tuple<std::string, Moment>;

std::string CaseName(const ::testing::TestParamInfo<Case>& info)
{
    return std::get<0>(info.param) + std::get<1>(info.param).name;
}

class InsideTheStateCallback : public Lives, public ::testing::WithParamInterface<Case> {
protected:
    InsideTheStateCallback() { simulator::AddPhone(PhoneFor(Service())); }

    static const std::string& Service() { return std::get<0>(GetParam()); }
    static const Moment& At() { return std::get<1>(GetParam()); }

    /// A life up to the moment, at which `act` is called.
    void LiveUpToTheMoment(const std::function<void(App&)>& act)
    {
        App& app = Begin(Service());
        bool acted = false;
        app.onState = [&app, &act, &acted](lyn_state_e) {
            if (app.states.size() == At().report) {
                acted = true;
                act(app);
            }
        };
        At().bring(app);
        EXPECT_TRUE(acted);
        EXPECT_EQ(app.states.size(), At().report);
        EXPECT_TRUE(app.results.empty());
        app.onState = nullptr;
    }

    /// The last service requests and gets its one result.
    void ExpectToServe()
    {
        simulator::SetAdapterState(BT_ADAPTER_ENABLED, false);
        App& app = Last().handle != nullptr ? Last() : Begin(Service());
        EXPECT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        EXPECT_TRUE(simulator::RunUntil([&] { return !app.results.empty(); }));
        ExpectNothingLeft();
        EXPECT_EQ(app.results, std::vector({LYN_REQUEST_INITIATING_RESULT_SUCCESS}));
    }

    static constexpr int kTimes = 50;
};

TEST_P(InsideTheStateCallback, DestroyingEndsTheReports)
{
    for (int time = 0; time < kTimes; ++time) {
        LiveUpToTheMoment([](App& app) { EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE); });
        simulator::Settle();
        ASSERT_EQ(simulator::Alive().productInits, 0) << time;
        ASSERT_EQ(Results(), 0U) << time;
        simulator::SetAdapterState(BT_ADAPTER_ENABLED, false);
    }
    ExpectToServe();
}

TEST_P(InsideTheStateCallback, ASuccessorCreatedThereServes)
{
    LiveUpToTheMoment([&](App& app) {
        simulator::SetAdapterState(BT_ADAPTER_ENABLED, false);
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
        Begin(Service());
    });
    ASSERT_NE(Last().handle, nullptr);
    ExpectToServe();
}

TEST_P(InsideTheStateCallback, ASuccessorThatIsAskedToRequestThereHasItsOwnResult)
{
    for (int time = 0; time < kTimes; ++time) {
        LiveUpToTheMoment([&](App& app) {
            simulator::SetAdapterState(BT_ADAPTER_ENABLED, false);
            EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
            EXPECT_EQ(Begin(Service()).Request(kPhone), LYN_ERROR_NONE);
        });
        App& successor = Last();
        ASSERT_TRUE(simulator::RunUntil([&] { return !successor.results.empty(); })) << time;
        ASSERT_EQ(successor.states.back(), LYN_STATE_READY);
        ExpectNothingLeft();
        ASSERT_EQ(successor.results, std::vector({LYN_REQUEST_INITIATING_RESULT_SUCCESS})) << time;
    }
}

TEST_P(InsideTheStateCallback, ASuccessorThatScansThereFindsItsPhone)
{
    LiveUpToTheMoment([&](App& app) {
        simulator::SetAdapterState(BT_ADAPTER_ENABLED, false);
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
        EXPECT_EQ(Begin(Service()).StartScan(), LYN_ERROR_NONE);
    });
    App& successor = Last();
    EXPECT_TRUE(simulator::RunUntil([&] { return !successor.phones.empty(); }));
    EXPECT_EQ(successor.states, std::vector({LYN_STATE_SCANNING}));
    EXPECT_EQ(successor.StopScan(), LYN_ERROR_NONE);
    ExpectToServe();
}

INSTANTIATE_TEST_SUITE_P(Each, InsideTheStateCallback,
                         ::testing::Combine(::testing::ValuesIn(AllServices()),
                                            ::testing::ValuesIn(MomentsOfEach())),
                         CaseName);
INSTANTIATE_TEST_SUITE_P(Device, InsideTheStateCallback,
                         ::testing::Combine(::testing::Values(std::string("nodlink")),
                                            ::testing::ValuesIn(MomentsOfNodLink())),
                         CaseName);

using InsideTheBluetoothOffReport = Lives;

TEST_F(InsideTheBluetoothOffReport, NoSuccessorOfNodLinkCanBeCreatedAndNothingIsLeftOfTheAttempt)
{
    App& app = Begin("nodlink");
    lyn_error_e error = LYN_ERROR_NONE;
    app.onState = [&](lyn_state_e) {
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
        error = app.Create("nodlink");
    };
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    EXPECT_TRUE(simulator::RunUntil([&] { return !app.states.empty(); }));
    EXPECT_EQ(error, LYN_ERROR_INTERNAL);
    EXPECT_EQ(app.handle, nullptr);
    ExpectNothingLeft();

    simulator::SetAdapterState(BT_ADAPTER_ENABLED);
    simulator::Settle();
    EXPECT_EQ(app.states, std::vector({LYN_STATE_NOT_READY}));
    EXPECT_EQ(Begin("nodlink").StopScan(), LYN_ERROR_NONE);
    ExpectNothingLeft();
}

TEST_F(InsideTheBluetoothOffReport, AnotherServiceIsRefusedToConnectAndScansWhenBluetoothIsBack)
{
    simulator::AddPhone(PhoneFor("mirroring"));
    App& app = Begin("nodlink");
    app.onState = [&](lyn_state_e) {
        EXPECT_EQ(app.Destroy(), LYN_ERROR_NONE);
        EXPECT_EQ(Begin("mirroring").Request(kPhone), LYN_ERROR_OPERATION_FAILED);
    };
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    EXPECT_TRUE(simulator::RunUntil([&] { return app.handle == nullptr; }));
    App& mirroring = Last();
    simulator::SetAdapterState(BT_ADAPTER_ENABLED);
    simulator::Settle();
    EXPECT_EQ(mirroring.states, std::vector({LYN_STATE_READY}));
    EXPECT_EQ(mirroring.Request(kPhone), LYN_ERROR_NONE);
    EXPECT_TRUE(mirroring.WaitForResult());
    ExpectNothingLeft();
}

}  // namespace
}  // namespace lyn::test
