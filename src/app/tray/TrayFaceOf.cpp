// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "tray/TrayFaceOf.h"

#include "texts/ModelSentence.h"

namespace velmora {

namespace {

std::string tooltip(const BatteryModel& model, Knowledge knowledge)
{
    switch (knowledge) {
    case Knowledge::awaited:
        return "Waiting for the first reading.";
    case Knowledge::live:
        return sentence(model);
    case Knowledge::daemonMissing:
        break;
    }
    return "The background service is not running: the battery is not watched.";
}

} // namespace

TrayFace trayFaceOf(const BatteryModel& model, Knowledge knowledge)
{
    return {
        .percentage = model.percentage.get(),
        .isCharging = model.chargingState.get() == ChargingState::charging,
        .tooltip = tooltip(model, knowledge),
    };
}

} // namespace velmora
