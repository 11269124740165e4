// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/Situation.h"

#include <utility>

namespace velmora {

Situation situationOf(const BatteryModel& model, std::optional<ChargerReport> charger)
{
    return {.percentage = model.percentage.get(),
            .isCharging = model.chargingState.get() == ChargingState::charging,
            .isOnBattery = model.powerSource.get() == "Battery",
            .timeToFull = model.timeToFull.get(),
            .timeToEmpty = model.timeToEmpty.get(),
            .timeToLimit = model.timeToLimit.get(),
            .isAutoProtectOn = model.isAppleRecommendedModeEnabled.get(),
            .limit = model.customChargeLimit.get(),
            .charger = std::move(charger),
            .isSimulated = model.isSimulationModeEnabled.get()};
}

bool isWatched(const Situation& now)
{
    return now.isSimulated || (now.charger && now.charger->hasBattery);
}

bool isBatteryMissing(const Situation& now)
{
    return !now.isSimulated && now.charger && !now.charger->hasBattery;
}

} // namespace velmora
