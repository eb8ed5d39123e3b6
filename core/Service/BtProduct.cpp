// SPDX-License-Identifier: Apache-2.0
#include "Service/BtProduct.h"

#include "Common/PlatformCodes.h"
#include "lyn_platform/bluetooth.h"
#include "lyn_service_log.h"

namespace lyn {

BtProduct::BtProduct() : m_bOwned(bt_product_init() == PLATFORM_OK)
{
    if (!m_bOwned) {
        LYN_LOGE("%s", "fail to bt_product_init");
    }
}

BtProduct::~BtProduct()
{
    if (m_bOwned) {
        bt_product_deinit();
    }
}

}  // namespace lyn
