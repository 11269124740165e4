// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "ModelSentence.h"

#include "Saturate.h"

namespace velmora {

namespace {

std::string percent(double value)
{
    return std::to_string(truncated(value)) + " %";
}

std::string minutes(std::int64_t count)
{
    if (count < 60) return std::to_string(count) + (count == 1 ? " minute" : " minutes");
    const auto rest = std::to_string(count % 60);
    return std::to_string(count / 60) + ":" + (rest.size() < 2 ? "0" : "") + rest + " hours";
}

std::string chargingWords(const BatteryModel& model)
{
    std::string text = "charging";
    if (!model.isAppleRecommendedModeEnabled.get() || model.customChargeLimit.get() >= 100) {
        if (model.timeToFull.get() > 0) text += ", " + minutes(model.timeToFull.get()) + " to full";
    } else if (model.timeToLimit.get() > 0) {
        text += ", " + minutes(model.timeToLimit.get()) + " to the limit of " +
                percent(model.customChargeLimit.get());
    } else if (model.timeToLimit.get() == 0) {
        text += " above the limit of " + percent(model.customChargeLimit.get());
    }
    return text;
}

std::string idleWords(const BatteryModel& model)
{
    if (model.powerSource.get() != "AC") {
        std::string text = "on battery";
        if (model.timeToEmpty.get() > 0) text += ", " + minutes(model.timeToEmpty.get()) + " left";
        return text;
    }
    if (model.isStorageModeEnabled.get()) return "plugged in, held for storage";
    if (model.isLimitReached())
        return "plugged in, held at the limit of " + percent(model.customChargeLimit.get());
    return "plugged in, not charging";
}

} // namespace

std::string sentence(const BatteryModel& model)
{
    using Thermal = ThermalMonitorService;
    const bool isCharging = model.chargingState.get() == ChargingState::charging;
    std::string text =
        percent(model.percentage.get()) + ", " + (isCharging ? chargingWords(model) : idleWords(model));
    if (const auto thermal = model.thermalState.get(); thermal != Thermal::ThermalState::nominal) {
        text += ", heat: " + std::string(Thermal::rawValue(thermal));
    }
    return text;
}

} // namespace velmora
