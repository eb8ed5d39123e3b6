// SPDX-License-Identifier: Apache-2.0
//
// Requests that want memory at any one of their steps: such a request is refused, or it ends, and the next one
// is as good as ever. This program fails one allocation of the library of a chosen size, that of a text which
// it knows.
#include <dlfcn.h>
#include <execinfo.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <new>
#include <string_view>

#include "requester/RequestTest.h"

namespace {

std::atomic<std::size_t> g_size{0};
std::atomic<int> g_until{0};

// Whether the library allocates, by itself or by the standard library, and not the simulator or a test.
bool IsTheLibrarys()
{
    std::array<void*, 24> frames{};
    const int depth = backtrace(frames.data(), static_cast<int>(frames.size()));
    for (int i = 0; i < depth; ++i) {
        Dl_info info{};
        const bool isKnown = dladdr(frames[static_cast<std::size_t>(i)], &info) != 0;
        const std::string_view file = isKnown && info.dli_fname != nullptr ? info.dli_fname : "";
        if (file.find("liblyn_") != file.npos) {
            return file.find("liblyn_service") != file.npos;
        }
    }
    return false;
}

// True once, for the allocation that is to fail.
bool IsToFail(std::size_t size)
{
    return size == g_size && IsTheLibrarys() && --g_until == 0;
}

void* Allocate(std::size_t size)
{
    void* const memory = IsToFail(size) ? nullptr : std::malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t size)
{
    return Allocate(size);
}

void* operator new[](std::size_t size)
{
    return Allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace lyn::test {
namespace {

constexpr int kMostAllocations = 200;

class WantOfMemory : public MirroringRequest {
protected:
    static void FailAllocation(std::size_t size, int nth)
    {
        g_size = size;
        g_until = nth;
    }

    // True when the allocation has failed meanwhile.
    static bool Disarm()
    {
        g_size = 0;
        return g_until <= 0;
    }

    // Asks while the nth allocation of this size fails: an exception, a refusal, or one result.
    bool AskWithout(std::size_t size, int nth)
    {
        const std::string address = m_address;  // Nothing of the test's own is to fail.
        app.results.clear();
        lyn_error_e code = LYN_ERROR_INTERNAL;
        FailAllocation(size, nth);
        try {
            code = app.Request(address);
        } catch (const std::bad_alloc&) {
        }
        simulator::Settle();
        const bool failed = Disarm();
        if (code == LYN_ERROR_NONE && app.results.empty() && ElapseTimeout()) {
            simulator::Settle();
        }
        EXPECT_EQ(app.results.size(), code == LYN_ERROR_NONE ? 1U : 0U) << "allocation " << nth;
        return failed;
    }

    // Every allocation of this size fails in its turn. True when this line of the log came of it.
    bool EachAllocationFails(std::size_t size, const std::string& function, const std::string& message)
    {
        bool hasLine = false;
        int nth = 1;
        for (; nth < kMostAllocations && AskWithout(size, nth); ++nth) {
            for (const Line& line : LogLines()) {
                hasLine = hasLine || (line.function == function && line.message == message);
            }
            simulator::ClearLog();
            AddPhone();
        }
        EXPECT_GT(nth, 1);
        EXPECT_LT(nth, kMostAllocations);
        EXPECT_EQ(app.results, std::vector{LYN_REQUEST_INITIATING_RESULT_UNKNOWN_ERR}) << "the last one is whole";
        return hasLine;
    }

    void AddPhone()
    {
        phone.address = m_address;
        phone.services[0].characteristics[0].answers = {Says(m_answer)};
        simulator::AddPhone(phone);
    }

    const std::string m_address = kPhone;
    const std::string m_answer = std::string(301, 'A');
};

TEST_F(WantOfMemory, ForAnAnswerStillEndsTheRequest)
{
    AddPhone();
    EXPECT_TRUE(EachAllocationFails(m_answer.size() + 1, "NotifyRequestResult", "exception : std::bad_alloc"));
}

TEST_F(WantOfMemory, ForAnAddressRefusesTheRequestOrEndsIt)
{
    AddPhone();
    EXPECT_TRUE(EachAllocationFails(m_address.size() + 1, "Connect", "exception : std::bad_alloc"));
}

TEST_F(WantOfMemory, ForTheNameOfAServiceEndsTheRequest)
{
    AddPhone();
    EXPECT_TRUE(
        EachAllocationFails(std::string(feature.serviceUuid).size() + 1, "UpdateConnection", "std::bad_alloc"));
}

}  // namespace
}  // namespace lyn::test
