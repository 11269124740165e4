// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/FirstHeld.h"

namespace velmora {

bool FirstHeld::observe(const std::vector<BatteryCharger>& chargers, bool isLastChance)
{
    bool isNew = false;
    for (const auto& charger : chargers) {
        const bool isClear = charger.inForce || isLastChance || isTooLate_;
        if (charger.control == ChargeControl::none || !isClear || entries_.size() >= maximumEntries) continue;
        // The thresholds of a charge type that was not chosen were not in force, and an end of 0 is none.
        const bool isOwn = !isTooLate_ && charger.isObeyed && charger.inForce && charger.inForce->end > 0;
        auto held = isOwn ? charger.inForce : std::nullopt;
        // A battery that comes later shows what was written since.
        if (charger.family->isShared && !entries_.empty()) held = entries_.begin()->second;
        isNew |= entries_.try_emplace(charger.name, held).second;
    }
    return isNew;
}

} // namespace velmora
