// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "CapturedBattery.h"
#include "CapturedMachine.h"

#include <string>
#include <vector>

namespace velmora {

/// The supplies of a capture that move: its own batteries and its chargers, and how they stood.
struct LaptopParts {
    struct Battery {
        std::string name;
        CapturedBattery captured;
    };
    std::vector<Battery> batteries;    ///< not those of mice and the like
    std::vector<std::string> chargers; ///< supplies with an `online`: mains, or else USB
    bool isPlugged = true;             ///< some charger is online; without one: no battery is discharging
    double load = 9;                   ///< watts; what the batteries gave where they were discharging

    static LaptopParts of(const CapturedMachine& machine);
};

/// Names of all supplies in class/power_supply, sorted.
std::vector<std::string> supplyNames(const CapturedMachine& machine);

/// The folder of a supply.
std::string supplyPath(std::string_view supply);

} // namespace velmora
