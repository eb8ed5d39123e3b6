// SPDX-License-Identifier: Apache-2.0
#include "Common/GattClient/CGattService.h"

#include <utility>

#include "Common/LynException.h"
#include "Common/PlatformCodes.h"
#include "lyn_service_log.h"

namespace lyn {
namespace {

void DeleteCharacteristic(CGattCharacteristic* characteristic)
{
    characteristic->Deinit();
    delete characteristic;
}

}  // namespace

CGattService::CGattService(const std::string& uuid, std::weak_ptr<void> keeper)
    : m_Uuid(uuid),
      m_Keeper(std::move(keeper))
{
}

bool CGattService::Init(bt_gatt_client_h client, const std::list<std::string>& characteristicUuids,
                        const CharacteristicValueChangedCb& cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    bt_gatt_h handle = nullptr;
    if (bt_gatt_client_get_service(client, m_Uuid.c_str(), &handle) != PLATFORM_OK) {
        LYN_LOGE("fail to bt_gatt_client_get_service for %s", m_Uuid.c_str());
        return false;
    }
    m_hService = handle;
    for (const std::string& uuid : characteristicUuids) {
        LYN_LOGI("register characteristic for %s", uuid.c_str());
        const std::shared_ptr<CGattCharacteristic> characteristic(new CGattCharacteristic(uuid, m_Keeper),
                                                                  DeleteCharacteristic);
        if (characteristic->Init(m_hService, cb)) {
            m_Characteristics.emplace(uuid, characteristic);
        }
    }
    return true;
}

void CGattService::Deinit()
{
    m_Characteristics.clear();
}

std::shared_ptr<CGattCharacteristic> CGattService::GetCharacteristic(const std::string& uuid)
{
    const auto found = m_Characteristics.find(uuid);
    if (found == m_Characteristics.end()) {
        LYN_LOGE("no charateristic for %s", uuid.c_str());
        throw LynExceptionInvalidParam();
    }
    return found->second;
}

}  // namespace lyn
