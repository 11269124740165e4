// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/TrayStateOf.h"

#include "base/Translation.h"
#include "texts/ChargerTexts.h"

#include <utility>

namespace velmora {

namespace {

std::string tooltip(const BatteryModel& model, std::optional<ChargerReport> charger, Freshness freshness)
{
    switch (freshness) {
    case Freshness::pending:
        return tr("Waiting for the first reading.");
    case Freshness::live:
        return charger::tooltip(situationOf(model, std::move(charger)), model.thermalState.get());
    case Freshness::stale:
        break;
    }
    return tr("The background service is not running: the battery is not monitored.");
}

} // namespace

TrayState trayStateOf(const BatteryModel& model, std::optional<ChargerReport> charger, Freshness freshness)
{
    return {
        .percentage = model.percentage.get(),
        .isCharging = model.chargingState.get() == ChargingState::charging,
        .tooltip = tooltip(model, std::move(charger), freshness),
    };
}

} // namespace velmora
