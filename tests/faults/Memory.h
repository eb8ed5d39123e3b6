// SPDX-License-Identifier: Apache-2.0
//
// Want of memory on demand. Linked into a program, these definitions take the place of every form of
// operator new. They count the allocations of the library, and let one of them, or all from one on, fail
// with std::bad_alloc (null for the forms that do not throw).
//
// Whose an allocation is, is told by the stack: the innermost frame of liblyn_service or liblyn_platform
// has asked for it, be it through the C++ library or through JsonCpp. What the simulator, the test and GLib
// allocate never fails. Only the thread that began a shortage is concerned.
#pragma once

#include <cstdint>
#include <vector>

namespace lyn::test {

enum class Shortage {
    once,    ///< the nth allocation fails
    lasting  ///< the nth fails, and all after it until RelieveShortage()
};

/// Begins to count. nth 1 is the first allocation from here on; 0 fails none.
void BeginShortage(int nth, Shortage kind);
void EndShortage();

/// An allocation has failed since BeginShortage() or RelieveShortage().
bool IsShort();
/// Memory is there again.
void RelieveShortage();

/// One allocation of the library: a number for its way through the code, from the outermost caller in.
using Way = std::uint64_t;
/// The ways of all allocations since BeginShortage(). Kept when nth is 0, else empty.
const std::vector<Way>& WaysOfAllocations();
/// True when the nth allocation has come, and failed.
bool HasFailed();
/// Where in liblyn_service the allocation was asked for that failed: an offset for addr2line.
std::uintptr_t PlaceOfFailure();

/// What is allocated in this scope is the application's own, although the library has called it.
class ApplicationsOwn {
public:
    ApplicationsOwn();
    ~ApplicationsOwn();
    ApplicationsOwn(const ApplicationsOwn&) = delete;
    ApplicationsOwn& operator=(const ApplicationsOwn&) = delete;
};

}  // namespace lyn::test
