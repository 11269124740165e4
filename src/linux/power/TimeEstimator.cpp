// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/TimeEstimator.h"

#include "base/Saturate.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

using namespace std::chrono_literals;

constexpr std::chrono::milliseconds memory = 60s;
constexpr std::chrono::milliseconds maximumPause = 5min;
constexpr double maximumMinutes = 3 * 24 * 60;

std::int64_t inMinutes(double energy, double rate)
{
    const double minutes = energy / rate * 60;
    if (!(minutes <= maximumMinutes)) return -1;
    return std::max<std::int64_t>(1, truncated(std::round(minutes)));
}

std::int64_t inMinutes(std::optional<std::chrono::seconds> time)
{
    return time ? std::max<std::int64_t>(1, std::chrono::round<std::chrono::minutes>(*time).count()) : -1;
}

} // namespace

double TimeEstimator::follow(double rate, std::chrono::milliseconds now)
{
    const auto passed = now - last_;
    last_ = now;
    if (passed > maximumPause) readings_ = 0;
    readings_ = std::min(readings_ + 1, 1000);
    const double aged =
        1 - std::exp(-static_cast<double>(passed.count()) / static_cast<double>(memory.count()));
    mean_ += (rate - mean_) * std::max(1.0 / readings_, aged);
    return mean_;
}

TimeEstimator::Minutes TimeEstimator::update(const MachineBattery& battery, std::chrono::milliseconds now)
{
    const auto direction = battery.isCharging      ? Direction::in
                           : battery.isDischarging ? Direction::out
                                                   : Direction::none;
    if (direction != direction_) readings_ = 0;
    direction_ = direction;
    if (direction == Direction::none || battery.isFull) return {};

    const bool isIn = direction == Direction::in;
    std::int64_t minutes = inMinutes(isIn ? battery.timeToFull : battery.timeToEmpty);
    if (battery.rate && battery.energyNow && (battery.energyFull || !isIn)) {
        const double mean = follow(std::max(0.0, isIn ? *battery.rate : -*battery.rate), now);
        const double energy = isIn ? *battery.energyFull - *battery.energyNow : *battery.energyNow;
        if (mean > 0) minutes = inMinutes(energy, mean);
    }
    return isIn ? Minutes{.toFull = minutes} : Minutes{.toEmpty = minutes};
}

} // namespace velmora
