// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/ChargeActuator.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// What each charger held before velmorad first wrote to it. It is given back when Velmora is removed.
class FirstHeld {
public:
    /// By the name of the supply; nothing for a charger that did not tell before it was written to, or that
    /// held no limit that was in force.
    using Entries = std::map<std::string, std::optional<Thresholds>>;

    /// More batteries than any laptop has.
    static constexpr std::size_t maximumEntries = 16;

    /// `isTooLate`: chargers were written to and no notes were taken, so that none tells its own value.
    explicit FirstHeld(Entries entries = {}, bool isTooLate = false)
        : entries_(std::move(entries)), isTooLate_(isTooLate)
    {
    }

    /// Notes the chargers that are met for the first time. `isLastChance`: they are written to from now on.
    /// Whether anything was noted.
    bool observe(const std::vector<BatteryCharger>& chargers, bool isLastChance);

    const Entries& entries() const { return entries_; }

private:
    Entries entries_;
    bool isTooLate_;
};

} // namespace velmora
