// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/HeatPause.h"

#include <algorithm>
#include <cmath>

namespace velmora {

using namespace std::chrono_literals;

namespace {

constexpr HeatPause::Time widestGap = 3min;
constexpr double largestStep = 10; // degrees Celsius
/// After a pause that ended for the level's sake, or a machine that takes more than its charger gives would
/// go to and fro at 30 %.
constexpr double lowestAgain = 35;

} // namespace

void HeatPause::observe(const Facts& facts, Time now)
{
    if (facts.temperature)
        feel(*facts.temperature, now);
    else if (now - lastTime_ > widestGap)
        forget();
    hasMeans_ = facts.control == ChargeControl::endThreshold || facts.control == ChargeControl::thresholds;
    decide(facts);
}

void HeatPause::feel(double celsius, Time now)
{
    hasSensor_ = true;
    const bool isContinued = last_ && now - lastTime_ <= widestGap;
    const bool isLeap = isContinued && std::abs(celsius - *last_) > largestStep;
    if (isLeap && !doubtedSince_) doubtedSince_ = now;
    if (isLeap && now - *doubtedSince_ < patience_ / 15) return;
    doubtedSince_.reset();
    last_ = celsius;
    lastTime_ = now;
    if (celsius < coolBelow) isHot_ = false;
    if (celsius < coolBelow) lowestLevel_ = lowest;
    if (celsius < hotFrom) return hotSince_.reset();
    if (!hotSince_ || !isContinued) hotSince_ = now;
    if (now - *hotSince_ >= patience_) isHot_ = true;
}

void HeatPause::forget()
{
    last_.reset();
    hotSince_.reset();
    doubtedSince_.reset();
    isHot_ = hasSensor_ = false;
}

void HeatPause::decide(const Facts& facts)
{
    const auto& reading = facts.reading;
    const bool isHeld = isHot_ && isPossible() && facts.isAvoidable && reading.hasExternalPower;
    if (!isHeld) return pausedAt_.reset();
    const double level = reading.lowestLevel();
    if (pausedAt_ && level < lowest) {
        lowestLevel_ = std::max(lowestLevel_, lowestAgain);
        return pausedAt_.reset();
    }
    if (!pausedAt_ && level >= lowestLevel_ && reading.takesPower())
        pausedAt_ = static_cast<int>(std::clamp(level, 1.0, 100.0));
}

void HeatPause::giveUp(std::optional<int> end)
{
    constexpr double never = 101;
    lowestLevel_ = end.value_or(never);
    pausedAt_.reset();
}

} // namespace velmora
