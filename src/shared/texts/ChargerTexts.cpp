// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "texts/ChargerTexts.h"

#include "base/Translation.h"
#include "texts/ChargerOrder.h"
#include "texts/PanelTexts.h"
#include "wire/ChargerInterface.h"
#include "wire/FixedLimit.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace velmora::charger {

namespace {

constexpr auto percent = panel::percentageText;

/// Why no limit can be held here, if so.
std::optional<std::string> obstacle(const Situation& now)
{
    if (!now.charger)
        return tr("The background service is not running: the charger keeps its last settings.");
    if (!now.charger->hasBattery) return tr("This machine has no battery.");
    if (now.charger->control == ChargerReport::Control::none)
        return tr("This laptop's charger takes no limit from software: it charges to 100%.");
    return std::nullopt;
}

/// What the limiter does under a rule; %1 is the limit.
struct RuleTexts {
    const char* onBattery;
    const char* charging;
    const char* full;
    const char* notCharging;
};

constexpr auto takesNoCharge = trMark("Plugged in, but the battery takes no charge right now.");

/// In the order of Rule, but for the pauses: see `pauseText`. Below a limit a battery is never full.
constexpr std::array ruleTexts{
    RuleTexts{trMark("On battery: charging will go on to %1, no limit is set."),
              trMark("Charging to %1: no limit is set."), trMark("Full: plugged in, no limit is set."),
              trMark("Plugged in, but the battery takes no charge right now: no limit is set.")},
    RuleTexts{trMark("On battery: charging will stop at %1, Auto-Protect is on."),
              trMark("Charging to %1: Auto-Protect is on."), takesNoCharge, takesNoCharge},
    RuleTexts{trMark("On battery: charging will stop at %1, storage mode is on."),
              trMark("Charging to %1: storage mode is on."), takesNoCharge, takesNoCharge},
    RuleTexts{trMark("On battery: charging will go on to %1, quick charge is on."),
              trMark("Charging to %1: quick charge is on."), trMark("Full: plugged in, quick charge is on."),
              trMark("Plugged in, but the battery takes no charge right now: quick charge is on.")},
    RuleTexts{trMark("On battery: charging will go on to %1, it was resumed by hand."),
              trMark("Charging to %1: it was resumed by hand."),
              trMark("Full: plugged in, it was resumed by hand."),
              trMark("Plugged in, but the battery takes no charge right now: it was resumed by hand.")},
};

constexpr auto waitsForCool = trMark("The battery is hot: charging waits until it has cooled down.");

std::string pauseText(const Order& order)
{
    if (order.rule == Rule::heat) return tr(waitsForCool);
    if (order.limit < 0 || !order.words.empty())
        return tr("Paused by hand, until the next plug or changed setting.");
    return tr("Paused at %1 by hand, until the next plug or changed setting.", order.limitText());
}

std::string activityText(const Situation& now, const Order& order)
{
    const auto& texts = ruleTexts[static_cast<std::size_t>(order.rule)];
    const auto limit = order.limitText();
    switch (activityOf(now, order)) {
    case Activity::onBattery:
        return tr(texts.onBattery, limit);
    case Activity::charging:
        return tr(texts.charging, limit);
    case Activity::chargingPastLimit:
        return tr("Charging past the limit of %1: the charger does not follow it yet.", limit);
    case Activity::full:
        return tr(texts.full);
    case Activity::paused:
    case Activity::cooling:
        return pauseText(order);
    case Activity::aboveLimit:
        return tr("Not charging: the battery is above the limit of %1.", limit);
    case Activity::limitReached:
        return order.isExact ? tr("Holding at %1: plugged in, limit reached.", limit)
                             : tr("Holding: plugged in, the firmware's own limit is reached.");
    case Activity::resting:
        return order.resume < 0
                   ? tr("Resting: plugged in, and the firmware decides when charging begins again.")
                   : tr("Resting: plugged in, and charging begins again below %1.", percent(order.resume));
    case Activity::notCharging:
        break;
    }
    return tr(texts.notCharging);
}

/// The model works out the minutes to the limit that the user asked for. Another may be in force.
std::optional<std::int64_t> minutesToLimit(const Situation& now, const Order& order)
{
    const bool isNumber = order.words.empty();
    const bool isAsked = isNumber && order.rule == Rule::autoProtect && order.limit == std::round(now.limit);
    return isAsked && now.timeToLimit >= 1 ? std::optional(now.timeToLimit) : std::nullopt;
}

/// What stands in for the limit that a person asked for, where the laptop takes no percentage.
std::string fixedEffect(const ChargerReport& charger)
{
    const auto* limit = fixedLimit(charger.fixedLimit);
    if (!limit || limit == &fixedLimits.back())
        return tr("In force: the firmware's own limit. It does not say where that is, and takes no other.");
    if (limit->isExact)
        return tr("In force: %1, the only limit that this laptop's firmware has.", levelText(limit->text));
    return tr("In force: the firmware's own limit, %1 by model. It takes no other.", levelText(limit->text));
}

/// The driver or its firmware said no.
std::string refusedEffect(const ChargerReport& charger)
{
    if (charger.endThreshold < 0 || charger.control == ChargerReport::Control::fixedLimit)
        return tr("Not in force: the charger refused the change.");
    return tr("Not in force: the charger refused %1, and stops at %2.",
              percent(static_cast<double>(charger.wantedEndThreshold)),
              percent(static_cast<double>(charger.endThreshold)));
}

std::string chargingTooltip(const Situation& now, const Order& order, const std::string& level)
{
    const auto limit = order.limitText();
    if (order.limit < 0) return tr("%1, charging", level);
    if (isLimiting(order.rule)) {
        const auto minutes = minutesToLimit(now, order);
        if (minutes) return tr("%1, charging, %2 to the limit of %3", level, timeText(*minutes), limit);
    } else if (now.timeToFull >= 1) {
        return tr("%1, charging, %2 to full", level, timeText(now.timeToFull));
    }
    return tr("%1, charging to %2", level, limit);
}

std::string batteryTooltip(const Situation& now, const Order& order)
{
    const auto level = percent(now.percentage);
    const auto limit = order.limitText();
    switch (activityOf(now, order)) {
    case Activity::onBattery:
        return now.timeToEmpty >= 1 ? tr("%1, on battery, %2 remaining", level, timeText(now.timeToEmpty))
                                    : tr("%1, on battery", level);
    case Activity::charging:
        return chargingTooltip(now, order, level);
    case Activity::chargingPastLimit:
        return tr("%1, charging past the limit of %2", level, limit);
    case Activity::full:
        return tr("%1, plugged in, full", level);
    case Activity::paused:
        return tr("%1, plugged in, paused by hand", level);
    case Activity::cooling:
        return tr("%1, plugged in, paused until the battery has cooled down", level);
    case Activity::aboveLimit:
        return tr("%1, plugged in, above the limit of %2", level, limit);
    case Activity::limitReached:
        return order.isExact ? tr("%1, plugged in, held at the limit of %2", level, limit)
                             : tr("%1, plugged in, held by the firmware's own limit", level);
    case Activity::resting:
        if (order.resume >= 0)
            return tr("%1, plugged in, charging begins again below %2", level, percent(order.resume));
        break;
    case Activity::notCharging:
        break;
    }
    return tr("%1, plugged in, not charging", level);
}

/// `text`, and the heat where it is above nominal.
std::string withHeat(const std::string& text, ThermalMonitorService::ThermalState state)
{
    using enum ThermalMonitorService::ThermalState;
    if (state == nominal) return text;
    return tr("%1, heat: %2", text, panel::thermalText(state));
}

} // namespace

