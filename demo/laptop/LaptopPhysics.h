// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "SimulatedBattery.h"

#include <vector>

namespace velmora {

/// The flow of power through a laptop, on virtual time: what the charger gives goes to the machine first and
/// what is left to the batteries; without a charger, or with one too weak, a battery gives the rest.
///
/// Batteries are used one at a time, as on laptops with two: the first that wants charge gets it, and the
/// last that holds energy gives it (the removable one before the internal one).
class LaptopPhysics {
public:
    LaptopPhysics(std::vector<SimulatedBattery> batteries, bool isPlugged, double loadWatts);

    static constexpr double chargerWatts = 65;
    static constexpr double passiveTrip = 95;   ///< °C; hotter than a little above it the machine throttles
    static constexpr double criticalTrip = 105; ///< °C

    /// Lets time pass. Negative and infinite spans are none; a month is the most that passes in one call.
    void advance(double seconds);

    /// The charger is put in or pulled out.
    void plug(bool isPlugged);
    bool isPlugged() const { return isPlugged_; }

    /// What the machine itself consumes, in watts; kept within 0 and 150.
    void setLoad(double watts);
    double load() const { return load_; }

    std::vector<SimulatedBattery>& batteries() { return batteries_; }
    const std::vector<SimulatedBattery>& batteries() const { return batteries_; }

    double processorCelsius() const { return celsius_; }

    /// Lets the firmware decide anew, at this very moment. After a change from outside.
    void settle() { step(0); }

private:
    void step(double seconds);
    std::vector<double> flows() const;

    std::vector<SimulatedBattery> batteries_;
    bool isPlugged_;
    double load_;
    double celsius_;
};

} // namespace velmora
