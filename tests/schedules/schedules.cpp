// SPDX-License-Identifier: Apache-2.0
//
// schedules: plays random schedules of several threads over the simulator; docs/testing.md says what must hold.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "schedules/Minimise.h"
#include "schedules/Outcome.h"
#include "schedules/Process.h"
#include "schedules/Summary.h"
#include "schedules/TvFolder.h"

namespace {

using namespace lyn::schedules;

constexpr const char* kUsage =
    "usage: schedules [--count N] [--seed S] [--workers N] [--exit] [--failures N] [--trace]\n"
    "       schedules [--trace] [--exit] SCRIPT-OR-FOLDER...\n"
    "\n"
    "  --count N     schedules to play (1000)\n"
    "  --seed S      the first one's seed; each has the seed after the last one's (1)\n"
    "  --workers N   threads beside the main loop (1 to 3, as the seed says)\n"
    "  --exit        schedules that end the process in the middle\n"
    "  --failures N  stop after so many (3)\n"
    "  --trace       print each move with where its thread was\n";

struct Options {
    std::uint64_t count = 1000;
    std::uint64_t seed = 1;
    int workers = -1;
    int failures = 3;
    bool isExit = false;
    bool isTraced = false;
    std::vector<std::string> scripts;
};

Options ReadOptions(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        const auto number = [&] {
            if (i + 1 >= argc) {
                throw std::invalid_argument(word + " needs a number");
            }
            return std::stoull(argv[++i]);
        };
        if (word == "--count") {
            options.count = number();
        } else if (word == "--seed") {
            options.seed = number();
        } else if (word == "--workers") {
            options.workers = static_cast<int>(number());
        } else if (word == "--failures") {
            options.failures = static_cast<int>(number());
        } else if (word == "--exit") {
            options.isExit = true;
        } else if (word == "--trace") {
            options.isTraced = true;
        } else if (word.rfind("--", 0) == 0) {
            throw std::invalid_argument("not understood: " + word);
        } else {
            options.scripts.push_back(word);
        }
    }
    return options;
}

class Progress {
public:
    explicit Progress(std::uint64_t total) : m_total(total) {}
    ~Progress() { Clear(); }

    void Show() const
    {
        if (m_isShown) {
            std::printf("\r%llu of %llu ", static_cast<unsigned long long>(TheOutcome().counts.schedules),
                        static_cast<unsigned long long>(m_total));
            std::fflush(stdout);
        }
    }

    void Clear() const
    {
        if (m_isShown) {
            std::printf("\r%40s\r", "");
            std::fflush(stdout);
        }
    }

private:
    const std::uint64_t m_total;
    const bool m_isShown = ::isatty(STDOUT_FILENO) == 1;
};

void Print(const Ending& ending, const Script& script, const std::string& name)
{
    std::printf("\nFAILED  %s: %s: %s\n\n%s\n", name.c_str(), ending.kind.c_str(), ending.text.c_str(),
                ToText(script).c_str());
    std::fflush(stdout);
}

void Report(const Ending& ending, const Task& task, const Progress& progress)
{
    const auto counts = TheOutcome().counts;
    const auto show = [&] { progress.Show(); };
    const Script script = Minimise(ParseScript(ending.script), ending, task, show);
    Task last = task;
    last.script = &script;
    last.isQuiet = true;
    const Ending again = PlayInProcess(last, show);
    TheOutcome().counts = counts;
    progress.Clear();
    Print(again.isGood ? ending : again, script, "seed " + std::to_string(ending.seed));
}

int PlayAll(const Options& options)
{
    const Progress progress(options.count);
    int failures = 0;
    const std::uint64_t end = options.seed + options.count;
    for (std::uint64_t seed = options.seed; seed < end && failures < options.failures;) {
        Task task;
        task.firstSeed = seed;
        task.count = options.isExit ? 1 : std::min(kSeedsPerProcess, end - seed);
        task.workers = options.workers;
        task.endsProcess = options.isExit;
        task.isTraced = options.isTraced;
        const Ending ending = PlayInProcess(task, [&] { progress.Show(); });
        seed += task.count;
        if (!ending.isGood) {
            ++failures;
            seed = ending.seed + 1;
            Report(ending, task, progress);
        }
    }
    return failures;
}

std::vector<std::string> FilesOf(const std::vector<std::string>& names)
{
    std::vector<std::string> files;
    for (const std::string& name : names) {
        if (!std::filesystem::is_directory(name)) {
            files.push_back(name);
            continue;
        }
        for (const auto& entry : std::filesystem::directory_iterator(name)) {
            files.push_back(entry.path().string());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

int PlayScripts(const Options& options)
{
    int failures = 0;
    for (const std::string& name : FilesOf(options.scripts)) {
        std::ifstream file(name);
        std::stringstream text;
        text << file.rdbuf();
        if (!file) {
            throw std::runtime_error("cannot read " + name);
        }
        const Script script = ParseScript(text.str());
        Task task;
        task.script = &script;
        task.isTraced = options.isTraced;
        task.endsProcess = std::any_of(script.moves.begin(), script.moves.end(),
                                       [](const Move& m) { return m.what == What::exit; });
        const Ending ending = PlayInProcess(task, [] {});
        if (!ending.isGood) {
            ++failures;
            Print(ending, script, name);
        }
    }
    return failures;
}

int Run(const Options& options)
{
    // What the processes share is there before the first of them.
    TheOutcome();
    TvFolder::Path();
    const auto begin = std::chrono::steady_clock::now();
    const int failures = options.scripts.empty() ? PlayAll(options) : PlayScripts(options);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    PrintSummary(TheOutcome().counts, took.count());
    return failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv)
{
    try {
        return Run(ReadOptions(argc, argv));
    } catch (const std::exception& e) {
        std::fprintf(stderr, "schedules: %s\n%s", e.what(), kUsage);
        return 2;
    }
}
