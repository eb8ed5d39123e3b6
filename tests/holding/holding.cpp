// SPDX-License-Identifier: Apache-2.0
//
// holding [--service NAME] [--step NAME] [--point NAME] [--every N] [--limit SECONDS] [--failures N] [--list]
//
// Finds every place at which the library is outside itself, and holds a thread there while others call
// everything and everything is delivered: all of it must come back at once, but for what Exceptions.cpp names.
// Prints what came back and what waited, and exits with 0 when all was well.
#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "holding/Place.h"
#include "holding/Point.h"
#include "holding/Tally.h"
#include "holding/Visit.h"
#include "lifetime/Phones.h"
#include "support/LastWords.h"

namespace {

using lyn::test::Point;
using lyn::test::Scene;
using lyn::test::Tally;
using lyn::test::Visit;

struct Options {
    std::string service;
    std::string step;
    std::string point;
    unsigned every = 1;
    std::chrono::milliseconds limit{10'000};
    int failures = 20;
    bool isList = false;

    /// "nodlink" alone needs every exception.
    bool NeedsAllExceptions() const
    {
        return (service.empty() || service == "nodlink") && step.empty() && point.empty() && every == 1;
    }
};

[[noreturn]] void Usage()
{
    std::fprintf(stderr, "usage: holding [--service NAME] [--step NAME] [--point NAME] [--every N] "
                         "[--limit SECONDS] [--failures N] [--list]\n");
    std::exit(2);
}

Options Read(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string name = argv[i];
        if (name == "--list") {
            options.isList = true;
            continue;
        }
        if (i + 1 == argc) {
            Usage();
        }
        const std::string value = argv[++i];
        if (name == "--service") {
            options.service = value;
        } else if (name == "--step") {
            options.step = value;
        } else if (name == "--point") {
            options.point = value;
        } else if (name == "--every") {
            options.every = static_cast<unsigned>(std::max(1, std::atoi(value.c_str())));
        } else if (name == "--limit") {
            options.limit = std::chrono::milliseconds(static_cast<int>(1000 * std::atof(value.c_str())));
        } else if (name == "--failures") {
            options.failures = std::atoi(value.c_str());
        } else {
            Usage();
        }
    }
    return options;
}

/// The same points are taken in each run, whatever other points there are.
bool IsTaken(const std::string& name, unsigned every)
{
    std::uint32_t hash = 2166136261U;
    for (const char letter : name) {
        hash = (hash ^ static_cast<unsigned char>(letter)) * 16777619U;
    }
    return (hash >> 8U) % every == 0;
}

bool IsWanted(const Point& point, const Options& options)
{
    const std::string name = point.Name();
    return (options.step.empty() || point.HeldStep().name == options.step) &&
           (options.point.empty() || name == options.point) && IsTaken(name, options.every);
}

const char* ThreadOf(const Point& point)
{
    return point.HeldStep().isOnLoop ? "the main loop's thread" : "the caller's thread";
}

void VisitOnce(const Point& point, const Visit::Plan& plan, const Options& options, Tally& tally,
               std::vector<Visit::Plan>* further)
{
    lyn::test::SayWhatIsDone(point.Name());
    Visit visit(point, plan, options.limit, tally);
    const std::vector<std::string> problems = visit.Pay();
    tally.Visited(point);
    if (further != nullptr) {
        *further = visit.FurtherPlans();
    }
    if (problems.empty()) {
        return;
    }
    tally.Failed(point);
    std::printf("\nFAILED  %s, on %s%s\n", point.Name().c_str(), ThreadOf(point), plan.Text().c_str());
    for (const std::string& problem : problems) {
        std::printf("        %s\n", problem.c_str());
    }
    std::printf("        again: holding --point \"%s\"\n", point.Name().c_str());
    std::fflush(stdout);
}

void VisitPoint(const Point& point, const Options& options, Tally& tally)
{
    std::vector<Visit::Plan> further;
    VisitOnce(point, {}, options, tally, &further);
    for (const Visit::Plan& plan : further) {
        VisitOnce(point, plan, options, tally, nullptr);
    }
}

void ShowProgress(const Point& point, const Tally& tally)
{
    if (isatty(STDOUT_FILENO) != 0) {
        std::printf("%6d points, %d failed  %-90.90s\r", tally.Points(), tally.Failures(), point.Name().c_str());
        std::fflush(stdout);
    }
}

/// Visits the points of one service. Returns how many it has, visited or not; 0 to stop.
std::size_t RunService(const std::string& service, const Options& options, Tally& tally)
{
    const std::vector<Scene> scenes = lyn::test::ScenesOf(service);
    lyn::test::SayWhatIsDone(service + ", finding the points");
    const std::vector<Point> points = lyn::test::FindPoints(service, scenes);
    for (const Point& point : points) {
        if (!IsWanted(point, options)) {
            continue;
        }
        if (options.isList) {
            std::printf("%s\n", point.Name().c_str());
            continue;
        }
        if (tally.Failures() >= options.failures) {
            break;
        }
        VisitPoint(point, options, tally);
        ShowProgress(point, tally);
    }
    return points.size();
}

}  // namespace

int main(int argc, char** argv)
{
    g_log_set_always_fatal(static_cast<GLogLevelFlags>(G_LOG_FATAL_MASK | G_LOG_LEVEL_CRITICAL));
    const Options options = Read(argc, argv);
    lyn::test::PrepareLastWords();
    const lyn::test::PlaceHearing hearing;
    Tally tally;
    std::size_t found = 0;
    for (const std::string& service : lyn::test::AllServices()) {
        if (options.service.empty() || options.service == service) {
            found += RunService(service, options, tally);
        }
    }
    if (options.isList) {
        return 0;
    }
    tally.PrintSteps();
    tally.PrintWorks();
    tally.PrintExceptions();
    std::printf("\n%zu points found, %d visited (every %u)\n", found, tally.Points(), options.every);
    if (tally.Failures() >= options.failures) {
        std::printf("given up after %d failures\n", tally.Failures());
    }
    if (options.NeedsAllExceptions() && tally.UnneededExceptions() > 0) {
        std::printf("FAILED  an exception that nobody needs is none\n");
        return 1;
    }
    return tally.Failures() == 0 && tally.Points() > 0 ? 0 : 1;
}
