// SPDX-License-Identifier: Apache-2.0
#include "Common/GattClient/CGattCharacteristic.h"

#include <utility>

#include "Common/PlatformCodes.h"
#include "Common/PlatformText.h"
#include "lyn_service_log.h"

namespace lyn {

CGattCharacteristic::CGattCharacteristic(const std::string& uuid, std::weak_ptr<void> keeper)
    : m_Uuid(uuid),
      m_Keeper(std::move(keeper))
{
}

// A copy is another object for the platform's callbacks, so the token is not copied.
CGattCharacteristic::CGattCharacteristic(const CGattCharacteristic& other)
    : m_hCharacteristic(other.m_hCharacteristic),
      m_WrietCompletedCb(other.m_WrietCompletedCb),
      m_CharacteristicValueChangedCb(other.m_CharacteristicValueChangedCb),
      m_Uuid(other.m_Uuid),
      m_Keeper(other.m_Keeper)
{
}

CGattCharacteristic& CGattCharacteristic::operator=(const CGattCharacteristic& other)
{
    if (this != &other) {
        m_hCharacteristic = other.m_hCharacteristic;
        m_WrietCompletedCb = other.m_WrietCompletedCb;
        m_CharacteristicValueChangedCb = other.m_CharacteristicValueChangedCb;
        m_Uuid = other.m_Uuid;
        m_Keeper = other.m_Keeper;
    }
    return *this;
}

CGattCharacteristic::~CGattCharacteristic() = default;

bool CGattCharacteristic::Init(bt_gatt_h service, CharacteristicValueChangedCb cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (service == nullptr) {
        LYN_LOGE("%s", "service handle is nullptr");
        return false;
    }
    LYN_LOGD("uuid : %s", m_Uuid.c_str());
    bt_gatt_h handle = nullptr;
    if (bt_gatt_service_get_characteristic(service, m_Uuid.c_str(), &handle) != PLATFORM_OK) {
        LYN_LOGE("%s", "Failt to get chr handle");
        return false;
    }
    m_hCharacteristic = handle;
    m_CharacteristicValueChangedCb = std::move(cb);
    if (bt_gatt_client_set_characteristic_value_changed_cb(m_hCharacteristic, ValueChangedTrampoline,
                                                           m_Live.UserData()) != PLATFORM_OK) {
        LYN_LOGE("%s", "fail to bt_gatt_client_set_characteristic_value_changed_cb");
        m_CharacteristicValueChangedCb = nullptr;
        m_hCharacteristic = nullptr;
        return false;
    }
    return true;
}

bool CGattCharacteristic::Deinit()
{
    if (m_hCharacteristic != nullptr) {
        bt_gatt_client_unset_characteristic_value_changed_cb(m_hCharacteristic);
    }
    m_hCharacteristic = nullptr;
    return true;
}

bool CGattCharacteristic::write(const std::string& value, CharacteristicWriteCompletedCb cb)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    if (bt_gatt_set_value(m_hCharacteristic, value.c_str(), static_cast<int>(value.size())) != PLATFORM_OK) {
        LYN_LOGE("fail to bt_gatt_set_value(%s)", value.c_str());
        return false;
    }
    m_WrietCompletedCb = std::move(cb);
    if (bt_gatt_client_write_value(m_hCharacteristic, WriteCompletedTrampoline, m_Live.UserData()) !=
        PLATFORM_OK) {
        LYN_LOGE("%s", "fail to bt_gatt_client_write_value");
        m_WrietCompletedCb = nullptr;
        return false;
    }
    return true;
}

void CGattCharacteristic::OnCharateristicValueChaned(bt_gatt_h handle, char* value, int length)
{
    if (handle != m_hCharacteristic) {
        LYN_LOGE("%s", "handle is invalid");
        return;
    }
    const CharacteristicValueChangedCb callback = m_CharacteristicValueChangedCb;
    if (!callback) {
        LYN_LOGE("%s", "m_CharacteristicValueChangedCb is nullptr");
        return;
    }
    LYN_LOGI("value : %s, len : %d", Printable(value), length);
    callback(value, length);  // May destroy this object.
}

void CGattCharacteristic::OnWriteCompleted(int result, bt_gatt_h handle)
{
    if (handle != m_hCharacteristic) {
        LYN_LOGE("%s", "handle is invalid");
        return;
    }
    const CharacteristicWriteCompletedCb callback = m_WrietCompletedCb;
    if (!callback) {
        LYN_LOGE("%s", "m_WrietCompletedCb is nullptr");
        return;
    }
    LYN_LOGI("result : %d", result);
    callback(result);  // May destroy this object.
}

void CGattCharacteristic::GetSerivceUuid(void* characteristic, std::string& uuid)
{
    const ApiTracker tracker(__PRETTY_FUNCTION__, __LINE__);
    bt_gatt_h service = nullptr;
    if (bt_gatt_characteristic_get_service(characteristic, &service) != PLATFORM_OK) {
        LYN_LOGE("%s", "fail to bt_gatt_characteristic_get_service");
        return;
    }
    char* buffer = nullptr;
    const int result = bt_gatt_get_uuid(service, &buffer);
    const PlatformText text(buffer);
    if (result != PLATFORM_OK) {
        LYN_LOGE("%s", "fail to bt_gatt_get_uuid");
        return;
    }
    if (!text) {
        LYN_LOGE("%s", "uuid is nullptr");
        return;
    }
    uuid = text.get();
}

void CGattCharacteristic::ValueChangedTrampoline(bt_gatt_h handle, char* value, int length, void* userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "userData is nullptr");
        return;
    }
    CallLive<CGattCharacteristic>(userData, [&](CGattCharacteristic& characteristic) {
        characteristic.OnCharateristicValueChaned(handle, value, length);
    });
}

void CGattCharacteristic::WriteCompletedTrampoline(int result, bt_gatt_h handle, void* userData)
{
    if (userData == nullptr) {
        LYN_LOGE("%s", "userData is nullptr");
        return;
    }
    CallLive<CGattCharacteristic>(
        userData, [&](CGattCharacteristic& characteristic) { characteristic.OnWriteCompleted(result, handle); });
}

}  // namespace lyn
