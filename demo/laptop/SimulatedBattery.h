// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "ThresholdDriver.h"

#include <optional>

namespace velmora {

/// What a battery pack is made of and how it stands.
struct BatteryMake {
    double fullWattHours = 50; ///< what it holds today
    double designVoltage = 11.4;
    double level = 70; ///< percent of `fullWattHours`
    double watts = 0;  ///< what flows at the beginning; positive into the battery
    bool isCharging = false;
    int cycles = 0;
    double celsius = 25;
    ChargeThresholds thresholds{};
};

/// One battery pack and the firmware that charges it: energy, heat, voltage, cycles.
///
/// It takes a constant power up to 80 % and ever less above, like a lithium cell whose voltage has reached
/// its limit.
class SimulatedBattery {
public:
    explicit SimulatedBattery(const BatteryMake& make);

    /// What firmware charges up to and begins below. Takes effect with the next `decide`.
    ChargeThresholds thresholds;

    double level() const; ///< percent, 0 to 100
    double fullWattHours() const { return full_; }
    double wattHours() const { return now_; }
    double watts() const { return watts_; } ///< positive into the battery
    double volts() const;
    double celsius() const { return celsius_; }
    int cycles() const;
    bool isFull() const { return now_ >= full_; }
    bool isEmpty() const { return now_ <= 0; }

    /// Firmware's decision: charges until `end`, then not before the level has fallen below `start`; without
    /// a start, below `end` less a small gap of its own. Without mains there is none to be made.
    void decide(bool isPlugged);
    bool isCharging() const { return isCharging_; }

    /// The power that it would take at this level, in watts.
    double appetite() const;

    /// `watts` flow for so many seconds, in a surrounding of `ambient` °C.
    void flow(double watts, double seconds, double ambient);

    /// Fills or empties it at once. Percent.
    void setLevel(double percent);
    /// Something keeps it at that many °C, or no longer.
    void setHeat(std::optional<double> celsius);
    /// One more full cycle is behind it.
    void addCycle() { cycles_ += 1; }

private:
    double full_;
    double now_;
    double designVoltage_;
    double watts_;
    double celsius_;
    std::optional<double> keptAt_; ///< °C
    double cycles_;
    bool isCharging_;
};

} // namespace velmora
