// SPDX-License-Identifier: Apache-2.0
//
// What each function with a handle returns in each situation.
#include <vector>

#include "reference/ReferenceTest.h"

namespace lyn::test {
namespace {

struct Function {
    std::string name;
    lyn_error_e (*call)(App& app);
};

const std::vector<Function> kFunctions = {
    {"StartScan", [](App& app) { return app.StartScan(); }},
    {"StartScanWithSerialization", [](App& app) { return app.StartScanWithSerialization(); }},
    {"StopScan", [](App& app) { return app.StopScan(); }},
    {"RequestInitiating", [](App& app) { return app.Request(kPhone); }},
    {"RequestInitiatingWithExtraData", [](App& app) { return app.Request(kPhone, "{}"); }},
    {"StartAdvertise",
     [](App& app) {
         return Returned("lyn_start_advertise", lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_50));
     }},
    {"StopAdvertise", [](App& app) { return Returned("lyn_stop_advertise", lyn_stop_advertise(app.handle)); }},
    {"SetNodlinkVersion",
     [](App& app) { return Returned("lyn_set_nodlink_version", lyn_set_nodlink_version(app.handle, "3.0")); }},
    {"GetNodlinkType",
     [](App& app) {
         nod_link_type type = 0;
         return Returned("lyn_get_nodlink_type", lyn_get_nodlink_type(app.handle, &type));
     }},
};

void BeWithoutBluetooth(App& app)
{
    simulator::FailCall("bt_product_init", -1);
    app.Create("mirroring");
}

void Scan(App& app)
{
    app.Create("nodlink");
    app.StartScan();
}

void Ask(App& app)
{
    app.Create("nodlink");
    app.Request(kPhone);
}

void TurnBluetoothOff(App& app)
{
    app.Create("nodlink");
    simulator::SetAdapterState(BT_ADAPTER_DISABLED);
    simulator::Settle();
}

void RefuseEverything(App& app)
{
    app.Create("mirroring");
    lyn_start_advertise(app.handle, LYN_ADV_INTERVAL_50);
    for (const char* call :
         {"bt_adapter_le_start_scan", "bt_adapter_le_stop_scan", "bt_gatt_connect", "vconf_set_int"}) {
        simulator::FailCall(call, -1, 0);
    }
}

int s_noService = 0;
constexpr int kOther = -1;  // Not a matter of the situation.

struct Situation {
    std::string name;
    void (*arrange)(App& app);
    /// In the order of kFunctions.
    std::vector<int> codes;
};

const std::vector<Situation> kSituations = {
    {"OfNodLink", [](App& app) { app.Create("nodlink"); }, {0, 0, 0, 0, 0, 0, 0, 0, 0}},
    {"OfMirroring", [](App& app) { app.Create("mirroring"); }, {0, 0, 0, 0, 0, 0, 0, 8, 8}},
    {"OfAServiceThatHasNoBluetooth", BeWithoutBluetooth, {2, 2, 2, 2, 2, 2, 2, 2, 2}},
    {"WhileScanning", Scan, {3, 3, 0, 0, 0, 0, 0, 0, 0}},
    {"WhileRequesting", Ask, {3, 3, 0, 3, 3, 3, 3, 0, 0}},
    {"WhileNotReady", TurnBluetoothOff, {3, 3, 0, 3, 3, 3, 3, 0, 0}},
    {"OfNull", [](App&) {}, {4, 4, 4, 4, 4, 4, 4, 4, 4}},
    {"OfAHandleThatIsNotAlive", [](App& app) { app.handle = &s_noService; }, {5, 5, 5, 5, 5, 5, 5, 5, 5}},
    {"ThatThePlatformRefuses", RefuseEverything, {6, 6, 6, 6, 6, 6, 6, kOther, kOther}},
};

struct Case {
    std::string name;
    lyn_error_e (*call)(App& app);
    void (*arrange)(App& app);
    int code;
};

std::vector<Case> Cases()
{
    std::vector<Case> cases;
    for (const Situation& situation : kSituations) {
        for (std::size_t i = 0; i < kFunctions.size(); ++i) {
            if (situation.codes.at(i) != kOther) {
                cases.push_back({kFunctions[i].name + situation.name, kFunctions[i].call, situation.arrange,
                                 situation.codes[i]});
            }
        }
    }
    return cases;
}

class ReturnValue : public ReferenceTest, public ::testing::WithParamInterface<Case> {};

TEST_P(ReturnValue, Of)
{
    AddPhone("mirroring", {});
    GetParam().arrange(app);
    EXPECT_EQ(GetParam().call(app), GetParam().code);
    if (app.handle == &s_noService) {
        app.handle = nullptr;
    }
}

INSTANTIATE_TEST_SUITE_P(Reference, ReturnValue, ::testing::ValuesIn(Cases()),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace lyn::test
