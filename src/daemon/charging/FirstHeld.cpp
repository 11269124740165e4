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
        isNew |= entries_.try_emplace(charger.name, isTooLate_ ? std::nullopt : charger.inForce).second;
    }
    return isNew;
}

} // namespace velmora
