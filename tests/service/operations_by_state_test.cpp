// SPDX-License-Identifier: Apache-2.0
//
// Every operation of the C interface in every state of every service: what it returns, and which states
// are reported.
#include <ostream>
#include <tuple>

#include "service/AppTest.h"

namespace lyn::test {
namespace {

struct Outcome {
    lyn_error_e error = LYN_ERROR_INVALID_STATE;
    States states;
};

struct Operation {
    const char* name;
    lyn_error_e (*call)(App& app);
    /// By state.
    Outcome outcomes[4];

    friend void PrintTo(const Operation& operation, std::ostream* out) { *out << operation.name; }
};

const Outcome kRefused = {};
const Outcome kAccepted = {LYN_ERROR_NONE, {}};
const Outcome kToReady = {LYN_ERROR_NONE, {LYN_STATE_READY}};
const Outcome kToScanning = {LYN_ERROR_NONE, {LYN_STATE_SCANNING}};
const Outcome kToRequesting = {LYN_ERROR_NONE, {LYN_STATE_READY, LYN_STATE_REQUESTING}};

const Operation kOperations[] = {
    {"StartScan", [](App& app) { return app.StartScan(); }, {kToScanning, kRefused, kRefused, kRefused}},
    {"StartScanWithSerialization",
     [](App& app) { return app.StartScanWithSerialization(); },
     {kToScanning, kRefused, kRefused, kRefused}},
    {"StopScan", [](App& app) { return app.StopScan(); }, {kToReady, kToReady, kAccepted, kToReady}},
    {"Request", [](App& app) { return app.Request(kPhone); }, {kToRequesting, kToRequesting, kRefused, kRefused}},
    {"RequestWithExtraData",
     [](App& app) { return app.Request(kPhone, "{}"); },
     {kToRequesting, kToRequesting, kRefused, kRefused}},
    {"StartAdvertise",
     [](App& app) { return lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_50); },
     {kAccepted, kAccepted, kRefused, kRefused}},
    {"StopAdvertise",
     [](App& app) { return lyn_stop_advertise(app.handle); },
     {kAccepted, kAccepted, kRefused, kRefused}},
};

using Case = std::tuple<std::string, Operation>;

class EachOperation : public AppTest, public ::testing::WithParamInterface<Case> {
protected:
    static const std::string& Service() { return std::get<0>(GetParam()); }
    static const Operation& TheOperation() { return std::get<1>(GetParam()); }

    // A service in this state, with nothing reported yet.
    void BeginIn(lyn_state_e state)
    {
        simulator::AddPhone(PhoneFor(Service(), ""));
        Begin(Service());
        if (state == LYN_STATE_SCANNING) {
            ASSERT_EQ(app.StartScan(), LYN_ERROR_NONE);
        } else if (state == LYN_STATE_REQUESTING) {
            ASSERT_EQ(app.Request(kPhone), LYN_ERROR_NONE);
        } else if (state == LYN_STATE_NOT_READY) {
            simulator::AmbientPowerOff();
            simulator::Settle();
        }
        ASSERT_EQ(app.states.empty() ? LYN_STATE_READY : app.states.back(), state);
        Forget();
    }

    void ExpectOutcomeIn(lyn_state_e state)
    {
        BeginIn(state);
        Outcome outcome = TheOperation().outcomes[state];
        const bool stopsAScan = state == LYN_STATE_SCANNING && !outcome.states.empty();
        if (Service() == "dummy" && stopsAScan) {
            outcome.states.insert(outcome.states.begin(), LYN_STATE_READY);
        }
        EXPECT_EQ(TheOperation().call(app), outcome.error);
        EXPECT_EQ(app.states, outcome.states);
        EXPECT_EQ(CountLog(ERROR, "exception: Invalid State"), outcome.error != LYN_ERROR_NONE ? 1 : 0);
        EXPECT_TRUE(app.results.empty());
    }
};

TEST_P(EachOperation, IsAcceptedOrRefusedWhileReady)
{
    ExpectOutcomeIn(LYN_STATE_READY);
}

TEST_P(EachOperation, IsAcceptedOrRefusedWhileScanning)
{
    ExpectOutcomeIn(LYN_STATE_SCANNING);
}

TEST_P(EachOperation, IsAcceptedOrRefusedWhileRequesting)
{
    ExpectOutcomeIn(LYN_STATE_REQUESTING);
}

TEST_P(EachOperation, IsAcceptedOrRefusedWhileNotReady)
{
    if (Service() == "nodlink") {  // The others never are.
        ExpectOutcomeIn(LYN_STATE_NOT_READY);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, EachOperation,
                         ::testing::Combine(::testing::Values("dummy", "mirroring", "nodlink", "kov"),
                                            ::testing::ValuesIn(kOperations)),
                         [](const auto& test) { return std::get<0>(test.param) + std::get<1>(test.param).name; });

}  // namespace
}  // namespace lyn::test
