// SPDX-License-Identifier: Apache-2.0
#include "schedules/Mood.h"

namespace lyn::schedules {

// Never destroyed: other threads may go on while the process ends.
const Mood& Everything()
{
    static const auto* const mood =
        new Mood{{{{What::create, 3},
                   {What::destroy, 5},
                   {What::scan, 14},
                   {What::scanJson, 3},
                   {What::stop, 13},
                   {What::request, 24},
                   {What::requestExtra, 4},
                   {What::advertise, 8},
                   {What::unadvertise, 5},
                   {What::version, 5},
                   {What::type, 5},
                   {What::text, 4}}},
                 {0, 0, 0, 1, 1, 1, 1, 2, 2, 3, 3, 4},
                 {What::bluetoothOff, What::bluetoothOff, What::bluetoothOn, What::bluetoothOn, What::bluetoothOn,
                  What::suspend, What::ambient, What::elapse, What::elapse, What::loseLink, What::loseLink,
                  What::channel, What::fail},
                 0,
                 9};
    return *mood;
}

const Mood& Unrest()
{
    static const auto* const mood = new Mood{{{{What::create, 2},
                                               {What::destroy, 2},
                                               {What::scan, 8},
                                               {What::scanJson, 1},
                                               {What::stop, 25},
                                               {What::request, 45},
                                               {What::requestExtra, 5},
                                               {What::advertise, 3},
                                               {What::unadvertise, 2},
                                               {What::version, 2},
                                               {What::type, 2},
                                               {What::text, 1}}},
                                             {1},
                                             {What::suspend, What::ambient, What::bluetoothOn, What::bluetoothOn,
                                              What::bluetoothOn, What::bluetoothOff, What::elapse, What::loseLink},
                                             4,
                                             16};
    return *mood;
}

}  // namespace lyn::schedules
