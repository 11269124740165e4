// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "texts/Situation.h"

#include <cstdint>
#include <string>
#include <string_view>

/// What the charger holds and what the battery makes of it, before it is put into words.
namespace velmora::charger {

/// What holds the charger.
enum class Rule : std::uint8_t { none, autoProtect, storage, quickCharge, resumed, paused, heat };

/// Of a text of ChargerReport::Mode.
Rule ruleOf(std::string_view mode);
bool isPause(Rule rule);
/// Charging stops at some level under this rule.
bool isLimiting(Rule rule);

/// What is in force.
struct Order {
    Rule rule = Rule::none;
    double limit = 100; ///< percent; 100: none, negative: not known
    double resume = -1; ///< percent; negative: not known
    // For a limit that is no single number:
    double reached = 100; ///< percent; from here on, too, a battery that is not charged is held
    std::string words{};  ///< that stand for the number
    bool isExact = true;  ///< false where it is one of several

    std::string limitText() const;
};

/// A simulated battery follows the user's settings, whatever charger there is.
Order orderOf(const Situation& now);

/// The threshold that the charger reports; the wanted one where it reports none.
double inForce(std::int64_t held, std::int64_t wanted);
/// When charging begins again is the firmware's choice.
bool isStartTheFirmwares(const ChargerReport& charger);

enum class Activity : std::uint8_t {
    onBattery,
    charging,
    chargingPastLimit,
    full,
    paused,
    cooling, ///< charging waits for the battery to cool down
    aboveLimit,
    limitReached,
    resting, ///< between the limit and the level at which charging begins again
    notCharging,
};

Activity activityOf(const Situation& now, const Order& order);

/// A text of `FixedLimit` in words that stand for a percentage: "55-60%".
std::string levelText(std::string_view fixedLimit);

} // namespace velmora::charger
