// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "bus/DBus.h"
#include "wire/ChargingSettings.h"

#include <string>
#include <variant>

namespace velmora {

/// A wish to change some settings and leave the others.
struct SettingsChange {
    ChargingSettings values;
    SettingsMask fields; ///< those of `values` that count
};

/// Reads the `a{sv}` of a SetSettings call: the change, or what is wrong with it as a phrase for the caller.
/// The values' ranges are not checked. Throws std::system_error for a broken message.
std::variant<SettingsChange, std::string> readSettingsChange(sd_bus_message* call);

} // namespace velmora
