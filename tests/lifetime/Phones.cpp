// SPDX-License-Identifier: Apache-2.0
#include "lifetime/Phones.h"

namespace lyn::test {
namespace {

constexpr const char* kUniqueId = "0123456789abcdefghijkl";

simulator::Phone MakePhone(const std::string& service)
{
    if (service == "nodlink") {
        return simulator::NodLinkPhone(kPhone, true, true);
    }
    if (service == "kov") {
        return simulator::KovPhone(kPhone, "Kov phone", kUniqueId);
    }
    return simulator::MirroringPhone(kPhone, "Mirroring phone", kUniqueId);
}

}  // namespace

const std::vector<std::string>& AllServices()
{
    static const std::vector<std::string> names = {"dummy", "mirroring", "nodlink", "kov"};
    return names;
}

const std::vector<std::string>& RadioServices()
{
    static const std::vector<std::string> names = {"mirroring", "nodlink", "kov"};
    return names;
}

simulator::Phone PhoneFor(const std::string& service)
{
    simulator::Phone phone = MakePhone(service);
    phone.intervalMs = 1;
    simulator::Answer answer;
    answer.text = "Success";
    CharacteristicOf(phone).answers = {answer};
    return phone;
}

simulator::Characteristic& CharacteristicOf(simulator::Phone& phone)
{
    return phone.services.at(0).characteristics.at(0);
}

}  // namespace lyn::test
