// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gio/gio.h>

#include <functional>
#include <string>

namespace lyn::linux_tests {

/// A bus of this process alone, which the platform takes for the system bus from the first use on. One for the
/// process: the platform keeps its connection.
class PrivateBus {
public:
    static PrivateBus& Instance();

    /// The bus dies with all connections to it, and comes back. No fake may be on it.
    static void Restart();

    const std::string& Address() const { return m_address; }

private:
    PrivateBus();
    void Begin();

    GTestDBus* m_bus = nullptr;
    std::string m_address;
};

/// Runs the default main context until the condition holds; false after a generous time.
bool RunUntil(const std::function<bool()>& done);

/// Runs the default main context for a short while, in which something must not happen.
void RunQuietly(int milliseconds = 100);

}  // namespace lyn::linux_tests
