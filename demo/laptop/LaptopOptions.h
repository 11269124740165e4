// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "LaptopTree.h"

#include <optional>
#include <string>

namespace velmora {

/// What `velmora-laptop` was asked for.
struct LaptopOptions {
    TreeOptions tree;
    std::string laptop = "thresholds"; ///< a kind, or a path that ends in .sysfs
    std::string driver;                ///< whose rules the thresholds follow; empty: the laptop's own
    double speed = 160;                ///< seconds that pass for the laptop in one of ours
    std::optional<double> health;      ///< percent of what every battery was made for
    std::optional<double> level;       ///< percent, of every battery
    std::optional<double> load;        ///< watts
    std::optional<double> heat;        ///< °C, at which every battery is kept
    bool isUnplugged = false;
    bool isQuiet = false;

    static std::string usage();

    /// Throws std::runtime_error with a sentence.
    static LaptopOptions parse(int argc, char** argv);

    /// The laptop that was asked for, as it is at the beginning. Throws std::runtime_error.
    LaptopMake make() const;
};

} // namespace velmora
