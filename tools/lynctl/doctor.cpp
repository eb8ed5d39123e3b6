// SPDX-License-Identifier: Apache-2.0
#include <glib.h>

#include <algorithm>

#include "checks.h"
#include "commands.h"
#include "failure.h"
#include "json_line.h"
#include "terminal.h"
#include "text.h"

namespace lynctl {

namespace {

struct Shown {
    const char* word;
    const char* sign;
    const char* plainSign;
    Style style;
};

Shown ShownAs(Level level)
{
    switch (level) {
    case Level::good:
        return {"good", "\u2714", "ok", Style::good};
    case Level::note:
        return {"note", "!", "! ", Style::fair};
    case Level::problem:
        break;
    }
    return {"problem", "\u2718", "X ", Style::bad};
}

void ShowCheck(const Check& check)
{
    constexpr int kNameWidth = 14;
    const Look look = LookOfOutput();
    const Shown shown = ShownAs(check.level);
    Print(Paint(look.unicode ? shown.sign : shown.plainSign, shown.style, look) + " " +
          Pad(check.name, kNameWidth) + Printable(check.found, look.unicode) + "\n");
    if (!check.mend.empty()) {
        const std::string arrow = look.unicode ? "\u2192 " : "-> ";
        Print(std::string(look.unicode ? 2 : 3, ' ') + Pad("", kNameWidth) +
              Paint(arrow + Printable(check.mend, look.unicode), Style::strong, look) + "\n");
    }
}

void ShowSummary(long problems, long notes)
{
    const Look look = LookOfOutput();
    const std::string text =
        problems == 0 ? "This machine has what it needs" : "This machine cannot serve as it is";
    const auto counted = [](long count, const char* what) {
        return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
    };
    Print(Paint(text, problems == 0 ? Style::good : Style::bad, look) + " (" + counted(problems, "problem") +
          ", " + counted(notes, "note") + ")\n");
}

void PrintJsonCheck(const Check& check, double seconds)
{
    Json::Value line = Event("check", seconds);
    line["check"] = check.name;
    line["level"] = ShownAs(check.level).word;
    line["found"] = check.found;
    line["mend"] = check.mend;
    PrintJson(line);
}

}  // namespace

int Doctor(const Arguments& arguments)
{
    const gint64 begin = g_get_monotonic_time();
    const auto checks = CheckMachine();
    const double seconds = static_cast<double>(g_get_monotonic_time() - begin) / G_USEC_PER_SEC;
    const auto count = [&](Level level) {
        return std::count_if(checks.begin(), checks.end(),
                             [&](const Check& check) { return check.level == level; });
    };
    for (const Check& check : checks) {
        arguments.json ? PrintJsonCheck(check, seconds) : ShowCheck(check);
    }
    const auto problems = count(Level::problem);
    if (arguments.json) {
        Json::Value line = Event("summary", seconds);
        line["problems"] = static_cast<Json::Int64>(problems);
        line["notes"] = static_cast<Json::Int64>(count(Level::note));
        PrintJson(line);
    } else {
        ShowSummary(problems, count(Level::note));
    }
    return problems == 0 ? kExitSuccess : kExitFailure;
}

}  // namespace lynctl
