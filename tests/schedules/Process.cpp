// SPDX-License-Identifier: Apache-2.0
#include "schedules/Process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <stdexcept>

#include "schedules/Outcome.h"
#include "schedules/Player.h"

namespace lyn::schedules {
namespace {

using Clock = std::chrono::steady_clock;

// Far more than any move takes, sanitizers and a busy machine included.
constexpr std::chrono::seconds kStandstill{60};
constexpr long kTickNs = 200'000'000;

class ChildSignal {
public:
    ChildSignal()
    {
        ::sigemptyset(&m_set);
        ::sigaddset(&m_set, SIGCHLD);
        ::sigprocmask(SIG_BLOCK, &m_set, nullptr);
    }

    void Await() const
    {
        const timespec limit{0, kTickNs};
        ::sigtimedwait(&m_set, nullptr, &limit);
    }

private:
    sigset_t m_set{};
};

/// Waits for the end of a process, and ends it when it stands still. Gives its status.
int Watch(pid_t process, const std::function<void()>& onTick, bool& standsStill)
{
    static const ChildSignal signal;
    int status = 0;
    std::uint64_t heartbeat = 0;
    Clock::time_point last = Clock::now();
    while (::waitpid(process, &status, WNOHANG) == 0) {
        signal.Await();
        onTick();
        const std::uint64_t now = TheOutcome().heartbeat;
        if (now != heartbeat) {
            heartbeat = now;
            last = Clock::now();
        } else if (Clock::now() - last > kStandstill) {
            standsStill = true;
            ::kill(process, SIGKILL);
            last = Clock::now();
        }
    }
    return status;
}

}  // namespace

Ending PlayInProcess(const Task& task, const std::function<void()>& onTick)
{
    Outcome& outcome = TheOutcome();
    outcome.hasFailed = false;
    const pid_t process = ::fork();
    if (process < 0) {
        throw std::runtime_error("cannot start a process");
    }
    if (process == 0) {
        PlayAndExit(task);
    }
    bool standsStill = false;
    const int status = Watch(process, onTick, standsStill);
    if (!outcome.hasFailed && WIFEXITED(status) && WEXITSTATUS(status) == 0) {
        return {};
    }
    Ending ending{false, outcome.kind.data(), outcome.text.data(), outcome.seed,
                  std::string(outcome.script.data(), outcome.scriptSize)};
    if (!outcome.hasFailed) {
        ending.kind = standsStill ? "stands still" : "crash";
        ending.text = standsStill           ? "no thread comes to its next stop"
                      : WIFSIGNALED(status) ? "ended by signal " + std::to_string(WTERMSIG(status))
                                            : "ended with status " + std::to_string(WEXITSTATUS(status));
    }
    return ending;
}

}  // namespace lyn::schedules
