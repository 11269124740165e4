// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "platform/Complaints.h"
#include "power/ChargeAttributes.h"
#include "power/DeviceClass.h"
#include "power/PlatformLimiters.h"

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// The kernel's word for what a battery is doing.
enum class SupplyStatus : std::uint8_t { unknown, charging, discharging, notCharging, full };

/// One battery, in units of daily life. What the driver does not tell, or not believably, is absent.
struct BatteryReading {
    std::string name; ///< "BAT0"
    SupplyStatus status = SupplyStatus::unknown;
    std::optional<double> percentage;                              ///< 0 to 100
    std::optional<double> energyNow, energyFull, energyFullDesign; ///< Wh
    std::optional<double> power;                                   ///< W, positive into the battery
    /// W as `energyNow` counts them, positive into the battery: for a driver that counts charge it leaves the
    /// voltage of the moment out, so that energy over rate is charge over current.
    std::optional<double> rate;
    std::optional<double> voltage;                               ///< V, at the terminals
    std::optional<double> temperature;                           ///< degrees Celsius
    std::optional<double> health;                                ///< percent: full over design, at most 100
    std::optional<std::int64_t> cycleCount;                      ///< full cycles
    std::optional<std::chrono::seconds> timeToFull, timeToEmpty; ///< the driver's own, read if needed
    std::optional<std::string> manufacturer, model;              ///< of at most 64 bytes each
    ChargeAttributes charge;
};

/// All that the machine is powered by, as it was at one moment (or nearly: every attribute is a question to
/// the firmware of its own).
struct PowerSupplyReading {
    std::vector<BatteryReading> batteries; ///< the laptop's own, by name
    std::vector<BatteryReading> upses;     ///< uninterruptible power supplies on a cable, by name
    bool isExternallyPowered = true;       ///< fed by something else than its own batteries
};

/// Reads the kernel's power-supply class (Documentation/ABI/testing/sysfs-class-power). Drivers leave out,
/// misname and contradict; the rules are these, and no others.
///
/// **The laptop's own batteries** have the `type` Battery and are `present` (an absent file says yes). With
/// `scope` Device they belong to a mouse, a keyboard or a headset.
///
/// **External power** is the kernel's own rule, power_supply_is_system_supplied(): any supply that is no
/// battery and not of `scope` Device whose `online` is not 0 (it may be 2); where all that can be read are 0,
/// none. But a USB source that claims to be online does not outvote a supply of `type` Mains that is not and
/// a battery that is discharging. Where no `online` can be read the batteries decide: one that is
/// discharging, or giving power with no status, means none; else there is, as on a desktop.
///
/// **Units.** The energy family (`energy_*`) or the charge family (`charge_*`) is taken whole, never mixed:
/// the one that has now and full, else the one that has full, energy first. Charge becomes energy by the
/// nominal voltage: `voltage_min_design`, `voltage_max_design`, `voltage_now`, else that of three lithium
/// cells. A full or design value below 0.1 Ah or Wh is in milli-units, and with it the whole family and the
/// current; so is a voltage below 1 V.
///
/// **Energy.** A full or design value counts if it is from 0.1 to 1000 Wh or Ah. Where full is missing,
/// design is used in its place for the level and the minutes. "Now" is not believed when negative, beyond
/// 110 % of full (up to there it is full), when 0 while `capacity` says more than 1, or when more than ten
/// points from a believed `capacity`: it is then made from that.
///
/// **Percentage** is `capacity`, up to 110 (more than 100 being 100), unless it says 0 while "now" is above 5
/// % of full; else now over full; else 100 where status or `capacity_level` is Full.
///
/// **Power** is `power_now`, else `current_now` times voltage, else their averages. Drivers differ on the
/// sign: the status decides where it names a direction, else the driver's own sign stands. Under 0.1 W is a
/// gauge's noise and 0; from 500 W on it is not believed. An unknown voltage leaves the power unknown, not
/// the rate.
///
/// **Health** is full over design, unknown outside 1 to 150 %: then one of the two is not what it says.
///
/// **Cycles** up to 0 and from 100000 on are not counted by the driver. **Seconds** are those of the driver
/// (now, else average) up to three days, asked for where energy or rate are unknown or the rate is 0; 0 and
/// 65535, in seconds or minutes, are a gauge's word for unknown.
///
/// **Voltage** is `voltage_now` from 1 to 100 V. **Temperature** is `temp`, believed from -40 to 120 degrees
/// but for 0 itself, a gauge's word for unknown. **Maker and model** are read once for as long as the battery
/// is there.
///
/// A battery that says Charging is charging, at a rate of 0 as well: many drivers cannot tell the rate.
///
/// An attribute that is there and cannot be read or believed is one line in the log, once, and the rest is
/// read all the same. One thread at a time.
class PowerSupplyReader {
public:
    PowerSupplyReader(const Sysfs& sysfs, Log& log)
        : complaints_(log, "PowerSupplyReader"),
          supplies_(sysfs, "class/power_supply", complaints_),
          limiters_(sysfs, complaints_)
    {
    }

    /// Lists the supplies and reads each of them once. `afresh`: any of them may have changed, so that what
    /// was remembered of them does not count (see `DeviceAttributes`).
    PowerSupplyReading read(bool afresh = false);

private:
    Complaints complaints_;
    DeviceClass supplies_;
    PlatformLimiters limiters_;
};

} // namespace velmora
