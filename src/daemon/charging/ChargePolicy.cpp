// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/ChargePolicy.h"

#include "texts/ChargerTexts.h"
#include "wire/ChargerReport.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

/// Without a limit charging begins again a little below full, as chargers do by themselves: topping up from
/// 99 % wears, and a start of 0 would keep some controllers from ever beginning.
constexpr int startWithoutLimit = 95;
/// Whatever the level, charging is to begin now.
constexpr int startNow = 99;

Thresholds band(double end, double hysteresis)
{
    const int whole = static_cast<int>(std::lround(std::clamp(end, 1.0, 100.0)));
    // Some firmware refuses a start equal to the end.
    const int start = std::clamp(static_cast<int>(std::lround(end - hysteresis)), 0, whole - 1);
    return {start, whole};
}

} // namespace

ChargeReading ChargeReading::of(const PowerSnapshot& snapshot)
{
    if (!snapshot.battery) return {};
    const auto& battery = *snapshot.battery;
    return {.percentage = battery.percentage,
            .isCharging = battery.isCharging,
            .isDischarging = battery.isDischarging,
            .isFull = battery.isFull,
            .hasExternalPower = snapshot.supplies.isExternallyPowered,
            .chargingPower = battery.power,
            .emptiest = battery.lowestPercentage};
}

std::string_view name(ChargeControl control)
{
    switch (control) {
    case ChargeControl::thresholds:
        return ChargerReport::Control::thresholds;
    case ChargeControl::endThreshold:
        return ChargerReport::Control::endThreshold;
    case ChargeControl::fixedLimit:
        return ChargerReport::Control::fixedLimit;
    case ChargeControl::none:
        break;
    }
    return ChargerReport::Control::none;
}

std::string_view rawValue(ManualCharging::State state)
{
    switch (state) {
    case ManualCharging::State::paused:
        return "paused";
    case ManualCharging::State::resumed:
        return "resumed";
    case ManualCharging::State::asSet:
        break;
    }
    return "as set";
}

std::optional<ManualCharging::State> manualStateFromRawValue(std::string_view text)
{
    using State = ManualCharging::State;
    for (const auto state : {State::asSet, State::paused, State::resumed}) {
        if (text == rawValue(state)) return state;
    }
    return std::nullopt;
}

std::string_view name(ChargeMode mode)
{
    switch (mode) {
    case ChargeMode::quickCharge:
        return ChargerReport::Mode::quickCharge;
    case ChargeMode::storage:
        return ChargerReport::Mode::storage;
    case ChargeMode::autoProtect:
        return ChargerReport::Mode::autoProtect;
    case ChargeMode::paused:
        return ChargerReport::Mode::paused;
    case ChargeMode::resumed:
        return ChargerReport::Mode::resumed;
    case ChargeMode::heat:
        return ChargerReport::Mode::pausedForHeat;
    case ChargeMode::off:
        break;
    }
    return ChargerReport::Mode::off;
}

ChargeDecision decideCharging(const ChargingSettings& settings, bool isQuickCharging,
                              const ManualCharging& manual, ChargeControl control,
                              std::optional<int> heatPausedAt)
{
    ChargeDecision decision;
    Thresholds wanted{startWithoutLimit, 100};
    if (manual.state == ManualCharging::State::paused) {
        decision.mode = ChargeMode::paused;
        wanted = {0, std::clamp(manual.pausedAt, 1, 100)};
    } else if (manual.state == ManualCharging::State::resumed) {
        decision.mode = ChargeMode::resumed;
        wanted.start = startNow;
    } else if (isQuickCharging) {
        decision.mode = ChargeMode::quickCharge;
        wanted.start = startNow;
    } else if (settings.isStorageModeEnabled) {
        decision.mode = ChargeMode::storage;
        wanted = band(storageLevel, settings.customHysteresis);
    } else if (settings.isAppleRecommendedMode) {
        decision.mode = ChargeMode::autoProtect;
        wanted = band(settings.customChargeLimit, settings.customHysteresis);
    }
    if (heatPausedAt && decision.mode != ChargeMode::paused) {
        decision.mode = ChargeMode::heat;
        wanted = {0, std::min(std::clamp(*heatPausedAt, 1, 100), wanted.end)};
    }
    if (control != ChargeControl::thresholds) wanted.start.reset();
    if (control != ChargeControl::none) decision.thresholds = wanted;
    const auto& told = decision.thresholds;
    decision.reason =
        charger::reason(name(decision.mode), told ? std::optional(told->end) : std::nullopt,
                        told ? told->start : std::nullopt, control == ChargeControl::fixedLimit);
    return decision;
}

bool isChargingAllowed(const std::optional<Thresholds>& inForce, const ChargeReading& reading)
{
    if (!inForce || inForce->end >= 100) return true;
    if (reading.lowestLevel() >= inForce->end) return false;
    const bool insideBand = inForce->start && reading.lowestLevel() >= *inForce->start;
    return !insideBand || reading.isCharging;
}

} // namespace velmora
