// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/PowerSupplyReader.h"

#include "power/BatteryAttributes.h"

#include <algorithm>

namespace velmora {

namespace {

enum class Kind : std::uint8_t { none, battery, ups, mains, other };

Kind kindOf(DeviceAttributes& supply)
{
    const auto type = supply.fixedText("type");
    if (!type || supply.fixedText("scope") == "Device") return Kind::none;
    if (*type == "Battery") return supply.integer("present") == 0 ? Kind::none : Kind::battery;
    if (*type == "UPS") return Kind::ups;
    return *type == "Mains" ? Kind::mains : Kind::other;
}

bool isAnyDischarging(const std::vector<BatteryReading>& batteries)
{
    return std::ranges::any_of(batteries,
                               [](const auto& one) { return one.status == SupplyStatus::discharging; });
}

/// What the batteries tell of the power from outside, where nothing else does.
bool seemsExternallyPowered(const std::vector<BatteryReading>& batteries)
{
    return !isAnyDischarging(batteries) && std::ranges::none_of(batteries, [](const auto& battery) {
        return battery.status == SupplyStatus::unknown && battery.rate.value_or(0) < 0;
    });
}

/// What the supplies tell of the power from outside; absent where none of a kind tells.
struct Online {
    std::optional<bool> mains, others;

    void take(Kind kind, std::int64_t online)
    {
        auto& sum = kind == Kind::mains ? mains : others;
        sum = sum.value_or(false) || online != 0;
    }
};

bool isExternallyPowered(const Online& online, const std::vector<BatteryReading>& batteries)
{
    if (!online.mains && !online.others) return seemsExternallyPowered(batteries);
    if (online.mains == false && isAnyDischarging(batteries)) return false;
    return online.mains.value_or(false) || online.others.value_or(false);
}

} // namespace

PowerSupplyReading PowerSupplyReader::read(bool afresh)
{
    PowerSupplyReading reading;
    Online online;
    for (auto& [name, supply] : supplies_.look(afresh)) {
        const Kind kind = kindOf(supply);
        if (kind == Kind::none) continue;
        if (kind != Kind::battery) {
            if (const auto value = supply.integer("online")) online.take(kind, *value);
            if (kind != Kind::ups) continue;
        }
        BatteryReading battery = readBattery(supply);
        battery.name = name;
        (kind == Kind::battery ? reading.batteries : reading.upses).push_back(std::move(battery));
    }
    for (auto& battery : reading.batteries) limiters_.complete(battery.charge, afresh);
    reading.isExternallyPowered = isExternallyPowered(online, reading.batteries);
    return reading;
}

} // namespace velmora
