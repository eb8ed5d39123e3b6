// SPDX-License-Identifier: Apache-2.0
#include "holding/Deeds.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace lyn::test {
namespace {

constexpr int kTimesTheLimit = 3;

std::string Listed(const std::vector<const Job*>& jobs)
{
    std::string names;
    for (const Job* job : jobs) {
        names += (names.empty() ? "" : ", ") + job->Name();
    }
    return names;
}

}  // namespace

void Deeds::Tell(Guest& host)
{
    m_held = std::make_unique<Job>("the held " + m_point.HeldStep().name, [this, &host] {
        const TellsPlaces places([this](const Place& place) {
            if (place.Name() == m_point.place.Name()) {
                m_trap.Spring();
            }
        });
        return m_point.HeldStep().work(host);
    });
}

void Deeds::Start(const std::string& name, Work work, bool isOfNext, std::function<std::string()> function,
                  Answers answers)
{
    auto job = std::make_unique<Job>((isOfNext ? "next: " : "") + name, std::move(function));
    m_deeds.push_back({std::move(job), isOfNext, MayWait(m_point.place, work, isOfNext), std::move(answers)});
}

std::string Deeds::AwaitReturns()
{
    std::vector<const Job*> jobs;
    for (const Deed& deed : m_deeds) {
        if (!deed.exception) {
            jobs.push_back(deed.job.get());
        }
    }
    const std::string waiting = Listed(Job::AwaitDone(jobs, m_limit));
    for (Deed& deed : m_deeds) {
        if (deed.exception && !deed.isAtRest) {
            deed.job->AwaitRest();
            deed.isAtRest = true;
        }
    }
    return waiting;
}

void Deeds::Note(Tally& tally) const
{
    for (const Deed& deed : m_deeds) {
        if (deed.job->IsDone()) {
            tally.CameBack(m_point, deed.job->Name());
        } else if (deed.exception) {
            tally.Waited(m_point, deed.job->Name(), *deed.exception);
        }
    }
}

void Deeds::LetGo()
{
    m_trap.LetGo();
    std::vector<const Job*> jobs = {m_held.get()};
    for (const Deed& deed : m_deeds) {
        jobs.push_back(deed.job.get());
    }
    const std::string stuck = Listed(Job::AwaitDone(jobs, kTimesTheLimit * m_limit));
    if (!stuck.empty()) {
        std::printf("\nFAILED  %s\n        never came back, also when the held thread was let go: %s\n",
                    m_point.Name().c_str(), stuck.c_str());
        std::fflush(stdout);
        std::_Exit(1);
    }
}

std::vector<std::string> Deeds::WrongAnswers(bool areThoseOfNextRight) const
{
    std::vector<std::string> wrong;
    for (const Deed& deed : m_deeds) {
        const std::string& said = deed.job->Said();
        const bool isRight = deed.answers.empty() ||
                             std::find(deed.answers.begin(), deed.answers.end(), said) != deed.answers.end();
        if (!isRight && !(deed.isOfNext && areThoseOfNextRight)) {
            wrong.push_back(deed.job->Name() + " returned " + said);
        }
    }
    if (m_held->Said() == "2" && !m_point.IsInCreate()) {
        wrong.push_back(m_held->Name() + " returned 2");
    }
    return wrong;
}

}  // namespace lyn::test
