// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>

namespace lyn::linux_platform {

/// How many users the Bluetooth of this process has. bluetoothd is made ready by the system, so the first user
/// changes little; but bluetoothd keeps the links of a process that ends, so the last one takes them down. Any
/// thread.
class Product {
public:
    static Product& Instance();

    /// Succeeds without bluetoothd too: the adapter is off until it comes.
    int Init();
    void Deinit();

private:
    std::mutex m_mutex;
    int m_users = 0;
};

}  // namespace lyn::linux_platform
