// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/DashboardTexts.h"

#include "base/Translation.h"
#include "base/Version.h"

#include <algorithm>

namespace velmora::dashboard {

using charger::timeText;
using charger::workingOut;

std::string_view view(std::string_view identifier)
{
    const auto found = std::ranges::find(pages, identifier, &Page::identifier);
    return found == pages.end() ? std::string_view{} : found->view;
}

std::string statusLine(const Situation& now)
{
    if (isBatteryMissing(now)) return tr("This machine has no battery.");
    if (!now.isCharging) {
        if (now.timeToEmpty >= 1) return tr("%1 remaining", timeText(now.timeToEmpty));
        return now.timeToEmpty == workingOut ? tr("Calculating remaining time...")
                                             : tr("Live battery analytics and performance monitoring.");
    }
    if (now.isAutoProtectOn && now.timeToLimit >= 1)
        return tr("Charging: %1 to limit", timeText(now.timeToLimit));
    if (now.timeToFull >= 1) return tr("Charging: %1 to full", timeText(now.timeToFull));
    return now.timeToFull == workingOut ? tr("Calculating time to full...") : tr("Charging...");
}

std::string firstSampleText(const Situation& now)
{
    if (!now.charger) return tr("No samples: the background service is not running.");
    if (!now.charger->hasBattery) return tr("No samples: this machine has no battery.");
    return tr(
        "No samples yet. The first comes as soon as the battery has been read, the next ones about every "
        "quarter of an hour while it charges or drains.");
}

std::string aboutText()
{
    return tr("Velmora %1, free software (GPL 3 or later)", version());
}

} // namespace velmora::dashboard
