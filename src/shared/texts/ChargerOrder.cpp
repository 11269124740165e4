// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/ChargerOrder.h"

#include "base/Translation.h"
#include "texts/PanelTexts.h"
#include "wire/FixedLimit.h"

#include <algorithm>

namespace velmora::charger {

namespace {

constexpr double fullLevel = 99; // percent; many a battery stops there

constexpr auto percent = panel::percentageText;

/// What is surely so of a level that the firmware does not tell.
Order fixedOrder(Rule rule, const ChargerReport& charger)
{
    const auto* told = fixedLimit(charger.fixedLimit);
    const auto& limit = told ? *told : fixedLimits.back();
    const bool isUnknown = &limit == &fixedLimits.back();
    return {.rule = rule,
            .limit = static_cast<double>(limit.end),
            .resume = isUnknown ? -1 : static_cast<double>(limit.start),
            .reached = static_cast<double>(isUnknown || limit.start < 0 ? limit.end : limit.start),
            .words = limit.text == "80" ? "" : levelText(limit.text),
            .isExact = limit.isExact};
}

Order orderOf(const ChargerReport& charger)
{
    if (charger.control == ChargerReport::Control::none) return {};
    Order order{.rule = ruleOf(charger.mode)};
    if (!isLimiting(order.rule)) return order;
    const bool isOff = charger.endThreshold >= 100;
    if (charger.control == ChargerReport::Control::fixedLimit && !isOff)
        return fixedOrder(order.rule, charger);
    order.limit = inForce(charger.endThreshold, charger.wantedEndThreshold);
    if (!isStartTheFirmwares(charger))
        order.resume = inForce(charger.startThreshold, charger.wantedStartThreshold);
    if (order.limit >= 100 && !isPause(order.rule)) order.rule = Rule::none;
    return order;
}

} // namespace

std::string Order::limitText() const
{
    return words.empty() ? percent(limit) : words;
}

Rule ruleOf(std::string_view mode)
{
    using Mode = ChargerReport::Mode;
    if (mode == Mode::autoProtect) return Rule::autoProtect;
    if (mode == Mode::storage) return Rule::storage;
    if (mode == Mode::quickCharge) return Rule::quickCharge;
    if (mode == Mode::resumed) return Rule::resumed;
    if (mode == Mode::pausedForHeat) return Rule::heat;
    return mode == Mode::paused ? Rule::paused : Rule::none;
}

bool isPause(Rule rule)
{
    return rule == Rule::paused || rule == Rule::heat;
}

bool isLimiting(Rule rule)
{
    return rule == Rule::autoProtect || rule == Rule::storage || isPause(rule);
}

double inForce(std::int64_t held, std::int64_t wanted)
{
    return static_cast<double>(held >= 0 ? held : wanted);
}

bool isStartTheFirmwares(const ChargerReport& charger)
{
    return charger.control == ChargerReport::Control::endThreshold ||
           charger.control == ChargerReport::Control::fixedLimit;
}

Order orderOf(const Situation& now)
{
    if (!now.isSimulated) return now.charger ? orderOf(*now.charger) : Order{.limit = -1};
    if (!now.isAutoProtectOn || now.limit >= 100) return {};
    return {.rule = Rule::autoProtect, .limit = now.limit};
}

Activity activityOf(const Situation& now, const Order& order)
{
    using enum Activity;
    if (now.isOnBattery && !now.isCharging) return onBattery;
    const bool isHeld = isLimiting(order.rule) && order.limit >= 0;
    if (now.isCharging) return isHeld && now.percentage >= order.limit ? chargingPastLimit : charging;
    if (order.rule == Rule::paused) return paused;
    if (order.rule == Rule::heat) return cooling;
    if (!isHeld) return now.percentage >= fullLevel ? full : notCharging;
    if (order.isExact && now.percentage >= order.limit + 1) return aboveLimit;
    if (now.percentage >= std::min(order.limit, order.reached)) return limitReached;
    return order.resume < 0 || now.percentage >= order.resume ? resting : notCharging;
}

std::string levelText(std::string_view limit)
{
    if (limit == "55-60") return tr("55-60%");
    if (limit == "80") return percent(80);
    return limit == "55-60 or 80" ? tr("55-60% or 80%") : tr("the firmware's own limit");
}

} // namespace velmora::charger
