// SPDX-License-Identifier: Apache-2.0
//
// One characteristic of a connected phone: its notifications and writes. Owned through a shared pointer
// whose deleter calls Deinit() first. Everything here runs under the lock on live objects, and the object
// may be destroyed from inside its own callbacks.
#pragma once

#include <string>

#include "Common/GattClient/GattCallbacks.h"
#include "Common/LiveObject.h"

namespace lyn {

class CGattCharacteristic {
public:
    CGattCharacteristic() = default;
    explicit CGattCharacteristic(const std::string& uuid);
    CGattCharacteristic(const CGattCharacteristic& other);
    CGattCharacteristic& operator=(const CGattCharacteristic& other);
    ~CGattCharacteristic();

    /// Looks the characteristic up and asks for its notifications. False when the phone has none such.
    bool Init(bt_gatt_h service, CharacteristicValueChangedCb cb);
    /// Ends the notifications.
    bool Deinit();

    /// Begins to write a value; its end is reported once to cb. False when it could not be begun.
    bool write(const std::string& value, CharacteristicWriteCompletedCb cb);

    void OnCharateristicValueChaned(bt_gatt_h handle, char* value, int length);
    void OnWriteCompleted(int result, bt_gatt_h handle);

    /// The UUID of the service that a characteristic handle belongs to; left alone on failure.
    void GetSerivceUuid(void* characteristic, std::string& uuid);

private:
    static void ValueChangedTrampoline(bt_gatt_h handle, char* value, int length, void* userData);
    static void WriteCompletedTrampoline(int result, bt_gatt_h handle, void* userData);

    bt_gatt_h m_hCharacteristic = nullptr;
    CharacteristicWriteCompletedCb m_WrietCompletedCb;
    CharacteristicValueChangedCb m_CharacteristicValueChangedCb;
    std::string m_Uuid;
    LiveObject<CGattCharacteristic> m_Live{this};
};

}  // namespace lyn
