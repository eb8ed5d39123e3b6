// SPDX-License-Identifier: Apache-2.0
//
// A program that steers the simulated TV of the installed platform: the phone that it adds is there.
#include <lyn_simulator/simulator.h>

int main()
{
    using namespace lyn::simulator;
    Reset();
    AddPhone(MirroringPhone("AA:BB:CC:DD:EE:01", "Kitchen", "0123456789abcdefghijkl"));
    return Phones().size() == 1 ? 0 : 1;
}
