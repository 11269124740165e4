// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/TrayStateOf.h"

#include "base/Translation.h"
#include "texts/ChargerTexts.h"

namespace velmora {

namespace {

std::string tooltip(const BatteryModel& model, const std::optional<ChargerReport>& charger,
                    Freshness freshness)
{
    switch (freshness) {
    case Freshness::pending:
        return tr("Waiting for the first reading.");
    case Freshness::live:
        return charger::tooltip(situationOf(model, charger), model.thermalState.get());
    case Freshness::stale:
        break;
    }
    return tr("The background service is not running: the battery is not monitored.");
}

/// The daemon holds the charger, and this laptop's charger can be held; or the demonstration's, by the model.
bool takesLimit(const BatteryModel& model, const std::optional<ChargerReport>& charger, Freshness freshness)
{
    if (model.isSimulationModeEnabled.get()) return true;
    return freshness == Freshness::live && charger && charger->hasBattery &&
           charger->control != ChargerReport::Control::none;
}

} // namespace

TrayState trayStateOf(const BatteryModel& model, const std::optional<ChargerReport>& charger,
                      Freshness freshness)
{
    return {
        .percentage = model.percentage.get(),
        .isCharging = model.chargingState.get() == ChargingState::charging,
        .tooltip = tooltip(model, charger, freshness),
        .takesLimit = takesLimit(model, charger, freshness),
        .limit = model.customChargeLimit.get(),
        .isAutoProtectOn = model.isAppleRecommendedModeEnabled.get(),
        .isQuickChargeOn = model.isTemporaryOverrideEnabled.get(),
    };
}

} // namespace velmora