std::string timeText(std::int64_t minutes)
{
    if (minutes < 60) return tr("%1m", std::to_string(minutes));
    return tr("%1h %2m", std::to_string(minutes / 60), std::to_string(minutes % 60));
}

std::string reason(std::string_view mode, std::optional<int> end, std::optional<int> start, bool isFixed)
{
    if (!end) return tr("This laptop's charger takes no limit from software: it charges to 100%.");
    const auto rule = ruleOf(mode);
    if (rule == Rule::heat) return tr(waitsForCool);
    if (rule == Rule::paused) return tr("Paused by hand, until the next plug or changed setting.");
    if (rule == Rule::resumed) return tr("Resumed by hand, until the next plug or changed setting.");
    if (rule == Rule::quickCharge) return tr("Quick charge is on: charging goes on to 100% once.");
    if (rule == Rule::none || *end >= 100) return tr("No limit is set: charging goes on to 100%.");
    const bool isStorage = rule == Rule::storage;
    if (isFixed)
        return isStorage ? tr("Storage mode is on: charging stops at the firmware's own limit.")
                         : tr("Auto-Protect is on: charging stops at the firmware's own limit.");
    const auto limit = percent(*end);
    if (!start)
        return isStorage ? tr("Storage mode is on: charging stops at %1.", limit)
                         : tr("Auto-Protect is on: charging stops at %1.", limit);
    const auto resume = percent(*start);
    return isStorage
               ? tr("Storage mode is on: charging stops at %1 and begins again below %2.", limit, resume)
               : tr("Auto-Protect is on: charging stops at %1 and begins again below %2.", limit, resume);
}

