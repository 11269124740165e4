// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/ChargePolicy.h"
#include "wire/FixedLimit.h"

#include <filesystem>
#include <optional>
#include <span>
#include <string_view>

namespace velmora {

/// What one kernel driver makes of charge thresholds, or what its firmware holds instead of them. This table
/// is the one place that names drivers: the next one is a row here and a row in its test.
struct DriverFamily {
    std::string_view name;
    /// The kernel module whose folder under /sys/module tells that it is loaded; or the supply's name.
    std::string_view module;
    std::string_view supply{};

    int lowestStart = 0;
    int highestStart = 99;
    int lowestEnd = 1;
    /// Smallest distance from start to end that it keeps.
    int gap = 1;
    /// The end values that it takes, ascending; empty: any.
    std::span<const int> ends{};
    /// The start follows the end and is not written.
    bool startFollows = false;
    /// It shows what was last sent, whatever the firmware holds: after a start, a plug or a resume the value
    /// is sent again.
    bool echoes = false;
    /// What is held while its limiter is on; null: it takes thresholds.
    const FixedLimit* fixed = nullptr;
    /// It is the machine's, and acts on all batteries at once.
    bool isShared = false;

    /// The nearest that it takes: no end above the wanted one where there is a choice. A fixed limit is on
    /// for whatever is below 100, since it is nearer to what is wanted than no limit.
    Thresholds fitted(Thresholds wanted) const;
};

/// The family of the battery `supply` on the tree at `root`, of those that offer `control`; the plain rules
/// of the kernel's class where none is recognised. `module`: the kernel module that is known to be at work,
/// empty for none. Never fails.
const DriverFamily& driverFamily(const std::filesystem::path& root, std::string_view supply,
                                 ChargeControl control, std::string_view module = "");

/// What a charger holds while its fixed limit is on, and while it is off.
Thresholds heldBy(const FixedLimit& limit, bool isOn);

/// All rows, the plain ones last: of fixed limits, then of thresholds.
std::span<const DriverFamily> driverFamilies();

} // namespace velmora
