// SPDX-License-Identifier: Apache-2.0
#include "adverts/AdvertFilter.h"

#include <cstdint>

#include "ManufacturerData.h"
#include "adverts/HciReports.h"

namespace lyn::linux_platform {

namespace {

// Places in a packet that holds one report.
constexpr unsigned kPacketType = 0;
constexpr unsigned kEventCode = 1;
constexpr unsigned kSubevent = 3;
constexpr unsigned kReportCount = 4;
constexpr unsigned kEventType = 5;
constexpr unsigned kData = 14;
constexpr unsigned kExtendedData = 29;

constexpr unsigned kScanResponse = 0x04;
constexpr unsigned kExtendedScanResponseBit = 0x08;
constexpr unsigned kLegacyBit = 0x10;

/// Legacy data have at most 31 bytes, and a structure that is no padding has at least two.
constexpr unsigned kMostStructures = 16;

constexpr unsigned kDrop = 0;
constexpr unsigned kKeep = 0xFFFF;

/// Company identifier as two bytes are loaded: in network order.
constexpr unsigned kCompanyLoaded = (platform::kPhoneCompany & 0xFFU) << 8 | platform::kPhoneCompany >> 8;

/// Writes the program from its first instruction to its last. Reading behind the end of a packet drops it.
class Assembler {
public:
    void LoadByte(unsigned at) { Add(BPF_LD | BPF_B | BPF_ABS, at); }
    void LoadByteAtX(unsigned at) { Add(BPF_LD | BPF_B | BPF_IND, at); }
    void LoadTwoBytesAtX(unsigned at) { Add(BPF_LD | BPF_H | BPF_IND, at); }
    void SetX(unsigned value) { Add(BPF_LDX | BPF_IMM, value); }
    void Return(unsigned result) { Add(BPF_RET | BPF_K, result); }

    void ReturnIf(unsigned value, unsigned result)
    {
        Add(BPF_JMP | BPF_JEQ | BPF_K, value, 0, 1);
        Return(result);
    }
    void ReturnUnless(unsigned value, unsigned result)
    {
        Add(BPF_JMP | BPF_JEQ | BPF_K, value, 1, 0);
        Return(result);
    }
    void ReturnIfAnyBit(unsigned bits, unsigned result)
    {
        Add(BPF_JMP | BPF_JSET | BPF_K, bits, 0, 1);
        Return(result);
    }
    void ReturnUnlessAnyBit(unsigned bits, unsigned result)
    {
        Add(BPF_JMP | BPF_JSET | BPF_K, bits, 1, 0);
        Return(result);
    }
    void SkipUnless(unsigned value, std::uint8_t instructions)
    {
        Add(BPF_JMP | BPF_JEQ | BPF_K, value, 0, instructions);
    }
    void Skip(unsigned instructions) { Add(BPF_JMP | BPF_JA, instructions); }

    void Keep(unsigned slot) { Add(BPF_ST, slot); }
    void AddKeptToX(unsigned slot)
    {
        Add(BPF_LD | BPF_MEM, slot);
        Add(BPF_ALU | BPF_ADD | BPF_X, 0);
        Add(BPF_MISC | BPF_TAX, 0);
    }
    void AddToX(unsigned value)
    {
        Add(BPF_MISC | BPF_TXA, 0);
        Add(BPF_ALU | BPF_ADD, value);
        Add(BPF_MISC | BPF_TAX, 0);
    }

    std::vector<sock_filter> program;

private:
    void Add(unsigned code, unsigned value, std::uint8_t ifTrue = 0, std::uint8_t ifFalse = 0)
    {
        program.push_back({static_cast<std::uint16_t>(code), ifTrue, ifFalse, value});
    }
};

/// What is the same for both kinds of events.
void CheckOneAdvertisingReport(Assembler& out)
{
    out.LoadByte(kReportCount);
    out.ReturnUnless(1, kKeep);
    out.LoadByte(kEventType);
}

Assembler LegacyPart()
{
    Assembler out;
    CheckOneAdvertisingReport(out);
    out.ReturnIf(kScanResponse, kKeep);
    out.SetX(kData);
    return out;
}

Assembler ExtendedPart()
{
    Assembler out;
    CheckOneAdvertisingReport(out);
    out.ReturnIfAnyBit(kExtendedScanResponseBit, kKeep);
    out.ReturnUnlessAnyBit(kLegacyBit, kKeep);
    out.SetX(kExtendedData);
    return out;
}

/// X is at a structure: ends with the first manufacturer data, or at padding, or moves X to the next one.
void LookAtStructure(Assembler& out)
{
    constexpr unsigned kLength = 0;  // slot
    out.LoadByteAtX(0);
    out.ReturnIf(0, kDrop);
    out.Keep(kLength);
    out.LoadByteAtX(1);
    out.SkipUnless(platform::kManufacturerDataType, 4);
    out.LoadTwoBytesAtX(2);
    out.ReturnIf(kCompanyLoaded, kKeep);
    out.Return(kDrop);
    out.AddKeptToX(kLength);
    out.AddToX(1);
}

void Append(Assembler& out, const Assembler& part)
{
    out.program.insert(out.program.end(), part.program.begin(), part.program.end());
}

}  // namespace

std::vector<sock_filter> AdvertFilter()
{
    Assembler out;
    out.LoadByte(kPacketType);
    out.ReturnUnless(kHciEventPacket, kDrop);
    out.LoadByte(kEventCode);
    out.ReturnUnless(kLeMetaEvent, kDrop);
    out.LoadByte(kSubevent);

    Assembler legacy = LegacyPart();
    const Assembler extended = ExtendedPart();
    legacy.Skip(static_cast<unsigned>(extended.program.size() + 2));
    out.SkipUnless(kAdvertisingReport, static_cast<std::uint8_t>(legacy.program.size()));
    Append(out, legacy);
    out.ReturnUnless(kExtendedAdvertisingReport, kDrop);
    Append(out, extended);

    for (unsigned i = 0; i < kMostStructures; ++i) {
        LookAtStructure(out);
    }
    out.Return(kKeep);
    return out.program;
}

}  // namespace lyn::linux_platform
