// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/ChargeEventRules.h"

#include "base/Saturate.h"

#include <algorithm>
#include <utility>

namespace velmora {

using namespace std::chrono_literals;
using Kind = ChargeEvent::Kind;

namespace {

/// A plug that is pushed in bounces, and docks take a while to agree with their charger.
constexpr ChargeEventRules::Time sourcePatience = 3s;

const char* nameOf(bool hasExternalPower)
{
    return hasExternalPower ? "AC" : "Battery";
}

/// The limit that now stops charging by itself; nothing while a person decides otherwise.
std::optional<Thresholds> limitOf(const ChargeEventRules::Facts& facts)
{
    const bool isLimited = facts.mode == ChargeMode::autoProtect || facts.mode == ChargeMode::storage;
    return isLimited && facts.inForce && facts.inForce->end < 100 ? facts.inForce : std::nullopt;
}

/// From this level on charging may come and go without meaning anything.
double edgeOf(const Thresholds& limit, bool isFixed)
{
    if (!limit.start) return limit.end - 2;
    return isFixed ? *limit.start : limit.end - 1;
}

} // namespace

std::vector<ChargeEvent> ChargeEventRules::observe(const Facts& facts, Time now)
{
    followSource(facts.reading.hasExternalPower, now);
    followLimit(facts);
    followHeat(facts);
    if (facts.isOverrideFulfilled) tell({Kind::overrideCompleted});
    followLevel(facts.reading);
    followCycles(facts.cycleCount);
    return std::exchange(events_, {});
}

std::optional<ChargeEventRules::Time> ChargeEventRules::due() const
{
    return otherSourceSince_ ? std::optional(*otherSourceSince_ + sourcePatience) : std::nullopt;
}

void ChargeEventRules::followSource(bool hasExternalPower, Time now)
{
    const std::string source = nameOf(hasExternalPower);
    if (memory_.powerSource.empty()) memory_.powerSource = source;
    if (memory_.powerSource == source) return otherSourceSince_.reset();
    if (!otherSourceSince_) otherSourceSince_ = now;
    if (now - *otherSourceSince_ < sourcePatience) return;
    otherSourceSince_.reset();
    memory_.powerSource = source;
    tell({.kind = Kind::powerSourceChanged, .powerSource = source});
}

void ChargeEventRules::followLimit(const Facts& facts)
{
    const auto& reading = facts.reading;
    if (otherSourceSince_) return;       // a bouncing plug says nothing about the limit
    if (facts.isPausedForHeat()) return; // nor does a charge that waits for something else
    if (!facts.isFollowed) return;
    const auto limit = reading.hasExternalPower ? limitOf(facts) : std::nullopt;
    if (!limit || limit->end != memory_.pausedAtLimit) memory_.pausedAtLimit = -1;
    if (!limit) {
        // A limit that is switched on in the middle of a charge stops that one too.
        memory_.isChargingToLimit = reading.takesPower() && facts.mode == ChargeMode::off;
        return;
    }
    const bool isWellBelow = reading.lowestLevel() < edgeOf(*limit, facts.isFixed);
    if (reading.takesPower() && isWellBelow) {
        if (memory_.pausedAtLimit >= 0) tell({Kind::chargingResumed});
        memory_.pausedAtLimit = -1;
        memory_.isChargingToLimit = true;
    } else if (!reading.takesPower() && !isWellBelow && memory_.isChargingToLimit) {
        tell({Kind::chargingPaused});
        memory_.pausedAtLimit = limit->end;
        memory_.isChargingToLimit = false;
    }
}

void ChargeEventRules::followHeat(const Facts& facts)
{
    if (facts.isCool) memory_.isHeatTold = false;
    const bool hasStopped = facts.reading.hasExternalPower && !facts.reading.takesPower();
    if (!facts.isPausedForHeat() || !hasStopped || memory_.isHeatTold) return;
    memory_.isHeatTold = true;
    tell({Kind::thermalPause});
}

void ChargeEventRules::followLevel(const ChargeReading& reading)
{
    const std::int64_t level = truncated(reading.percentage);
    const bool givesPower = reading.isDischarging || !reading.hasExternalPower;
    // One by one after a sleep, too: who listens for a level is not to miss it.
    for (auto lost = memory_.level - 1; givesPower && lost >= std::max<std::int64_t>(level, 0); --lost)
        tell({.kind = Kind::levelLost, .level = lost});
    // A gauge that wavers by a point while the battery empties has lost each point once.
    const bool isWavering = givesPower && level == memory_.level + 1;
    if (!isWavering || memory_.level < 0) memory_.level = level;
}

void ChargeEventRules::followCycles(std::optional<std::int64_t> count)
{
    if (!count) return;
    const bool isOneMore = memory_.cycleCount > 0 && *count == memory_.cycleCount + 1;
    if (isOneMore) tell({.kind = Kind::cycleCompleted, .cycleCount = *count});
    memory_.cycleCount = *count;
}

} // namespace velmora
