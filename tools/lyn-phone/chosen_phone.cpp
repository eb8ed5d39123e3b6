// SPDX-License-Identifier: Apache-2.0
#include "chosen_phone.h"

#include <algorithm>

#include "Address.h"
#include "AdvertisingData.h"
#include "ScenarioPhones.h"
#include "failure.h"

namespace lynphone {

namespace {

using lyn::simulator::Answer;
using lyn::simulator::Feature;
using lyn::simulator::Phone;

/// Where a mirroring or Kov phone's name begins in its manufacturer data.
constexpr std::size_t kNameOffset = 2;

[[noreturn]] void Reject(const std::string& text)
{
    throw lynctl::Failure(lynctl::kExitUsage, text);
}

std::string NameOf(const Phone& phone)
{
    if (!phone.scanResponse) {
        return {};
    }
    const auto found = lyn::platform::FindManufacturerData(*phone.scanResponse);
    if (!found || found->data.size() < kNameOffset) {
        return {};
    }
    return {found->data.begin() + kNameOffset, found->data.end()};
}

Phone FromScenario(const Arguments& arguments)
{
    std::vector<Phone> phones;
    try {
        phones = lyn::simulator::ReadPhones(arguments.scenario);
    } catch (const lyn::simulator::ScenarioError& error) {
        Reject(error.what());
    }
    if (arguments.phone.empty()) {
        if (phones.size() != 1) {
            Reject(arguments.scenario + " has " + std::to_string(phones.size()) + " phones: --phone is needed");
        }
        return phones.front();
    }
    const auto address = lyn::simulator::CanonicalAddress(arguments.phone);
    const auto isMeant = [&](const Phone& phone) {
        return address ? phone.address == *address : NameOf(phone) == arguments.phone;
    };
    const auto found = std::find_if(phones.begin(), phones.end(), isMeant);
    if (found == phones.end()) {
        Reject(arguments.scenario + " has no phone '" + arguments.phone + "'");
    }
    return *found;
}

Phone FromFeature(const Arguments& arguments)
{
    const auto feature = lyn::simulator::FeatureNamed(arguments.feature);
    if (!feature) {
        Reject("unknown feature '" + arguments.feature + "': mirroring, nodlink or kov");
    }
    if (arguments.uniqueId.size() != lyn::simulator::kUniqueIdLength) {
        Reject("--id must have 22 bytes");
    }
    Phone phone;
    if (*feature == Feature::nodLink) {
        phone.advertising = lyn::simulator::NodLinkPhoneAdvertising(true, true);
    } else {
        phone.advertising = lyn::simulator::PhoneAdvertising(*feature, arguments.uniqueId);
        phone.scanResponse = lyn::simulator::PhoneScanResponse(*feature, arguments.name);
    }
    phone.services = {lyn::simulator::FeatureService(*feature)};
    for (const std::string& text : arguments.answers) {
        phone.services.front().characteristics.front().answers.push_back(Answer{.text = text});
    }
    return phone;
}

}  // namespace

Phone ChoosePhone(const Arguments& arguments)
{
    return arguments.scenario.empty() ? FromFeature(arguments) : FromScenario(arguments);
}

std::vector<std::string> LeftOut(const Phone& phone)
{
    const Phone plain;
    std::vector<std::string> lines;
    if (!phone.connects.empty()) {
        lines.emplace_back("connects: the adapter accepts every connect");
    }
    if (phone.maxMtu != plain.maxMtu || phone.mtuStatus != plain.mtuStatus ||
        phone.mtuDelayMs != plain.mtuDelayMs) {
        lines.emplace_back("mtu: bluetoothd agrees on it");
    }
    if (phone.joinsAtMs != plain.joinsAtMs || phone.leavesAtMs || phone.limit != plain.limit) {
        lines.emplace_back("joinsAtMs, leavesAtMs, limit: the phone is there from start to end");
    }
    return lines;
}

}  // namespace lynphone
