// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "FakeDaemon.h"

namespace lyn::linux_tests {

/// logind for tests, as far as sleep and shutdown go, with the other ends of the delays that it has granted.
class FakeLogind : public FakeDaemon {
public:
    /// On the bus.
    FakeLogind();
    ~FakeLogind() override;

    void PrepareForSleep(bool begins);
    void PrepareForShutdown(bool begins);
    /// Any signal of its manager; a floating tuple is taken over.
    void Tell(const std::string& signal, GVariant* values);

    /// How many delays have been granted.
    std::size_t Granted() const;
    /// How many of them are still held.
    std::size_t Held() const;
    bool IsHeld(std::size_t nth) const;

    /// The arguments of the last request, in GVariant text form.
    std::string Asked() const;

    /// What the next grants consist of: how many descriptors, and which of them the answer names.
    void GrantWith(int descriptors, int index);

private:
    void Grant(const Call& call);

    std::vector<int> m_ends;
    std::string m_asked;
    int m_descriptors = 1;
    int m_index = 0;
};

}  // namespace lyn::linux_tests