std::string limitCaption(const Situation& now)
{
    const bool isFixed =
        !now.isSimulated && now.charger && now.charger->control == ChargerReport::Control::fixedLimit;
    if (!isFixed) return panel::limitCaption(now.limit);
    const auto* limit = fixedLimit(now.charger->fixedLimit);
    const bool isKnown = limit && limit != &fixedLimits.back();
    return isKnown ? tr("Limit to %1 charge", levelText(limit->text)) : tr("Limit chosen by the firmware");
}

std::string limiterText(const Situation& now)
{
    if (const auto why = obstacle(now)) return *why;
    const auto order = orderOf(now);
    if (isPause(order.rule)) return pauseText(order);
    if (order.limit < 0) return tr("The limit has not been sent to the charger yet.");
    return activityText(now, order);
}

std::string limitEffect(const Situation& now)
{
    if (const auto why = obstacle(now)) return *why;
    const auto wanted = now.charger->wantedEndThreshold;
    const auto held = now.charger->endThreshold;
    if (wanted < 0) return tr("The limit has not been sent to the charger yet.");
    if (now.charger->isRefused) return refusedEffect(*now.charger);
    if (!now.charger->fixedLimit.empty()) return fixedEffect(*now.charger);
    if (held < 0) return tr("The limit was sent to the charger, which does not report it.");
    const auto limit = percent(static_cast<double>(held));
    if (held == wanted) return tr("In force: the charger stops at %1.", limit);
    return tr("In force: %1, since this laptop does not support %2.", limit,
              percent(static_cast<double>(wanted)));
}

std::string startEffect(const Situation& now, double limit, double hysteresis)
{
    if (obstacle(now)) return "";
    const auto& charger = *now.charger;
    if (isStartTheFirmwares(charger)) return tr("This laptop's firmware decides when charging begins again.");
    const double asked = std::min(limit - hysteresis, limit - 1); // a start is always below its end
    const bool isInForce = charger.mode == ChargerReport::Mode::autoProtect &&
                           static_cast<double>(charger.wantedStartThreshold) == std::round(asked);
    if (!isInForce) return tr("With Auto-Protect charging begins again below %1.", percent(asked));
    return tr("Charging begins again below %1.",
              percent(inForce(charger.startThreshold, charger.wantedStartThreshold)));
}

std::string refusalText(std::string_view why)
{
    if (why == textOf(Refused::denied))
        return tr("Not changed: you were not allowed to change how this laptop is charged.");
    if (why == textOf(Refused::needsPassword))
        return tr("Not changed: this needs an administrator's password, and nothing here can ask for it. "
                  "Members of the "
                  "group \"velmora\" need none.");
    if (why == textOf(Refused::unavailable))
        return tr(
            "Not changed: polkit, which decides who may, does not answer. Until it does, only root may.");
    if (why == textOf(Refused::invalid))
        return tr("Not changed: the background service does not take this value.");
    return "";
}

std::string stateText(const Situation& now)
{
    if (!isWatched(now)) return isBatteryMissing(now) ? tr("No battery") : tr("Not monitored");
    switch (activityOf(now, orderOf(now))) {
    case Activity::onBattery:
        return tr("On battery");
    case Activity::charging:
    case Activity::chargingPastLimit:
        return tr("Charging");
    case Activity::full:
        return tr("Full");
    case Activity::paused:
        return tr("Paused");
    case Activity::cooling:
        return tr("Cooling down");
    case Activity::aboveLimit:
        return tr("Above the limit");
    case Activity::limitReached:
        return tr("Limit reached");
    case Activity::resting:
    case Activity::notCharging:
        break;
    }
    return tr("Plugged in");
}

std::string statusText(const Situation& now)
{
    if (!isWatched(now))
        return isBatteryMissing(now) ? tr("No battery") : tr("Background service not running");
    const auto order = orderOf(now);
    const auto activity = activityOf(now, order);
    if (activity == Activity::onBattery) {
        if (now.timeToEmpty >= 1) return tr("%1 remaining", timeText(now.timeToEmpty));
        if (now.timeToEmpty == workingOut) return tr("Calculating remaining time...");
    } else if (activity == Activity::charging && isLimiting(order.rule)) {
        const auto minutes = minutesToLimit(now, order);
        return minutes ? tr("Charging: %1 to limit", timeText(*minutes))
                       : tr("Charging to %1", order.limitText());
    } else if (activity == Activity::charging) {
        if (now.timeToFull >= 1) return tr("Charging: %1 to full", timeText(now.timeToFull));
        if (now.timeToFull == workingOut) return tr("Calculating time to full...");
    }
    return stateText(now);
}

std::string tooltip(const Situation& now, ThermalMonitorService::ThermalState thermalState)
{
    if (isBatteryMissing(now)) return tr("This machine has no battery.");
    return withHeat(batteryTooltip(now, orderOf(now)), thermalState);
}

} // namespace velmora::charger
