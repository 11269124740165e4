// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/NotificationTriggers.h"

#include "alerts/NotificationService.h"
#include "base/Saturate.h"
#include "base/Translation.h"
#include "model/BatteryModel.h"

namespace velmora {

namespace {

using enum ChargingState;

constexpr double limitMargin = 1; ///< points below the limit that count as reached
constexpr double rearmMargin = 5; ///< points beyond the hysteresis, or above the low battery

void post(std::string title, std::string body, std::string identifier)
{
    NotificationService::shared().scheduleNotification(std::move(title), std::move(body),
                                                       std::move(identifier));
}

std::string device(const BatteryModel& model)
{
    return model.selectedDeviceID.get() ? tr("remote Mac") : tr("local Mac");
}

} // namespace

void NotificationTriggers::check(const BatteryModel& model, ChargingState oldChargingState,
                                 const std::optional<std::string>& oldPowerSource)
{
    if (!model.selectedDeviceID.get()) return;
    checkPowerSource(model, oldPowerSource);
    checkLimit(model, oldChargingState);
    checkLowBattery(model);
}

void NotificationTriggers::checkPowerSource(const BatteryModel& model,
                                            const std::optional<std::string>& oldPowerSource)
{
    const auto& source = model.powerSource.get();
    if (!oldPowerSource || *oldPowerSource == source || !model.notifyOnPowerChange.get()) return;
    post(tr("Power Source Changed"), tr("Your %1 is now on %2.", device(model), source), "power_change");
}

void NotificationTriggers::checkLimit(const BatteryModel& model, ChargingState oldChargingState)
{
    const double level = model.percentage.get(), limit = model.customChargeLimit.get();
    const auto state = model.chargingState.get();
    if (oldChargingState == charging && state == idle && level >= limit - limitMargin &&
        !hasNotifiedLimitReached_ && model.notifyOnLimit.get()) {
        post(tr("Charge Limit Reached"),
             tr("Battery protected at target. Your %1 is now running on AC.", device(model)),
             "limit_reached");
        hasNotifiedLimitReached_ = true;
    }
    if (oldChargingState == idle && state == charging && level < limit - limitMargin &&
        hasNotifiedLimitReached_ && model.notifyOnLimit.get()) {
        post(tr("Charging Resumed"),
             tr("Battery below threshold. Your %1 has resumed charging.", device(model)), "charging_resumed");
        hasNotifiedLimitReached_ = false;
    }
    if (level < limit - (model.customHysteresis.get() + rearmMargin)) hasNotifiedLimitReached_ = false;
}

void NotificationTriggers::checkLowBattery(const BatteryModel& model)
{
    const double level = model.percentage.get(), limit = model.lowBatteryLimit.get();
    const bool isTold = lastNotifiedPercentage_ && *lastNotifiedPercentage_ <= limit;
    if (level <= limit && !isTold && model.notifyOnLowBattery.get()) {
        post(tr("Remote Mac Battery Low"),
             tr("Your MacBook is at %1%. Consider plugging it in.", std::to_string(truncated(level))),
             "low_battery");
        lastNotifiedPercentage_ = level;
    }
    if (level > limit + rearmMargin) lastNotifiedPercentage_.reset();
}

} // namespace velmora
