// SPDX-License-Identifier: Apache-2.0
#include <clocale>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

#include "arguments.h"
#include "bus/Bus.h"
#include "chosen_phone.h"
#include "failure.h"
#include "loop.h"
#include "phone.h"
#include "reports.h"
#include "terminal.h"

namespace lynphone {

namespace {

int Serve(const Arguments& arguments)
{
    const lyn::simulator::Phone phone = ChoosePhone(arguments);
    for (const std::string& line : LeftOut(phone)) {
        Reports::Remark("left out: " + line);
    }
    const auto bus = lyn::linux_platform::Bus::System();
    if (bus == nullptr) {
        throw lynctl::Failure(lynctl::kExitFailure, "the system bus cannot be reached");
    }
    lynctl::Loop loop;
    std::string failure;
    const Reports reports(arguments.json, loop);
    const PhoneOnAir onAir(bus, arguments.adapter, phone, reports, [&](const std::string& why) {
        failure = why;
        loop.Quit();
    });
    loop.Run(0);
    if (!failure.empty()) {
        throw lynctl::Failure(lynctl::kExitFailure, failure);
    }
    return lynctl::kExitSuccess;
}

int Main(const std::vector<std::string>& words)
{
    const Arguments arguments = ParseArguments(words);
    if (arguments.help) {
        lynctl::Print(HelpText());
        return lynctl::kExitSuccess;
    }
    if (arguments.version) {
        lynctl::Print("lyn-phone " LYN_VERSION "\n");
        return lynctl::kExitSuccess;
    }
    return Serve(arguments);
}

}  // namespace

}  // namespace lynphone

int main(int argc, char** argv)
{
    std::setlocale(LC_CTYPE, "");
    try {
        return lynphone::Main(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
    } catch (const lynctl::Failure& failure) {
        lynphone::Reports::Remark(failure.what());
        return failure.Status();
    } catch (const std::exception& error) {
        lynphone::Reports::Remark(error.what());
        return lynctl::kExitFailure;
    }
}
