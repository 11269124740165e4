// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/ModelSentence.h"

#include "base/Saturate.h"

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

std::string toFull(const BatteryModel& model)
{
    return model.timeToFull.get() > 0 ? ", " + minutes(model.timeToFull.get()) + " to full" : "";
}

std::string toLimit(const BatteryModel& model)
{
    const auto time = model.timeToLimit.get();
    const auto limit = " the limit of " + percent(model.customChargeLimit.get());
    if (model.isLimitReached()) return " above" + limit;
    if (time < 0) return "";
    return ", " + (time > 0 ? minutes(time) : "less than a minute") + " to" + limit;
}

/// What beats what is as in the daemon.
std::string chargingWords(const BatteryModel& model)
{
    if (model.isTemporaryOverrideEnabled.get()) return "charging to 100 %" + toFull(model);
    if (model.isStorageModeEnabled.get()) // how long that takes nobody has worked out
        return model.percentage.get() < storageLevel ? "charging to 50 % for storage" : "charging";
    const bool isLimited = model.isAppleRecommendedModeEnabled.get() && model.customChargeLimit.get() < 100;
    return "charging" + (isLimited ? toLimit(model) : toFull(model));
}

std::string idleWords(const BatteryModel& model)
{
    if (model.powerSource.get() != "AC") {
        std::string text = "on battery";
        if (model.timeToEmpty.get() > 0) text += ", " + minutes(model.timeToEmpty.get()) + " left";
        return text;
    }
    if (model.isTemporaryOverrideEnabled.get()) return "plugged in, not charging";
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
