// SPDX-License-Identifier: Apache-2.0
//
// The readers of a scenario's parts. Each throws ScenarioError, which names the place.
#pragma once

#include "JsonField.h"
#include "Scenario.h"

namespace lyn::simulator {

TvScript ParseTv(const JsonField& field);
std::vector<TimelineEvent> ParseTimeline(const JsonField& field);

Phone ParsePhone(const JsonField& field);
/// The members "advertising" and "scanResponse" of a phone.
void ParsePackets(const JsonField& field, Phone& phone);
std::vector<Service> ParseServices(const JsonField& field);
std::vector<Answer> ParseAnswers(const JsonField& field);

}  // namespace lyn::simulator
