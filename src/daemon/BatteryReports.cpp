// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "BatteryReports.h"

#include <cmath>

namespace velmora {

namespace {

std::string_view stateOf(SupplyStatus status)
{
    using State = BatteryReport::State;
    switch (status) {
    case SupplyStatus::charging:
        return State::charging;
    case SupplyStatus::discharging:
        return State::discharging;
    case SupplyStatus::notCharging:
        return State::notCharging;
    case SupplyStatus::full:
        return State::full;
    case SupplyStatus::unknown:
        break;
    }
    return State::unknown;
}

/// To thousandths, which no gauge measures: 23.94 Wh is not to read 23.939999999999998.
std::optional<double> rounded(std::optional<double> value)
{
    return value ? std::optional(std::round(*value * 1000) / 1000) : std::nullopt;
}

BatteryReport reportOf(const BatteryReading& battery)
{
    return {.name = battery.name,
            .state = std::string(stateOf(battery.status)),
            .percentage = rounded(battery.percentage),
            .power = rounded(battery.power),
            .energyNow = rounded(battery.energyNow),
            .energyFull = rounded(battery.energyFull),
            .energyFullDesign = rounded(battery.energyFullDesign),
            .voltage = rounded(battery.voltage),
            .temperature = rounded(battery.temperature),
            .health = rounded(battery.health),
            .cycleCount = battery.cycleCount,
            .manufacturer = battery.manufacturer,
            .model = battery.model};
}

} // namespace

std::vector<BatteryReport> batteryReports(const std::vector<BatteryReading>& batteries)
{
    std::vector<BatteryReport> reports;
    reports.reserve(batteries.size());
    for (const auto& battery : batteries) reports.push_back(reportOf(battery));
    return reports;
}

} // namespace velmora
