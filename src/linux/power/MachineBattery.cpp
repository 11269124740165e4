// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/MachineBattery.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace velmora {

namespace {

using Batteries = std::vector<BatteryReading>;
using Quantity = std::optional<double> BatteryReading::*;

/// The sum over those that know it; nothing where none does.
std::optional<double> sumOfKnown(const Batteries& batteries, Quantity quantity)
{
    std::optional<double> sum;
    for (const auto& battery : batteries) {
        if (battery.*quantity) sum = sum.value_or(0) + *(battery.*quantity);
    }
    return sum;
}

/// The sum over all; nothing where one does not know it.
std::optional<double> sumOfAll(const Batteries& batteries, Quantity quantity)
{
    const bool isKnown =
        std::ranges::all_of(batteries, [=](const auto& one) { return (one.*quantity).has_value(); });
    return isKnown ? sumOfKnown(batteries, quantity) : std::nullopt;
}

/// Those that know `quantity`.
Batteries knowing(const Batteries& batteries, Quantity quantity)
{
    Batteries found;
    std::ranges::copy_if(batteries, std::back_inserter(found),
                         [=](const auto& one) { return (one.*quantity).has_value(); });
    return found;
}

/// The mean percentage `quantity` of those that know it, weighted by `weight`; plain where none has a weight.
std::optional<double> mean(const Batteries& batteries, Quantity quantity, Quantity weight)
{
    const Batteries all = knowing(batteries, quantity);
    if (all.empty()) return std::nullopt;
    if (all.size() == 1) return all.front().*quantity; // to the bit: weighing it would round
    const bool isWeighted = sumOfKnown(all, weight).value_or(0) > 0;
    double sum = 0, weights = 0;
    for (const auto& battery : all) {
        const double share = isWeighted ? (battery.*weight).value_or(0) : 1.0;
        sum += *(battery.*quantity) * share;
        weights += share;
    }
    return std::min(std::round(sum / weights * 1e9) / 1e9,
                    100.0); // two at 70 % are 70 %, and not a hair less
}

double lowest(const Batteries& batteries)
{
    double level = 100;
    for (const auto& battery : batteries) level = std::min(level, battery.percentage.value_or(100));
    return level;
}

bool any(const Batteries& batteries, SupplyStatus status)
{
    return std::ranges::any_of(batteries, [=](const auto& one) { return one.status == status; });
}

} // namespace

std::optional<MachineBattery> MachineBattery::of(const Batteries& batteries)
{
    const auto percentage = mean(batteries, &BatteryReading::percentage, &BatteryReading::energyFull);
    if (!percentage) return std::nullopt;

    MachineBattery machine;
    machine.percentage = *percentage;
    machine.lowestPercentage = lowest(batteries);
    machine.rate = sumOfKnown(batteries, &BatteryReading::rate);
    machine.power = sumOfKnown(batteries, &BatteryReading::power);
    const Batteries full = knowing(batteries, &BatteryReading::energyFull);
    machine.energyNow = sumOfAll(full.empty() ? batteries : full, &BatteryReading::energyNow);
    machine.energyFull = sumOfKnown(full, &BatteryReading::energyFull);
    machine.health = mean(batteries, &BatteryReading::health, &BatteryReading::energyFullDesign);
    machine.isCharging = any(batteries, SupplyStatus::charging);
    machine.isDischarging =
        !machine.isCharging && (any(batteries, SupplyStatus::discharging) || machine.rate.value_or(0) < 0);
    machine.isFull =
        std::ranges::all_of(batteries, [](const auto& one) { return one.status == SupplyStatus::full; });
    for (const auto& battery : batteries) {
        machine.cycleCount = std::max(machine.cycleCount, battery.cycleCount);
        machine.temperature = std::max(machine.temperature, battery.temperature);
    }
    if (batteries.size() == 1) {
        machine.timeToFull = batteries.front().timeToFull;
        machine.timeToEmpty = batteries.front().timeToEmpty;
    }
    return machine;
}

} // namespace velmora
