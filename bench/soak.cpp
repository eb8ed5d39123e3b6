// SPDX-License-Identifier: Apache-2.0
//
// lyn_soak: very many scans and requests in one process, with nothing left behind. Time is virtual: no time-out
// is waited for. Exit status: 0 nothing grew, 1 something did or went wrong, 2 bad arguments.
#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string_view>

#include "Census.h"
#include "Stories.h"

namespace {

using namespace lyn::bench;

constexpr long kPoints = 10;
// Pages come and go by the heap's own book-keeping; a leak of a few bytes in each cycle is far more than this.
constexpr long kAllowedRssKb = 512;

struct Options {
    long cycles = 100000;
    long warmUp = 720;  // Every story with every service, twice.
    long perService = 10;
    bool comparesRss = true;
    bool isJson = false;
};

struct Point {
    long cycles;
    Census census;
};

void PrintUsage()
{
    std::puts("usage: lyn_soak [--cycles N] [--per-service N] [--warm-up N] [--no-rss] [--json]\n"
              "  --cycles N       scans with a request after the warm-up (100000)\n"
              "  --per-service N  cycles for which a service lives (10); the four services take turns\n"
              "  --warm-up N      cycles before the first census (720)\n"
              "  --no-rss         resident memory is shown, not compared: for short runs and under a sanitizer\n"
              "  --json           one JSON object instead of the table");
}

bool TakeNumber(const char* text, long& number)
{
    const char* const end = text + std::strlen(text);
    const auto [rest, error] = std::from_chars(text, end, number);
    return error == std::errc() && rest == end && number > 0;
}

bool TakeArguments(int argc, char** argv, Options& options)
{
    for (int i = 1; i < argc; ++i) {
        const std::string_view name = argv[i];
        long* number = nullptr;
        if (name == "--cycles") {
            number = &options.cycles;
        } else if (name == "--per-service") {
            number = &options.perService;
        } else if (name == "--warm-up") {
            number = &options.warmUp;
        }
        if (number != nullptr) {
            if (++i >= argc || !TakeNumber(argv[i], *number)) {
                return false;
            }
        } else if (name == "--no-rss") {
            options.comparesRss = false;
        } else if (name == "--json") {
            options.isJson = true;
        } else {
            return false;
        }
    }
    return true;
}

void ShowProgress(long done, long all)
{
    static const bool isTerminal = ::isatty(STDERR_FILENO) == 1;
    if (isTerminal && (done % 500 == 0 || done == all)) {
        std::fprintf(stderr, "\r%ld of %ld cycles%s", done, all, done == all ? "\r\033[K" : "");
    }
}

class Soak {
public:
    explicit Soak(const Options& options) : m_options(options), m_narrator(options.perService)
    {
        m_points.reserve(kPoints + 1);
    }

    void Run()
    {
        PrepareTv();
        PrintHead();
        for (long cycle = 0; cycle < m_options.warmUp; ++cycle) {
            m_narrator.Next();
        }
        TakePoint(0);
        long next = 1;
        for (long cycle = 1; cycle <= m_options.cycles; ++cycle) {
            m_narrator.Next();
            ShowProgress(cycle, m_options.cycles);
            if (cycle == m_options.cycles * next / kPoints) {
                TakePoint(cycle);
                ++next;
            }
        }
    }

    /// Says what has grown since the first census, or is there at rest, and whether anything is.
    bool HasGrown() const
    {
        bool hasGrown = false;
        for (const Column& column : Columns()) {
            if (column.value != &Census::rssKb) {
                hasGrown = HasGrown(column, 0) || hasGrown;
            } else if (m_options.comparesRss) {
                hasGrown = HasGrown(column, kAllowedRssKb) || hasGrown;
            }
        }
        return hasGrown;
    }

    void PrintEnd() const
    {
        if (!m_options.isJson) {
            std::printf("rss at the start %ld kB, at the end %ld kB, at most %ld kB\n",
                        m_points.front().census.rssKb, m_points.back().census.rssKb, PeakRssKb());
            return;
        }
        std::printf("{\"cycles\": %ld, \"peak_rss_kb\": %ld, \"points\": [", m_options.cycles, PeakRssKb());
        const char* separator = "";
        for (const Point& point : m_points) {
            std::printf("%s\n  {\"cycles\": %ld", separator, point.cycles);
            for (const Column& column : Columns()) {
                std::printf(", \"%s\": %ld", column.name, point.census.*column.value);
            }
            std::printf("}");
            separator = ",";
        }
        std::printf("\n]}\n");
    }

private:
    bool HasGrown(const Column& column, long allowed) const
    {
        const long first = column.isNothingAtRest ? 0 : m_points.front().census.*column.value;
        for (const Point& point : m_points) {
            const long value = point.census.*column.value;
            if (value > first + allowed) {
                std::fprintf(stderr, "lyn_soak: %s: %ld after %ld cycles, not %ld\n", column.name, value,
                             point.cycles, first);
                return true;
            }
        }
        return false;
    }

    void PrintHead() const
    {
        if (m_options.isJson) {
            return;
        }
        std::printf("%10s", "cycles");
        for (const Column& column : Columns()) {
            std::printf("%12s", column.name);
        }
        std::printf("\n");
    }

    // With no service alive. What the simulator counts is taken before its records go.
    void TakePoint(long cycles)
    {
        m_narrator.ComeToRest();
        Census census = m_taker.Take();
        PrepareTv();
        const Census bare = m_taker.Take();
        census.blocks = bare.blocks;
        census.rssKb = bare.rssKb;
        m_points.push_back({cycles, census});
        if (m_options.isJson) {
            return;
        }
        std::printf("%10ld", cycles);
        for (const Column& column : Columns()) {
            std::printf("%12ld", census.*column.value);
        }
        std::printf("\n");
        std::fflush(stdout);
    }

    Options m_options;
    Narrator m_narrator;
    CensusTaker m_taker;
    std::vector<Point> m_points;
};

}  // namespace

int main(int argc, char** argv)
{
    Options options;
    if (!TakeArguments(argc, argv, options)) {
        PrintUsage();
        return 2;
    }
    try {
        Soak soak(options);
        soak.Run();
        soak.PrintEnd();
        return soak.HasGrown() ? 1 : 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "lyn_soak: %s\n", e.what());
        return 1;
    }
}
