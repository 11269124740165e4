// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/WidgetTexts.h"

#include "base/Translation.h"
#include "texts/PanelTexts.h"

namespace velmora::widget {

namespace {

constexpr const char* unknown = "–";

bool isHealthKnown(const Situation& now)
{
    return now.charger && now.charger->health >= 0;
}

} // namespace

std::string levelText(const Situation& now)
{
    return isWatched(now) ? panel::percentageText(now.percentage) : unknown;
}

std::string healthText(const Situation& now)
{
    return isHealthKnown(now) ? panel::percentageText(now.charger->health) : unknown;
}

std::string accessibleName(const Situation& now)
{
    const auto state = charger::stateText(now);
    return isWatched(now) ? tr("Battery, %1, %2", levelText(now), state) : state;
}

std::string accessibleSummary(const Situation& now, ThermalMonitorService::ThermalState thermalState)
{
    const auto status = charger::statusText(now);
    const auto health = isHealthKnown(now) ? healthText(now) : tr("unknown");
    const auto heat = panel::thermalText(thermalState);
    if (!isWatched(now)) return tr("%1. Health: %2. Thermal state: %3.", status, health, heat);
    return tr("Battery, %1, %2. Health: %3. Thermal state: %4.", levelText(now), status, health, heat);
}

} // namespace velmora::widget
