// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Observable.h"

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

namespace velmora {

/// One power source, described by key. A key that cannot be known is absent.
using PowerSourceDescription =
    std::map<std::string, std::variant<bool, std::int64_t, double, std::string>, std::less<>>;

/// Keys of a description, with their types and units.
namespace power_source_key {
inline constexpr auto type = "Type";                        ///< text; "InternalBattery" for the laptop's own
inline constexpr auto name = "Name";                        ///< text
inline constexpr auto currentCapacity = "Current Capacity"; ///< number, in the unit of "Max Capacity"
inline constexpr auto maxCapacity = "Max Capacity";         ///< number
inline constexpr auto lowestCapacity =
    "Lowest Capacity";                            ///< number, likewise; of the emptiest of several batteries
inline constexpr auto isCharging = "Is Charging"; ///< bool
inline constexpr auto isCharged = "Is Charged";   ///< bool; the battery says that it is full
inline constexpr auto powerSourceState = "Power Source State";  ///< text; "AC Power" or "Battery Power"
inline constexpr auto timeToFullCharge = "Time to Full Charge"; ///< integer, minutes; -1 unknown
inline constexpr auto timeToEmpty = "Time to Empty";            ///< integer, minutes; -1 unknown
inline constexpr auto health = "Health";          ///< number, percent: full over design capacity, at most 100
inline constexpr auto cycleCount = "Cycle Count"; ///< integer
inline constexpr auto chargingPower = "Charging Power"; ///< number, watts; negative while the battery gives
} // namespace power_source_key

/// The machine's power sources.
class PowerSources {
public:
    virtual ~PowerSources() = default;

    /// A fresh reading of every source, the laptop's own battery first where it has one. Never fails: what
    /// cannot be read is left out.
    virtual std::vector<PowerSourceDescription> descriptions() = 0;

    /// Calls `changed` on the main thread whenever any source may read differently now.
    [[nodiscard]] virtual Subscription observeChanges(std::function<void()> changed) = 0;
};

} // namespace velmora
