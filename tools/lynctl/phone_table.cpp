// SPDX-License-Identifier: Apache-2.0
#include "phone_table.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "table.h"

namespace lynctl {

namespace {

constexpr int kBarLength = 5;
constexpr int kWeakest = -100;   // dBm, an empty bar
constexpr int kStrongest = -40;  // dBm, a full one

Style SignalStyle(int rssi)
{
    if (rssi >= -60) {
        return Style::good;
    }
    return rssi >= -80 ? Style::fair : Style::bad;
}

std::string Ago(double seconds)
{
    std::array<char, 32> out{};
    std::snprintf(out.data(), out.size(), seconds < 10 ? "%.1f s ago" : "%.0f s ago", std::max(seconds, 0.0));
    return out.data();
}

Cell OrDash(const std::string& text, Style style = Style::plain)
{
    return text.empty() ? Cell{"-", Style::dim} : Cell{text, style};
}

std::vector<Column> Columns(const std::string& service, bool extra)
{
    std::vector<Column> columns;
    if (service == "nodlink") {
        columns = {{"ADDRESS"}, {"TYPE", 12, 4}, {"MIRRORING"}, {"VERSION", 8, 7}};
    } else {
        columns = {{"NAME", 32, 8}, {"ADDRESS"}, {"ID", 28, 8}};
        if (extra) {
            columns.push_back({"EXTRA", 40, 8});
        }
    }
    columns.push_back({"RSSI", 0, 0, true});
    columns.push_back({"SIGNAL"});
    columns.push_back({"LAST SEEN", 0, 0, true});
    return columns;
}

std::vector<Cell> Row(const Phone& phone, const std::string& service, bool extra, double seconds, bool unicode)
{
    std::vector<Cell> row;
    if (service == "nodlink") {
        const NodlinkFacts facts = NodlinkFacts::From(phone.extra);
        row = {{phone.address},
               OrDash(facts.type, Style::strong),
               OrDash(facts.mirroring, facts.mirroring == "yes" ? Style::good : Style::plain),
               OrDash(facts.version)};
    } else {
        row = {OrDash(phone.name, Style::strong), {phone.address}, OrDash(phone.id)};
        if (extra) {
            row.push_back(OrDash(phone.extra));
        }
    }
    row.push_back({std::to_string(phone.rssi)});
    row.push_back({SignalBar(phone.rssi, unicode), SignalStyle(phone.rssi)});
    row.push_back({Ago(seconds - phone.lastSeen), Style::dim});
    return row;
}

}  // namespace

std::string SignalBar(int rssi, bool unicode)
{
    constexpr std::array<const char*, 8> kEighths = {"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    const int clamped = std::clamp(rssi, kWeakest, kStrongest);
    const int eighths = (clamped - kWeakest) * kBarLength * 8 / (kStrongest - kWeakest);
    std::string out;
    for (int i = 0; i < eighths / 8; ++i) {
        out += unicode ? "█" : "#";
    }
    if (unicode) {
        out += kEighths[static_cast<std::size_t>(eighths % 8)];
    }
    return out;
}

std::string PhoneTable(const Phones& phones, const std::string& service, double seconds, const Look& look,
                       int maxRows)
{
    const auto hasExtra = [](const Phone& phone) { return !phone.extra.empty(); };
    const bool extra = std::any_of(phones.All().begin(), phones.All().end(), hasExtra);
    Table table(Columns(service, extra));
    for (const Phone& phone : phones.All()) {
        table.AddRow(Row(phone, service, extra, seconds, look.unicode));
    }
    return table.Render(look, maxRows);
}

}  // namespace lynctl
