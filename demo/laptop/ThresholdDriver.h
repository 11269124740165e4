// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace velmora {

/// The two levels between which firmware keeps a battery, in percent. Charging begins below `start` and stops
/// at `end`; a start of 0 leaves the beginning to the firmware.
struct ChargeThresholds {
    int start = 0;
    int end = 100;

    friend bool operator==(const ChargeThresholds&, const ChargeThresholds&) = default;
};

enum class Threshold : std::uint8_t { start, end };

/// How one kernel driver takes what is written to `charge_control_start_threshold` and `..._end_threshold`:
/// what it accepts, moves along, rounds and refuses. After drivers/platform/x86/ of Linux 6.12.
struct ThresholdDriver {
    std::string_view name;
    /// Takes a number for one of the two and changes `held` as the driver would. 0 or an errno; a refusal
    /// changes nothing.
    int (*set)(ChargeThresholds& held, Threshold which, int value);
    /// The folder below /sys/module that tells of it; empty: none.
    std::string_view module{};

    /// The text of a write, taken as `kstrtoint` and then `set` would take it. 0 or an errno.
    int store(ChargeThresholds& held, Threshold which, std::string_view text) const;

    static std::span<const ThresholdDriver> all();
    /// Null for a name that nobody has.
    static const ThresholdDriver* named(std::string_view name);
};

} // namespace velmora
