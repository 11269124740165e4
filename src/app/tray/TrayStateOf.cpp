// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/TrayStateOf.h"

#include "texts/ModelSentence.h"

namespace velmora {

namespace {

std::string tooltip(const BatteryModel& model, Freshness freshness)
{
    switch (freshness) {
    case Freshness::pending:
        return "Waiting for the first reading.";
    case Freshness::live:
        return sentence(model);
    case Freshness::stale:
        break;
    }
    return "The background service is not running: the battery is not watched.";
}

} // namespace

TrayState trayStateOf(const BatteryModel& model, Freshness freshness)
{
    return {
        .percentage = model.percentage.get(),
        .isCharging = model.chargingState.get() == ChargingState::charging,
        .tooltip = tooltip(model, freshness),
    };
}

} // namespace velmora
