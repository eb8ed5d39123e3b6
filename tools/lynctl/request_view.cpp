// SPDX-License-Identifier: Apache-2.0
#include "request_view.h"

#include "json_line.h"
#include "names.h"
#include "terminal.h"
#include "text.h"
#include "timeline.h"

namespace lynctl {

namespace {

class TimelineRequestView : public RequestView {
public:
    void Begin(const Arguments& arguments, const std::string& platform) override
    {
        Print(Paint("Asking " + arguments.address + " for \"" + arguments.service + "\", platform " + platform,
                    Style::strong, LookOfOutput()) +
              "\n");
    }

    void StateChanged(double seconds, lyn_state_e state) override
    {
        PrintTimeline(seconds, "state", StateName(state), Style::accent);
    }

    void OnAir(double seconds, const AirEvent& event) override
    {
        const bool unicode = LookOfOutput().unicode;
        switch (event.kind) {
        case LYN_SIMULATOR_AIR_CONNECTED:
            return PrintTimeline(seconds, "air", "connected to " + std::string(event.address));
        case LYN_SIMULATOR_AIR_WRITE:
            return PrintTimeline(seconds, unicode ? "TV → phone" : "TV -> phone", std::string(event.bytes),
                                 Style::strong);
        case LYN_SIMULATOR_AIR_NOTIFY:
            return PrintTimeline(seconds, unicode ? "phone → TV" : "phone -> TV", std::string(event.bytes),
                                 Style::strong);
        case LYN_SIMULATOR_AIR_DISCONNECTED:
            return PrintTimeline(seconds, "air", "disconnected");
        case LYN_SIMULATOR_AIR_CONNECT_FAILED:
            return PrintTimeline(seconds, "air", "connection failed", Style::bad);
        }
    }

    void End(double, const RequestOutcome& outcome) override
    {
        const Look look = LookOfOutput();
        const bool success = outcome.result == LYN_REQUEST_INITIATING_RESULT_SUCCESS;
        const std::string meaning = ResultMeaning(outcome.result);
        std::string line =
            "Result: " + Paint(Printable(outcome.name, look.unicode), success ? Style::good : Style::bad, look);
        if (!meaning.empty()) {
            line += " (" + meaning + ")";
        }
        Print(line + "\n");
        if (success && outcome.nodlinkType) {
            Print("Mode:   " + NodlinkTypeName(*outcome.nodlinkType) + "\n");
        }
    }

    void Interrupted(double) override { Print("Interrupted before the result.\n"); }
};

class JsonRequestView : public RequestView {
public:
    void StateChanged(double seconds, lyn_state_e state) override
    {
        Json::Value line = Event("state", seconds);
        line["state"] = StateName(state);
        line["value"] = static_cast<int>(state);
        PrintJson(line);
    }

    void OnAir(double seconds, const AirEvent& event) override
    {
        Json::Value line = Event(NameOf(event.kind), seconds);
        line["address"] = std::string(event.address);
        if (event.kind == LYN_SIMULATOR_AIR_WRITE || event.kind == LYN_SIMULATOR_AIR_NOTIFY) {
            SetText(line, event.bytes);
        }
        PrintJson(line);
    }

    void End(double seconds, const RequestOutcome& outcome) override
    {
        Json::Value line = Event("result", seconds);
        line["result"] = outcome.name;
        line["value"] = static_cast<int>(outcome.result);
        if (outcome.nodlinkType) {
            line["nodlink_type"] = *outcome.nodlinkType;
            line["nodlink_mode"] = NodlinkTypeName(*outcome.nodlinkType);
        }
        PrintJson(line);
    }

    void Interrupted(double seconds) override { PrintJson(Event("interrupted", seconds)); }

private:
    static const char* NameOf(lyn_simulator_air_event_e kind)
    {
        switch (kind) {
        case LYN_SIMULATOR_AIR_CONNECTED:
            return "connected";
        case LYN_SIMULATOR_AIR_WRITE:
            return "written";
        case LYN_SIMULATOR_AIR_NOTIFY:
            return "answered";
        case LYN_SIMULATOR_AIR_DISCONNECTED:
            return "disconnected";
        case LYN_SIMULATOR_AIR_CONNECT_FAILED:
            return "connect_failed";
        }
        return "air";
    }
};

}  // namespace

std::unique_ptr<RequestView> MakeRequestView(const Arguments& arguments)
{
    if (arguments.json) {
        return std::make_unique<JsonRequestView>();
    }
    return std::make_unique<TimelineRequestView>();
}

}  // namespace lynctl
