// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "power/MachineBattery.h"

#include <chrono>
#include <cstdint>
#include <optional>

namespace velmora {

/// How long it takes until the battery is full, or empty. A rate read now and then jumps with every page that
/// a browser loads; the estimate follows its mean: of all readings at first, of about the last minute later.
/// It starts anew when the direction changes, and after five minutes without a reading (the machine slept).
class TimeEstimator {
public:
    /// In minutes, at least 1; -1 where it cannot be known or is not to come.
    struct Minutes {
        std::int64_t toFull = -1; ///< always to 100 %, whatever limit holds the charge
        std::int64_t toEmpty = -1;
    };

    /// Takes in one reading, made at `now` (since boot). Energy over rate, else the driver's own time;
    /// nothing without a rate and beyond three days.
    Minutes update(const MachineBattery& battery, std::chrono::milliseconds now);

private:
    enum class Direction : std::uint8_t { none, in, out };

    /// The mean rate with this reading in it, W without sign.
    double follow(double rate, std::chrono::milliseconds now);

    Direction direction_ = Direction::none;
    double mean_ = 0; ///< W, without sign
    int readings_ = 0;
    std::chrono::milliseconds last_{0};
};

} // namespace velmora
