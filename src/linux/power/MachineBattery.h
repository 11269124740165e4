// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "power/PowerSupplyReader.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <vector>

namespace velmora {

/// All internal batteries as the one that a person thinks of. What no battery tells is absent. A battery that
/// does not tell what it holds when full weighs nothing beside one that does.
struct MachineBattery {
    double percentage = 0;                       ///< 0 to 100, weighted by what each battery holds when full
    double lowestPercentage = 0;                 ///< of the emptiest
    bool isCharging = false;                     ///< any of them charges
    bool isDischarging = false;                  ///< none charges, and any of them gives power
    bool isFull = false;                         ///< all of them say so
    std::optional<double> energyNow, energyFull; ///< Wh; known of every battery that weighs, or absent
    std::optional<double> rate;                  ///< W as the energy counts, positive into the batteries
    std::optional<double> power;                 ///< W at the terminals, positive into the batteries
    std::optional<double> health;                ///< percent, weighted by design
    std::optional<std::int64_t> cycleCount;      ///< of the battery that has most
    std::optional<double> temperature;           ///< degrees Celsius, of the hottest
    std::optional<std::chrono::seconds> timeToFull, timeToEmpty; ///< the driver's own, of a single battery

    /// Nothing where the level of no battery is known: a level of 0 would be a false alarm.
    static std::optional<MachineBattery> of(const std::vector<BatteryReading>& batteries);
};

} // namespace velmora
