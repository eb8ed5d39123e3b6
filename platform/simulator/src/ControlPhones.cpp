// SPDX-License-Identifier: Apache-2.0
#include "Address.h"
#include "AdvertisingData.h"
#include "Simulator.h"

namespace lyn::simulator {

namespace {

Phone FeaturePhone(const std::string& address, Feature feature, Bytes advertising)
{
    Phone phone;
    phone.address = address;
    phone.advertising = std::move(advertising);
    phone.services = {FeatureService(feature)};
    return phone;
}

Phone NamedPhone(Feature feature, const std::string& address, const std::string& name, const std::string& uniqueId)
{
    Phone phone = FeaturePhone(address, feature, PhoneAdvertising(feature, uniqueId));
    phone.scanResponse = PhoneScanResponse(feature, name);
    return phone;
}

std::string Canonical(const std::string& address)
{
    return CanonicalAddress(address).value_or(address);
}

}  // namespace

void AddPhone(const Phone& phone)
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    simulator.room.Add(phone);
}

void RemovePhone(const std::string& address)
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    simulator.room.Remove(Canonical(address));
}

std::vector<Phone> Phones()
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    std::vector<Phone> phones;
    for (const auto& phone : simulator.room.All()) {
        phones.push_back(phone->phone);
    }
    return phones;
}

std::vector<std::string> MessagesTo(const std::string& address)
{
    Simulator& simulator = Simulator::Started();
    const std::lock_guard lock(simulator.mutex);
    return simulator.room.MessagesTo(Canonical(address));
}

Phone MirroringPhone(const std::string& address, const std::string& name, const std::string& uniqueId)
{
    return NamedPhone(Feature::mirroring, address, name, uniqueId);
}

Phone KovPhone(const std::string& address, const std::string& name, const std::string& uniqueId)
{
    return NamedPhone(Feature::kov, address, name, uniqueId);
}

Phone NodLinkPhone(const std::string& address, bool mirroringAvailable, bool version3)
{
    return FeaturePhone(address, Feature::nodLink, NodLinkPhoneAdvertising(mirroringAvailable, version3));
}

Phone NodLinkAvDevice(const std::string& address)
{
    return FeaturePhone(address, Feature::nodLink, NodLinkAvAdvertising());
}

}  // namespace lyn::simulator
