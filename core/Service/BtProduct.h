// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace lyn {

/// The platform's Bluetooth, made ready for a service; given back at the end of the scope unless Keep()
/// has handed it to the service, whose Deinit() then gives it back.
class BtProduct {
public:
    BtProduct();
    ~BtProduct();
    BtProduct(const BtProduct&) = delete;
    BtProduct& operator=(const BtProduct&) = delete;

    bool IsReady() const { return m_bOwned; }
    void Keep() { m_bOwned = false; }

private:
    bool m_bOwned;
};

}  // namespace lyn
