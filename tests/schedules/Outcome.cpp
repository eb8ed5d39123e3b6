// SPDX-License-Identifier: Apache-2.0
#include "schedules/Outcome.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

#include "schedules/Conductor.h"

namespace lyn::schedules {
namespace {

Outcome* MapOutcome()
{
    void* memory = ::mmap(nullptr, sizeof(Outcome), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        throw std::runtime_error("no shared memory");
    }
    return new (memory) Outcome;
}

constexpr std::uint64_t kFnvPrime = 0x100000001B3U;

std::uint64_t FingerprintOf(const Move& move)
{
    const auto number = static_cast<std::uint64_t>(move.number) & 0xFFU;
    return static_cast<std::uint64_t>(move.who) | static_cast<std::uint64_t>(move.what) << 8U | number << 16U |
           static_cast<std::uint64_t>(move.handle) << 24U;
}

template <std::size_t size>
void Copy(std::array<char, size>& to, const std::string& text)
{
    const std::size_t length = text.copy(to.data(), size - 1);
    to[length] = '\0';
}

}  // namespace

Outcome& TheOutcome()
{
    static Outcome* const outcome = MapOutcome();
    return *outcome;
}

void Outcome::BeginScript(const std::string& header)
{
    scriptSize = header.copy(script.data(), script.size() - 1);
    lastLine = scriptSize;
    lastTimes = 0;
}

// A move that is as the one before makes its line "A 3".
void Outcome::Record(const Move& move)
{
    const bool isSame = lastTimes > 0 && move.what == What::goOn && move == lastMove;
    lastTimes = isSame ? lastTimes + 1 : 1;
    lastLine = isSame ? lastLine : scriptSize;
    lastMove = move;
    counts.fingerprint = (counts.fingerprint ^ FingerprintOf(move)) * kFnvPrime;
    const std::string line = ToText(move) + (isSame ? " " + std::to_string(lastTimes) : "") + "\n";
    if (lastLine + line.size() < script.size()) {
        std::memcpy(script.data() + lastLine, line.data(), line.size());
        scriptSize = lastLine + line.size();
        script[scriptSize] = '\0';
    }
}

void Fail(const char* kind, const std::string& text)
{
    Outcome& outcome = TheOutcome();
    if (!outcome.hasFailed.exchange(true)) {
        Copy(outcome.kind, kind);
        Copy(outcome.text, text + "\n" + Conductor::Instance().Describe());
    }
    ::_exit(1);
}

}  // namespace lyn::schedules
