// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/PowerSupplyReader.h"

#include "power/BatteryAttributes.h"
#include "power/DeviceAttributes.h"

#include <algorithm>

namespace velmora {

namespace {

const std::filesystem::path supplyClass = "class/power_supply";

enum class Kind : std::uint8_t { none, battery, ups, other };

Kind kindOf(const DeviceAttributes& supply)
{
    const auto type = supply.text("type");
    if (!type || supply.text("scope") == "Device") return Kind::none;
    if (*type == "Battery") return supply.integer("present") == 0 ? Kind::none : Kind::battery;
    return *type == "UPS" ? Kind::ups : Kind::other;
}

/// What the batteries tell of the power from outside, where nothing else does.
bool seemsExternallyPowered(const std::vector<BatteryReading>& batteries)
{
    return std::ranges::none_of(batteries, [](const BatteryReading& battery) {
        const bool isSilent = battery.status == SupplyStatus::unknown;
        return battery.status == SupplyStatus::discharging || (isSilent && battery.rate.value_or(0) < 0);
    });
}

} // namespace

PowerSupplyReading PowerSupplyReader::read()
{
    PowerSupplyReading reading;
    std::optional<bool> isOnline; // of all supplies that tell
    for (const auto& name : sysfs_.list(supplyClass)) {
        const DeviceAttributes supply(sysfs_, complaints_, supplyClass / name);
        const Kind kind = kindOf(supply);
        if (kind == Kind::ups || kind == Kind::other) {
            if (const auto online = supply.integer("online"))
                isOnline = isOnline.value_or(false) || *online != 0;
        }
        if (kind != Kind::battery && kind != Kind::ups) continue;
        BatteryReading battery = readBattery(supply);
        battery.name = name;
        battery.folder = sysfs_.root() / supplyClass / name;
        (kind == Kind::battery ? reading.batteries : reading.upses).push_back(std::move(battery));
    }
    reading.isExternallyPowered = isOnline ? *isOnline : seemsExternallyPowered(reading.batteries);
    return reading;
}

std::vector<std::filesystem::path> PowerSupplyReader::internalBatteryFolders()
{
    std::vector<std::filesystem::path> folders;
    for (const auto& name : sysfs_.list(supplyClass)) {
        const DeviceAttributes supply(sysfs_, complaints_, supplyClass / name);
        if (kindOf(supply) == Kind::battery) folders.push_back(sysfs_.root() / supplyClass / name);
    }
    return folders;
}

} // namespace velmora
