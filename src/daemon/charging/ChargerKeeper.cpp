// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/ChargerKeeper.h"

#include <algorithm>
#include <utility>

namespace velmora {

using namespace std::chrono_literals;

namespace {

constexpr auto category = "ChargerKeeper";

/// Some controllers take a moment to show what was written.
constexpr auto settleTime = 300ms;
constexpr std::chrono::milliseconds firstRetry = 2min;
constexpr std::chrono::milliseconds maximumRetry = 1h;

} // namespace

ChargerKeeper::ChargerKeeper(const Ports& ports, std::function<void(bool changed)> acted,
                             std::string_view heldLevel)
    : ports_(ports),
      acted_(std::move(acted)),
      heldLevel_(heldLevel),
      retryDelay_(firstRetry),
      changeLog_(ports.loop, ports.log, ports.clock, category, LogBudget::manyAtOnce)
{
}

void ChargerKeeper::observe(const std::vector<BatteryCharger>& chargers)
{
    if (isActing_) return; // the attempt on its way knows better
    const bool isNew = std::ranges::any_of(chargers, [this](const auto& one) { return isNewcomer(one); });
    if (isNew) forgetHistory();
    chargers_ = chargers;
}

bool ChargerKeeper::hold(const ChargeDecision& decision)
{
    decision_ = decision;
    if (isActing_) return true; // `attempted` goes on with what is wanted by then
    if (!decision.thresholds) return false;
    const Thresholds wanted = *decision.thresholds;
    const bool holds = std::ranges::all_of(chargers_, [&](const auto& one) { return one.holds(wanted); });
    const bool isRetry = holds && isRetryDue(wanted);
    if (holds && !isAfresh_ && !isRetry) {
        attempted_ = wanted;
        isRefused_ = false;
        return false;
    }
    if (!holds && !mayWrite(wanted)) return false;
    begin(wanted, decision.reason, std::exchange(isAfresh_, false) || isRetry);
    return true;
}

std::vector<std::string> ChargerKeeper::batteries() const
{
    std::vector<std::string> names;
    for (const auto& one : chargers_) names.push_back(one.name);
    return names;
}

bool ChargerKeeper::holdsWanted() const
{
    if (isActing_ || !decision_) return false;
    const auto& wanted = decision_->thresholds;
    return !wanted || std::ranges::all_of(chargers_, [&](const auto& one) { return one.holds(*wanted); });
}

void ChargerKeeper::leaveAt(const Thresholds& wanted)
{
    ports_.hardware.async([&actuator = ports_.actuator, batteries = batteries(), wanted] {
        actuator.apply(batteries, wanted, /*afresh=*/true);
    });
}

void ChargerKeeper::begin(const Thresholds& wanted, const std::string& reason, bool afresh)
{
    isActing_ = true;
    ports_.hardware.async([ports = ports_, batteries = batteries(), attempt = Attempt{wanted, reason, {}},
                           afresh,
                           done = lifetime_.guard([this](const Attempt& made) { wrote(made); })]() mutable {
        attempt.outcome = ports.actuator.apply(batteries, attempt.wanted, afresh);
        ports.loop.post([done, attempt = std::move(attempt)] { done(attempt); });
    });
}

void ChargerKeeper::wrote(Attempt attempt)
{
    if (!attempt.outcome.isSettling) return attempted(attempt);
    settling_ = ports_.loop.after(settleTime, lifetime_.guard([this, attempt = std::move(attempt)] {
        const auto spent = std::exchange(settling_, nullptr);
        settle(attempt);
    }));
}

void ChargerKeeper::settle(const Attempt& attempt)
{
    ports_.hardware.async(
        [ports = ports_, attempt = Attempt(attempt),
         done = lifetime_.guard([this](const Attempt& settled) { attempted(settled); })]() mutable {
            auto before = std::move(attempt.outcome.changes);
            const bool isRefused = attempt.outcome.isRefused;
            attempt.outcome = ports.actuator.settle();
            attempt.outcome.isRefused = isRefused;
            before.insert(before.end(), attempt.outcome.changes.begin(), attempt.outcome.changes.end());
            attempt.outcome.changes = std::move(before);
            ports.loop.post([done, attempt = std::move(attempt)] { done(attempt); });
        });
}

bool ChargerKeeper::mayWrite(const Thresholds& wanted)
{
    if (isAfresh_ || attempted_ != wanted) return true;
    if (repairs_.spend(ports_.clock.sinceBoot())) {
        hasGivenUp_ = false;
        ports_.log.warning(category, isRefused_
                                         ? "The charger did not take what was set; trying again."
                                         : "The charger no longer holds what was set; setting it again.");
        return true;
    }
    if (!std::exchange(hasGivenUp_, true)) {
        ports_.log.warning(
            category, isRefused_
                          ? "The charger keeps refusing what is set; leaving it as it is for up to an hour."
                          : "The charger keeps losing what is set, perhaps to another program; leaving it "
                            "as it is for up to an hour.");
    }
    return false;
}

bool ChargerKeeper::deviates(const Thresholds& wanted) const
{
    return std::ranges::any_of(chargers_, [&](const auto& one) { return one.deviates(wanted); });
}

/// Whether the driver of a charger that deviates from `wanted` may listen by now.
bool ChargerKeeper::isRetryDue(const Thresholds& wanted)
{
    const auto now = ports_.clock.sinceBoot();
    return deviates(wanted) && retryAt_ && now >= *retryAt_ && repairs_.spend(now);
}

void ChargerKeeper::planRetry(const Thresholds& wanted)
{
    const bool isDeviating = deviates(wanted);
    if (!isDeviating || attempted_ != wanted) retryDelay_ = firstRetry;
    retryAt_.reset();
    if (!isDeviating) return;
    retryAt_ = ports_.clock.sinceBoot() + retryDelay_;
    retryDelay_ = std::min(retryDelay_ * 2, maximumRetry);
}

void ChargerKeeper::noteChange(const Attempt& attempt)
{
    ChargerAction done{.date = ports_.clock.now(), .action = "", .reason = attempt.reason};
    for (const auto& change : attempt.outcome.changes)
        done.action += (done.action.empty() ? "" : " ") + change;
    changeLog_.info(done.action + " " + done.reason);
    if (actions_.size() >= maximumActions) actions_.erase(actions_.begin());
    actions_.push_back(std::move(done));
}

void ChargerKeeper::attempted(const Attempt& attempt)
{
    isActing_ = false;
    chargers_ = attempt.outcome.chargers;
    planRetry(attempt.wanted);
    attempted_ = attempt.wanted;
    isRefused_ = attempt.outcome.isRefused;
    const bool changed = !attempt.outcome.changes.empty();
    if (changed) noteChange(attempt);
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
    retryDelay_ = firstRetry;
}

ChargeControl ChargerKeeper::control() const
{
    ChargeControl best = ChargeControl::none;
    for (const auto& one : chargers_) best = std::max(best, one.control);
    return best;
}

/// The first battery that has any control.
const BatteryCharger* ChargerKeeper::controlled() const
{
    const auto found =
        std::ranges::find_if(chargers_, [](const auto& one) { return one.control != ChargeControl::none; });
    return found == chargers_.end() ? nullptr : &*found;
}

std::optional<Thresholds> ChargerKeeper::inForce() const
{
    if (const auto* limit = fixedLimitInForce()) return heldBy(*limit, true);
    const auto* charger = controlled();
    return charger && charger->isObeyed ? charger->inForce : std::nullopt;
}

/// As exactly as it is known; null where it is off, or where the charger takes percentages.
const FixedLimit* ChargerKeeper::fixedLimitInForce() const
{
    const auto* charger = controlled();
    const bool isOn = charger && charger->family->fixed && charger->inForce && charger->inForce->end < 100;
    if (!isOn) return nullptr;
    const bool isOneOfTwo = charger->family->fixed == fixedLimit("55-60 or 80");
    return isOneOfTwo && heldLevel_.limit() ? heldLevel_.limit() : charger->family->fixed;
}

bool ChargerKeeper::learn(const ChargeReading& reading)
{
    const bool isNews = heldLevel_.observe(fixedLimitInForce() != nullptr, reading, ports_.clock.sinceBoot());
    if (isNews) ports_.log.info(category, "The firmware's own limit holds " + heldLevel() + "%.");
    return isNews;
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
            report.isRefused = isRefused_ && attempted_ == wanted;
        }
    }
    const auto* limit = fixedLimitInForce();
    if (limit) report.fixedLimit = limit->text;
    if (const auto held = inForce(); held && (!limit || limit->isExact)) {
        report.startThreshold = held->start.value_or(-1);
        report.endThreshold = held->end;
    }
    if (actions_.empty()) return;
    report.lastAction = actions_.back().action;
    report.lastReason = actions_.back().reason;
    report.lastActionDate = actions_.back().date;
}

} // namespace velmora
