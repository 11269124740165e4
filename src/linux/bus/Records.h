// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "wire/KeyedArchive.h"
#include "wire/VelmoraProtocol.h"

/// The wire's records as D-Bus values. All throw std::system_error where the message is broken or memory
/// runs out.
namespace velmora::dbus {

/// Appends `archive` as an `a{sv}`. Text that is not UTF-8 is cleaned: the bus would close the connection on
/// it.
void append(sd_bus_message* message, const KeyedArchive& archive);
/// Appends one value as its own type, without a variant around it.
void append(sd_bus_message* message, const KeyedArchive::Value& value);
/// Appends the settings' values in the order of the wire's table.
void append(sd_bus_message* message, const ChargingSettings& settings);

/// D-Bus type of a value: `b`, `x`, `d` or `s`.
char typeOf(const KeyedArchive::Value& value);

inline constexpr std::size_t maximumKeys = 64; ///< of a record that is read; the rest is passed over

/// Reads an `a{sv}`. Variants other than `b`, `x`, `d` and `s` are passed over, whatever they hold.
KeyedArchive readArchive(sd_bus_message* message);
/// Reads an `a{sv}` that somebody wrote on purpose. Throws std::invalid_argument where readArchive would pass
/// something over or cut it off.
KeyedArchive readWholeArchive(sd_bus_message* message);
ChargingSettings readSettings(sd_bus_message* message);

} // namespace velmora::dbus
