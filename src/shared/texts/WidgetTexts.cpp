// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/WidgetTexts.h"

namespace velmora::widget {

namespace {

using dashboard::full;
using dashboard::workingOut;

/// Within a sentence.
std::string lowered(std::string text)
{
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z') text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

constexpr const char* unknown = "–";

std::string beginning(const dashboard::Situation& now)
{
    return isWatched(now) ? "Battery, " + levelText(now) + ", " : "Battery: ";
}

bool isHealthKnown(const dashboard::Situation& now)
{
    return now.charger && now.charger->health >= 0;
}

} // namespace

std::string levelText(const dashboard::Situation& now)
{
    return isWatched(now) ? panel::percentageText(now.percentage) : unknown;
}

std::string stateText(const dashboard::Situation& now)
{
    if (!isWatched(now)) return now.charger ? "No battery" : "Not watched";
    if (now.isCharging) return "Charging";
    if (now.isOnBattery) return "On battery";
    if (now.percentage >= full) return "Full";
    return now.isAutoProtectOn && now.percentage >= now.limit ? "Limit reached" : "Plugged in";
}

std::string statusText(const dashboard::Situation& now)
{
    if (!isWatched(now)) return now.charger ? "No battery" : "Background service not running";
    const bool isTimed = now.timeToEmpty >= 1 || now.timeToEmpty == workingOut;
    return now.isCharging || (now.isOnBattery && isTimed) ? dashboard::statusLine(now) : stateText(now);
}

std::string healthText(const dashboard::Situation& now)
{
    return isHealthKnown(now) ? panel::percentageText(now.charger->health) : unknown;
}

std::string accessibleName(const dashboard::Situation& now)
{
    return beginning(now) + lowered(stateText(now));
}

std::string accessibleSummary(const dashboard::Situation& now,
                              ThermalMonitorService::ThermalState thermalState)
{
    return beginning(now) + lowered(statusText(now)) + ", health " +
           (isHealthKnown(now) ? healthText(now) : "unknown") + ", thermal state " +
           lowered(std::string(panel::thermalText(thermalState)));
}

} // namespace velmora::widget
