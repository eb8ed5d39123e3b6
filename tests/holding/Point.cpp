// SPDX-License-Identifier: Apache-2.0
#include "holding/Point.h"

#include <set>

#include "holding/Deliveries.h"
#include "lifetime/Phones.h"
#include "lyn_simulator/simulator.h"

namespace lyn::test {

void Prepare(const Scene& scene, Guest& guest)
{
    simulator::Reset();
    simulator::SetLogCapture(7);
    simulator::SetJournal(false);
    simulator::SetKernelLogMode(simulator::KernelLogMode::discard);
    scene.setUp(guest);
}

bool TellPlainStory(const std::string& service)
{
    simulator::AddPhone(AgreeingPhone(service, kPhone));
    Guest guest(service);
    const bool isBegun = guest.Create() == LYN_ERROR_NONE && guest.StartScan() == LYN_ERROR_NONE;
    simulator::Settle();
    const bool isAsked = guest.Request(kPhone) == LYN_ERROR_NONE;
    LetAllCome();
    const bool isEnded = guest.Destroy() == LYN_ERROR_NONE;
    LetAllCome();
    return isBegun && isAsked && isEnded && guest.Phones() == 1 && guest.Results() == 1 &&
           guest.LastResult() == LYN_REQUEST_INITIATING_RESULT_SUCCESS;
}

std::vector<Point> FindPoints(const std::string& service, const std::vector<Scene>& scenes)
{
    std::vector<Point> points;
    std::set<std::string> names;
    for (const Scene& scene : scenes) {
        // What is kept for the whole process is as a visit before a visit leaves it.
        simulator::Reset();
        TellPlainStory(service);
        Guest guest(service);
        Prepare(scene, guest);
        for (std::size_t step = 0; step < scene.steps.size(); ++step) {
            const TellsPlaces places([&](const Place& place) {
                Point point{service, &scene, step, place};
                if (names.insert(point.Name()).second) {
                    points.push_back(std::move(point));
                }
            });
            scene.steps[step].work(guest);
        }
        if (guest.IsAlive()) {
            guest.Destroy();
        }
        LetAllCome();
    }
    return points;
}

}  // namespace lyn::test
