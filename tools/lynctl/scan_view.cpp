// SPDX-License-Identifier: Apache-2.0
#include "scan_view.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "json_line.h"
#include "names.h"
#include "phone_table.h"
#include "terminal.h"
#include "text.h"

namespace lynctl {

namespace {

std::string Decimal(double number)
{
    std::array<char, 32> out{};
    std::snprintf(out.data(), out.size(), "%.1f", number);
    return out.data();
}

std::string Count(unsigned long number, const char* what)
{
    return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string Headline(const ScanStatus& status)
{
    return "Scanning for \"" + status.arguments.service + "\" phones, platform " + status.platform;
}

std::string Summary(const ScanStatus& status)
{
    return Count(status.phones.All().size(), "phone") + ", " +
           Count(status.phones.Advertisements(), "advertisement") + " in " + Decimal(status.seconds) + " s" +
           (status.interrupted ? " (stopped by a signal)" : "") + "\n";
}

void PrintSummary(const ScanStatus& status)
{
    const Look look = LookOfOutput();
    if (!status.phones.All().empty()) {
        Print(PhoneTable(status.phones, status.arguments.service, status.seconds, look));
    }
    Print(Summary(status));
}

/// The table, drawn again in its place.
class LiveScanView : public ScanView {
public:
    void Found(const ScanStatus& status, const Phone&, Phones::News news, const char*) override
    {
        if (news == Phones::News::added) {
            Draw(status);
        }
    }

    void StateChanged(const ScanStatus& status) override { Draw(status); }
    void Tick(const ScanStatus& status) override { Draw(status); }

    void End(const ScanStatus& status) override
    {
        m_area.Clear();
        Print(Paint(Headline(status), Style::strong, LookOfOutput()) + "\n");
        PrintSummary(status);
    }

private:
    void Draw(const ScanStatus& status)
    {
        constexpr int kOtherLines = 7;  // headline, frame and heading, what is left out, the line below
        const Look look = LookOfOutput();
        const int limit = status.arguments.seconds;
        const std::string time =
            Decimal(status.seconds) + (limit > 0 ? " of " + std::to_string(limit) + " s" : " s");
        std::string block = Paint(Headline(status), Style::strong, look) + "  " +
                            Paint(StateName(status.state), Style::accent, look) + "  " +
                            Paint(time + ", Ctrl-C ends", Style::dim, look) + "\n";
        if (status.phones.All().empty()) {
            block += Paint("nothing found yet", Style::dim, look) + "\n";
        } else {
            block += PhoneTable(status.phones, status.arguments.service, status.seconds, look,
                                std::max(1, look.height - kOtherLines));
        }
        m_area.Draw(block);
    }

    LiveArea m_area;
};

/// A line for each piece of news, the table at the end.
class LineScanView : public ScanView {
public:
    void Begin(const ScanStatus& status) override { Print(Headline(status) + "\n"); }

    void StateChanged(const ScanStatus& status) override { Line(status, "state  ", StateName(status.state)); }

    void Found(const ScanStatus& status, const Phone& phone, Phones::News news, const char*) override
    {
        if (news == Phones::News::none) {
            return;
        }
        const bool nodlink = status.arguments.service == "nodlink";
        std::string text = phone.address;
        if (!nodlink) {
            text += "  " + (phone.name.empty() ? "(no name)" : phone.name);
        }
        if (nodlink || !phone.extra.empty()) {
            text += "  " + phone.extra;
        }
        text += "  " + std::to_string(phone.rssi) + " dBm";
        Line(status, news == Phones::News::added ? "found  " : "changed", text);
    }

    void End(const ScanStatus& status) override { PrintSummary(status); }

private:
    static void Line(const ScanStatus& status, const std::string& what, const std::string& text)
    {
        Print(Pad(Decimal(status.seconds), 6, true) + " s  " + what + "  " +
              Printable(text, LookOfOutput().unicode) + "\n");
    }
};

class JsonScanView : public ScanView {
public:
    void StateChanged(const ScanStatus& status) override
    {
        Json::Value line = Event("state", status.seconds);
        line["state"] = StateName(status.state);
        line["value"] = static_cast<int>(status.state);
        PrintJson(line);
    }

    void Found(const ScanStatus& status, const Phone&, Phones::News, const char* json) override
    {
        std::array<char, 32> seconds{};
        std::snprintf(seconds.data(), seconds.size(), "%.3f", status.seconds);
        // The library's own line, untouched.
        Print(std::string(R"({"event":"found","phone":)") + json + ",\"seconds\":" + seconds.data() + "}\n");
    }

    void End(const ScanStatus& status) override
    {
        Json::Value line = Event("summary", status.seconds);
        line["service"] = status.arguments.service;
        line["interrupted"] = status.interrupted;
        line["advertisements"] = static_cast<Json::UInt64>(status.phones.Advertisements());
        line["phones"] = Json::Value(Json::arrayValue);
        for (const Phone& phone : status.phones.All()) {
            line["phones"].append(Describe(phone));
        }
        PrintJson(line);
    }

private:
    static Json::Value Describe(const Phone& phone)
    {
        Json::Value object(Json::objectValue);
        object["Address"] = phone.address;
        object["ExtraData"] = phone.extra;
        object["Name"] = phone.name;
        object["RSSI"] = phone.rssi;
        object["UniqueID"] = phone.id;
        object["advertisements"] = static_cast<Json::UInt64>(phone.count);
        object["last_seen"] = phone.lastSeen;
        return object;
    }
};

}  // namespace

std::unique_ptr<ScanView> MakeScanView(const Arguments& arguments)
{
    if (arguments.json) {
        return std::make_unique<JsonScanView>();
    }
    // The library's log would run through a table that is drawn in place.
    if (LookOfOutput().live && !arguments.verbose) {
        return std::make_unique<LiveScanView>();
    }
    return std::make_unique<LineScanView>();
}

}  // namespace lynctl
