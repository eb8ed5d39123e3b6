// SPDX-License-Identifier: Apache-2.0
//
// The points at which a thread is held: every place that a good story comes by.
#pragma once

#include <string>
#include <vector>

#include "holding/Place.h"
#include "holding/Scenes.h"

namespace lyn::test {

struct Point {
    std::string service;
    const Scene* scene = nullptr;
    std::size_t step = 0;
    Place place;

    const Step& HeldStep() const { return scene->steps[step]; }
    bool IsInCreate() const { return HeldStep().name.rfind("create", 0) == 0; }
    /// "nodlink/request/bt_gatt_connect/before"
    std::string Name() const { return service + "/" + HeldStep().name + "/" + place.Name(); }
};

/// A TV just reset, as a scene begins with it.
void Prepare(const Scene& scene, Guest& guest);

/// Created, scanned, found, asked, agreed, destroyed: true when all of this goes as it should.
bool TellPlainStory(const std::string& service);

/// Tells the scenes of a service once, as they go, and returns each place that they come by. The scenes have to
/// stay.
std::vector<Point> FindPoints(const std::string& service, const std::vector<Scene>& scenes);

}  // namespace lyn::test
