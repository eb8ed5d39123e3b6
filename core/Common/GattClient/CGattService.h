// SPDX-License-Identifier: Apache-2.0
//
// One GATT service of a connected phone and its characteristics. Owned through a shared pointer whose
// deleter calls Deinit() first. Copies share the characteristics. No lock, as in CGattCharacteristic.
#pragma once

#include <list>
#include <map>
#include <memory>
#include <string>

#include "Common/GattClient/CGattCharacteristic.h"

namespace lyn {

class CGattService {
public:
    CGattService() = default;
    /// @param keeper what keeps the characteristics while a callback runs: the client that owns the service
    explicit CGattService(const std::string& uuid, std::weak_ptr<void> keeper = {});

    /// Looks the service up and sets its characteristics up; one that cannot be set up is left out. False
    /// when the phone has no such service.
    bool Init(bt_gatt_client_h client, const std::list<std::string>& characteristicUuids,
              const CharacteristicValueChangedCb& cb);
    void Deinit();

    /// Throws LynExceptionInvalidParam for a characteristic that was not set up.
    std::shared_ptr<CGattCharacteristic> GetCharacteristic(const std::string& uuid);

private:
    std::map<std::string, std::shared_ptr<CGattCharacteristic>> m_Characteristics;
    std::string m_Uuid;
    std::weak_ptr<void> m_Keeper;
    bt_gatt_h m_hService = nullptr;
};

}  // namespace lyn
