// SPDX-License-Identifier: Apache-2.0
#include "product/Product.h"

#include "bluez/Adapter.h"
#include "bluez/AdapterReports.h"
#include "gatt/Links.h"

namespace lyn::linux_platform {

Product& Product::Instance()
{
    static Product* const instance = new Product;  // never destroyed: the last user may be a handler at exit
    return *instance;
}

int Product::Init()
{
    AdapterReports::Instance();
    const int code = Adapter::Instance().Watch();
    if (code == 0) {
        const std::lock_guard lock(m_mutex);
        ++m_users;
    }
    return code;
}

void Product::Deinit()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_users == 0 || --m_users != 0) {
            return;
        }
    }
    Links::Instance().LetGo();
}

}  // namespace lyn::linux_platform
