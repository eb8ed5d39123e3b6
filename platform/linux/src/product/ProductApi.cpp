// SPDX-License-Identifier: Apache-2.0
#include "PlatformApi.h"
#include "product/Product.h"

using namespace lyn::linux_platform;

int bt_product_init(void)
{
    return Product::Instance().Init();
}

int bt_product_deinit(void)
{
    Product::Instance().Deinit();
    return 0;
}
