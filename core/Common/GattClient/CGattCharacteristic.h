// SPDX-License-Identifier: Apache-2.0
//
// One characteristic of a connected phone: its notifications and writes. Owned through a shared pointer
// whose deleter calls Deinit() first. No lock: the owner's steps and the platform's callbacks come one at a time,
// and the object may be destroyed from inside its own callbacks.
#pragma once

#include <memory>
#include <string>

#include "Common/GattClient/GattCallbacks.h"
#include "Common/LiveObject.h"

namespace lyn {

class CGattCharacteristic {
public:
    CGattCharacteristic() = default;
    /// @param keeper what keeps this object while a callback runs: the client that owns it
    explicit CGattCharacteristic(const std::string& uuid, std::weak_ptr<void> keeper = {});
    CGattCharacteristic(const CGattCharacteristic& other);
    CGattCharacteristic& operator=(const CGattCharacteristic& other);
    ~CGattCharacteristic();

    std::shared_ptr<void> Keep() const { return m_Keeper.lock(); }

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
    std::weak_ptr<void> m_Keeper;
    LiveObject<CGattCharacteristic> m_Live{*this};
};

}  // namespace lyn
