// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopPhysics.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

constexpr double longestStep = 1;             // seconds
constexpr double longestSpan = 30.0 * 86'400; // seconds
constexpr double room = 25;                   // °C
constexpr double idleRise = 14;               // °C above the room
constexpr double loadRise = 1.1;              // °C a watt
constexpr double chargeRise = 0.3;            // °C a watt
constexpr double throttledRise = 3;           // °C above the passive trip, the most
constexpr double warmingSeconds = 45;

/// Where the processor's heat settles.
double settledHeat(double load, double charge)
{
    return std::min(room + idleRise + loadRise * load + chargeRise * charge,
                    LaptopPhysics::passiveTrip + throttledRise);
}

} // namespace

LaptopPhysics::LaptopPhysics(std::vector<SimulatedBattery> batteries, bool isPlugged, double loadWatts)
    : batteries_(std::move(batteries)), isPlugged_(isPlugged), load_(0), celsius_(0)
{
    setLoad(loadWatts);
    celsius_ = settledHeat(load_, 0);
}

void LaptopPhysics::advance(double seconds)
{
    if (!std::isfinite(seconds)) return;
    double left = std::min(seconds, longestSpan);
    while (left > 0) {
        step(std::min(left, longestStep));
        left -= longestStep;
    }
}

void LaptopPhysics::plug(bool isPlugged)
{
    isPlugged_ = isPlugged;
    settle();
}

void LaptopPhysics::setLoad(double watts)
{
    if (std::isfinite(watts)) load_ = std::clamp(watts, 0.0, 150.0);
}

void LaptopPhysics::step(double seconds)
{
    for (auto& battery : batteries_) battery.decide(isPlugged_);
    const auto watts = flows();
    double charge = 0;
    for (std::size_t index = 0; index < batteries_.size(); ++index) {
        batteries_[index].flow(watts[index], seconds, room + 0.1 * load_);
        charge += std::max(0.0, watts[index]);
    }
    celsius_ += (settledHeat(load_, charge) - celsius_) * (1 - std::exp(-seconds / warmingSeconds));
}

/// The power into each battery.
std::vector<double> LaptopPhysics::flows() const
{
    std::vector<double> watts(batteries_.size(), 0.0);
    const double spare = (isPlugged_ ? chargerWatts : 0) - load_;
    if (spare > 0) {
        const auto taker = std::ranges::find_if(batteries_, &SimulatedBattery::isCharging);
        if (taker == batteries_.end()) return watts;
        watts[static_cast<std::size_t>(taker - batteries_.begin())] = std::min(spare, taker->appetite());
    } else {
        const auto giver = std::find_if(batteries_.rbegin(), batteries_.rend(),
                                        [](const auto& battery) { return !battery.isEmpty(); });
        if (giver == batteries_.rend()) return watts;
        watts[static_cast<std::size_t>(batteries_.rend() - giver) - 1] = spare;
    }
    return watts;
}

} // namespace velmora
