// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/TravelTexts.h"

#include "alerts/TravelCharge.h"
#include "base/Text.h"
#include "base/Translation.h"

#include <algorithm>

namespace velmora::travel {

namespace {

using Stage = TravelCharge::Stage;

Stage stageOf(const std::string& text)
{
    const auto& texts = TravelCharge::stageTexts;
    const auto* found = std::ranges::find(texts, text);
    return found == texts.end() ? Stage::none : static_cast<Stage>(found - texts.begin());
}

} // namespace

std::string journeyText(const Situation& now)
{
    if (!now.isConsentGiven) return tr("Velmora does not look at your calendar.");
    if (!now.isAccessGranted) return tr("No access: Velmora finds no calendar that it can read.");
    if (!now.isDetected && !now.isLastScanWhole)
        return tr("Not all calendars could be read. In the others there is no journey.");
    if (!now.isDetected) return tr("No journey within the next 24 hours.");
    const auto title = trimmed(printable(now.title.value_or("")));
    return title.empty() ? tr("A journey without a title") : title;
}

std::string chargeText(const Situation& now)
{
    if (!now.isConsentGiven || !now.isDetected) return "";
    using enum velmora::TravelCharge::Stage;
    switch (stageOf(now.stage)) {
    case scheduled:
        return tr("The charge to 100 % begins %1.", now.begins);
    case unplugged:
        return tr("The charge to 100 % begins once the charger is plugged in.");
    case full:
        return tr("The battery is full.");
    case paused:
        return tr("The charge to 100 % waits until charging is resumed.");
    case hot:
        return tr("The charge to 100 % waits until the battery has cooled down.");
    case refused:
        return tr(
            "The charge to 100 % could not begin: the daemon is not there, cannot hold this charger, or "
            "refuses.");
    case begun:
        return tr("The charge to 100 % has begun.");
    case quickCharge:
        return tr("A charge to 100 % is under way already.");
    case over:
        return tr("The charge to 100 % is over.");
    case none:
        break;
    }
    return "";
}

} // namespace velmora::travel
