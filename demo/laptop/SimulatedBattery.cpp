// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SimulatedBattery.h"

#include <algorithm>
#include <cmath>

namespace velmora {

namespace {

constexpr double resumeGap = 2;          // percentage points, where there is no start threshold
constexpr double chargeRate = 0.7;       // of the capacity, an hour
constexpr double taperBegins = 80;       // percent
constexpr double taperLeaves = 0.08;     // of the full power, at 100 %
constexpr double innerResistance = 0.08; // ohm
constexpr double warmth = 0.25;          // degrees a watt
constexpr double warmingSeconds = 900;

} // namespace

SimulatedBattery::SimulatedBattery(const BatteryMake& make)
    : thresholds(make.thresholds),
      full_(make.fullWattHours),
      now_(0),
      designVoltage_(make.designVoltage),
      watts_(make.watts),
      celsius_(make.celsius),
      cycles_(make.cycles),
      isCharging_(make.isCharging)
{
    setLevel(make.level);
}

double SimulatedBattery::level() const
{
    return isFull() ? 100 : 100 * now_ / full_;
}

double SimulatedBattery::volts() const
{
    const double atRest = designVoltage_ * (0.95 + 0.13 * now_ / full_);
    return atRest + innerResistance * watts_ / atRest;
}

int SimulatedBattery::cycles() const
{
    return static_cast<int>(cycles_);
}

void SimulatedBattery::decide(bool isPlugged)
{
    const double resume = thresholds.start > 0 ? thresholds.start : thresholds.end - resumeGap;
    if (!isPlugged || level() >= thresholds.end) {
        isCharging_ = false;
    } else if (level() < resume) {
        isCharging_ = true;
    }
}

double SimulatedBattery::appetite() const
{
    const double above = std::clamp((level() - taperBegins) / (100 - taperBegins), 0.0, 1.0);
    return full_ * chargeRate * (1 - (1 - taperLeaves) * above);
}

void SimulatedBattery::flow(double watts, double seconds, double ambient)
{
    const double before = now_;
    watts_ = watts;
    now_ = std::clamp(now_ + watts * seconds / 3600, 0.0, full_);
    cycles_ += std::max(0.0, now_ - before) / full_;
    if (keptAt_) return;
    const double settled = ambient + warmth * std::abs(watts);
    celsius_ += (settled - celsius_) * (1 - std::exp(-seconds / warmingSeconds));
}

void SimulatedBattery::setHeat(std::optional<double> celsius)
{
    keptAt_ = celsius;
    celsius_ = celsius.value_or(celsius_);
}

void SimulatedBattery::setLevel(double percent)
{
    now_ = full_ * std::clamp(percent, 0.0, 100.0) / 100;
}

} // namespace velmora
