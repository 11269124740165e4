// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/ChargerKeeper.h"

#include <algorithm>
#include <utility>

namespace velmora {

namespace {
constexpr auto category = "ChargerKeeper";
}

ChargerKeeper::ChargerKeeper(const Ports& ports, std::function<void(const Look&)> seen,
                             std::function<void(bool changed)> acted)
    : ports_(ports),
      seen_(std::move(seen)),
      acted_(std::move(acted)),
      changeLog_(ports.loop, ports.log, ports.clock, category, LogBudget::manyAtOnce)
{
}

void ChargerKeeper::look()
{
    if (isLooking_) {
        isLookWanted_ = true;
        return;
    }
    isLooking_ = true;
    ports_.hardware.async([ports = ports_,
                           took = lifetime_.guard([this](const Look& look) { this->took(look); })] {
        Look look{ports.powerSources.descriptions(), ports.thermalLevel.level(), ports.actuator.inspect()};
        ports.loop.post([took, look = std::move(look)] { took(look); });
    });
}

void ChargerKeeper::took(const Look& look)
{
    isLooking_ = false;
    if (!isActing_) { // an attempt on its way knows better
        const bool isNew =
            std::ranges::any_of(look.chargers, [this](const auto& one) { return isNewcomer(one); });
        if (isNew) forgetHistory();
        chargers_ = look.chargers;
    }
    seen_(look);
    if (std::exchange(isLookWanted_, false)) this->look();
}

bool ChargerKeeper::hold(const ChargeDecision& decision)
{
    decision_ = decision;
    if (isActing_) return true; // `attempted` goes on with what is wanted by then
    if (!decision.thresholds) return false;
    const Thresholds wanted = *decision.thresholds;
    const bool holds = std::ranges::all_of(chargers_, [&](const auto& one) { return one.holds(wanted); });
    if (holds && !isAfresh_) {
        attempted_ = wanted;
        return false;
    }
    if (!holds && !mayWrite(wanted)) return false;
    isActing_ = true;
    ports_.hardware.async([ports = ports_, wanted, reason = decision.reason,
                           afresh = std::exchange(isAfresh_, false),
                           done = lifetime_.guard([this](const Attempt& attempt) { attempted(attempt); })] {
        auto outcome = ports.actuator.apply(wanted, afresh);
        ports.loop.post([done, attempt = Attempt{wanted, reason, std::move(outcome)}] { done(attempt); });
    });
    return true;
}

bool ChargerKeeper::mayWrite(const Thresholds& wanted)
{
    if (isAfresh_ || attempted_ != wanted) return true;
    if (repairs_.spend(ports_.clock.sinceBoot())) {
        hasGivenUp_ = false;
        ports_.log.warning(category, "The charger does not hold what was set: setting it again.");
        return true;
    }
    if (!std::exchange(hasGivenUp_, true)) {
        ports_.log.warning(category,
                           "Something else keeps changing the charger, or it does not take what is set; it "
                           "is left alone for up to an hour.");
    }
    return false;
}

void ChargerKeeper::attempted(const Attempt& attempt)
{
    isActing_ = false;
    attempted_ = attempt.wanted;
    chargers_ = attempt.outcome.chargers;
    const bool changed = !attempt.outcome.changes.empty();
    if (changed) {
        lastAction_.clear();
        for (const auto& change : attempt.outcome.changes)
            lastAction_ += (lastAction_.empty() ? "" : " ") + change;
        lastReason_ = attempt.reason;
        lastActionDate_ = ports_.clock.now();
        changeLog_.info(lastAction_ + " " + lastReason_);
    }
    const bool isOutdated = decision_ && decision_->thresholds && decision_->thresholds != attempt.wanted;
    if (isOutdated && hold(ChargeDecision(*decision_))) return;
    acted_(changed);
}

/// A battery that was put in, or a driver that was loaded.
bool ChargerKeeper::isNewcomer(const BatteryCharger& charger) const
{
    return std::ranges::none_of(chargers_, [&](const auto& known) {
        return known.name == charger.name && known.control == charger.control;
    });
}

void ChargerKeeper::forgetHistory()
{
    isAfresh_ = true;
}

ChargeControl ChargerKeeper::control() const
{
    ChargeControl best = ChargeControl::none;
    for (const auto& one : chargers_) best = std::max(best, one.control);
    return best;
}

std::optional<Thresholds> ChargerKeeper::inForce() const
{
    const auto found =
        std::ranges::find_if(chargers_, [](const auto& one) { return one.control != ChargeControl::none; });
    return found == chargers_.end() || !found->isObeyed ? std::nullopt : found->inForce;
}

void ChargerKeeper::describe(ChargerReport& report) const
{
    for (const auto& one : chargers_) report.batteries += (report.batteries.empty() ? "" : " ") + one.name;
    report.control = name(control());
    if (!chargers_.empty()) report.driver = chargers_.front().family->name;
    if (decision_) {
        report.mode = name(decision_->mode);
        if (const auto& wanted = decision_->thresholds) {
            report.wantedStartThreshold = wanted->start.value_or(-1);
            report.wantedEndThreshold = wanted->end;
        }
    }
    if (const auto held = inForce()) {
        report.startThreshold = held->start.value_or(-1);
        report.endThreshold = held->end;
    }
    report.lastAction = lastAction_;
    report.lastReason = lastReason_;
    report.lastActionDate = lastActionDate_;
}

} // namespace velmora
