// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/NoticeTexts.h"

#include "base/Text.h"
#include "base/Translation.h"

namespace velmora::notices {

std::string serverText(const std::string& server, bool isStartable, bool isInhibited)
{
    if (server.empty())
        return isStartable ? tr("The desktop starts what shows notices with the first one.")
                           : tr("Nothing on this desktop shows notices.");
    const auto name = printable(server);
    return isInhibited ? tr("Do not disturb is on: %1 keeps notices to itself.", name)
                       : tr("Notices are shown by %1.", name);
}

std::string testText(const std::optional<std::string>& result, bool isInhibited)
{
    if (!result) return {};
    if (!result->empty()) return tr("It could not be shown: %1", printable(*result));
    return isInhibited ? tr("Sent, and kept back by do not disturb.") : tr("Sent.");
}

std::string lastText(const std::string& date)
{
    return date.empty() ? date : tr("Last sent on %1.", date);
}

bool pausesForHeat(const Situation& now)
{
    return !now.charger || !now.charger->hasBattery || now.charger->canPauseForHeat;
}

std::string heatCaption(const Situation& now)
{
    return pausesForHeat(now)
               ? tr("The battery has become hot, and charging waits until it has cooled down.")
               : tr("This laptop does not tell how warm its battery is, or its charging cannot be paused.");
}

bool countsCycles(const Situation& now)
{
    return !now.charger || !now.charger->hasBattery || now.charger->cycleCount >= 0;
}

std::string cycleCaption(const Situation& now)
{
    return countsCycles(now) ? tr("The battery has completed a charge cycle.")
                             : tr("This laptop does not count its battery's charge cycles.");
}

} // namespace velmora::notices
