// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "Folder.h"
#include "SimulatedBattery.h"

#include <functional>
#include <optional>
#include <string>

namespace velmora {

/// A captured battery brought to life: what the pack in its folder must be made of, and what each of its
/// files says as that pack charges and drains.
class CapturedBattery {
public:
    /// Nothing for a battery of which neither energy nor charge nor capacity is known, or of which no size
    /// is.
    static std::optional<CapturedBattery> of(const Folder& folder);

    /// The pack as captured.
    const BatteryMake& make() const { return make_; }

    /// What the kernel would print for the attribute `name`; nothing for one that does not move with the
    /// battery.
    std::optional<std::string> text(std::string_view name, const SimulatedBattery& battery) const;

    /// In ACPI's words: Charging, Discharging, Full, Not charging.
    static std::string status(const SimulatedBattery& battery);

private:
    CapturedBattery() = default;
    double scaled(std::string_view name, const SimulatedBattery& battery) const;

    BatteryMake make_;
    /// Captured `..._now` and `..._full`, by attribute; the full one is 0 where it is unknown or contradicts.
    struct Quantity {
        double now = 0;
        double full = 0;
    };
    Quantity energy_, charge_;
    bool isSigned_ = false; ///< gauges tell the direction by the sign, ACPI does not
};

} // namespace velmora
