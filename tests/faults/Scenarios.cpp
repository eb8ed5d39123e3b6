// SPDX-License-Identifier: Apache-2.0
#include "faults/Scenarios.h"

#include "faults/ScenarioList.h"
#include "lifetime/Phones.h"

namespace lyn::test {
namespace {

void AskFoundPhone(Application& app)
{
    app.Create();
    app.Advertise();
    app.Scan();
    app.Phone();
    app.Request();
    app.Result();
    app.StopScan();
    app.End();
}

void AddOperations(ScenarioList& list)
{
    list.Add("create", [](Application& app) {
        app.Create();
        app.End();
    });
    list.Add("advertise", [](Application& app) {
        app.Create();
        app.Advertise();
        app.EndAdvertise();
        app.StopScan();
        app.End();
    });
    list.Add("scan", [](Application& app) {
        app.Create();
        app.Scan();
        app.Phone();
        app.StopScan();
        app.End();
    });
    list.Add("scan for JSON", [](Application& app) {
        app.Create();
        app.ScanForJson();
        app.Phone();
        app.StopScan();
        app.End();
    });
    list.Add("name of a result", [](Application& app) {
        app.Create();
        app.AskName();
        app.End();
    });
    list.Add("request", Ask).result = "READY result 0";
    list.Add("request a found phone", AskFoundPhone).result = "READY result 0";
}

void AddDestructionsInAScan(ScenarioList& list)
{
    const unsigned left = list.Service() == "dummy" ? kNothing : kScan | kBoost;
    list.Add("destroy while scanning",
             [](Application& app) {
                 app.Create();
                 app.Scan();
                 app.Phone();
                 app.End();
             })
        .leaves = left;
    list.Add("destroy inside a found phone",
             [](Application& app) {
                 app.DestroyInside("phone");
                 app.Create();
                 app.Scan();
                 app.Phone();
                 app.End();
             })
        .leaves = left;
    list.Add("destroy inside the READY of a stop", [](Application& app) {
        app.Create();
        app.Scan();
        app.DestroyInside("READY");
        app.StopScan();
        app.End();
    });
}

void AddDestructionsInARequest(ScenarioList& list)
{
    const unsigned left = list.Service() == "dummy" ? kNothing : kLink | kBoost;
    list.Add("destroy inside the READY of a request",
             [](Application& app) {
                 app.DestroyInside("READY");
                 app.Create();
                 app.Request();
                 app.End();
             })
        .leaves = left;
    list.Add("destroy inside REQUESTING",
             [](Application& app) {
                 app.DestroyInside("REQUESTING");
                 app.Create();
                 app.Request();
                 app.Result();
                 app.End();
             })
        .leaves = left;
    list.Add("destroy after asking",
             [](Application& app) {
                 app.Create();
                 app.Request();
                 app.End();
             })
        .leaves = left;
    list.Add("destroy when connected",
             [](Application& app) {
                 app.Create();
                 app.Request();
                 app.UntilConnected();
                 app.End();
             })
        .leaves = left;
    list.Add("destroy when written",
             [](Application& app) {
                 app.Create();
                 app.Request();
                 app.UntilWritten();
                 app.End();
             })
        .leaves = left;
    list.Add("destroy inside the result",
             [](Application& app) {
                 app.DestroyInside("result");
                 app.Create();
                 app.Request();
                 app.Result();
                 app.End();
             })
        .result = "READY result 0";
}

}  // namespace

simulator::Phone QuietPhone(const std::string& service)
{
    simulator::Phone phone = PhoneFor(service);
    phone.limit = 1;
    return phone;
}

SetUp RoomWith(const simulator::Phone& phone)
{
    return [phone] { simulator::AddPhone(phone); };
}

void Ask(Application& app)
{
    app.Create();
    app.Request();
    app.Result();
    app.StopScan();
    app.End();
}

std::vector<Scenario> AllScenarios()
{
    std::vector<Scenario> all;
    for (const std::string& service : AllServices()) {
        ScenarioList list(service);
        AddOperations(list);
        if (service != "dummy") {
            AddRequests(list);
        }
        if (service == "nodlink") {
            AddNodLink(list);
        }
        AddDestructionsInAScan(list);
        AddDestructionsInARequest(list);
        all.insert(all.end(), list.All().begin(), list.All().end());
    }
    return all;
}

Scenario PlainScenario(const std::string& service)
{
    const SetUp room = RoomWith(QuietPhone(service));
    const SetUp setUp = [room] {
        room();
        simulator::SetSetting(kListenChannel, 0);
    };
    return {service, "plain", setUp, [](Application& app) {
                app.Create();
                app.Scan();
                app.Phone();
                app.Request();
                app.Result();
                app.End();
            }};
}

}  // namespace lyn::test
