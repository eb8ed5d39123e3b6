// SPDX-License-Identifier: Apache-2.0
//
// Names of BlueZ on the bus, its objects, and what its errors mean.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "bus/Bus.h"

namespace lyn::linux_platform {

inline constexpr const char* kBluez = "org.bluez";
inline constexpr const char* kAdapter = "org.bluez.Adapter1";
inline constexpr const char* kDevice = "org.bluez.Device1";
inline constexpr const char* kGattService = "org.bluez.GattService1";
inline constexpr const char* kGattCharacteristic = "org.bluez.GattCharacteristic1";
inline constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
inline constexpr const char* kObjectManager = "org.freedesktop.DBus.ObjectManager";

/// A method of BlueZ's object at `path`.
Method BluezMethod(const std::string& path, const char* interface, const char* name);

/// Asks for all objects of BlueZ.
Method AllObjects();

/// Calls `each` for every object of an answer to AllObjects() that has the interface.
void ForEachObject(const Reply& objects, const char* interface,
                   const std::function<void(const std::string& path, GVariant* properties)>& each);

/// The new values a{sv} that a PropertiesChanged signal tells; null when it is malformed.
Variant ChangedProperties(GVariant* signal);

/// The object that an InterfacesAdded or InterfacesRemoved signal tells of, if it has the interface now, or has
/// lost it; empty otherwise, and when the signal is malformed.
std::string ObjectWithAdded(GVariant* signal, const char* interface);
std::string ObjectWithRemoved(GVariant* signal, const char* interface);

/// The arguments of SetDiscoveryFilter: LE only, and every advert of a phone, also when nothing in it is new.
/// bluetoothd has one filter for a process: whoever discovers must ask for the same.
GVariant* DiscoveryFilter();

/// The object of a device of an adapter. The address may have any letter case.
std::string DevicePath(const std::string& adapterPath, const std::string& address);

/// Logs what BlueZ refused and how it put it: a code of the seam says less.
void WarnOfRefusal(const std::string& path, const char* method, const BusError& error);

/// Codes of the seam that come from BlueZ's errors: see gatt.h and bluetooth.h for those with a meaning.
int CodeOf(const BusError& error);

}  // namespace lyn::linux_platform
