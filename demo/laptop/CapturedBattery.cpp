// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "CapturedBattery.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace velmora {

namespace {

constexpr double micro = 1e6;
constexpr double secondsAnHour = 3600;

std::string whole(double value)
{
    return std::to_string(std::llround(value));
}

/// The first of several attributes that holds a positive number, or `fallback`.
double firstPositive(const Folder& folder, std::initializer_list<const char*> names, double fallback)
{
    for (const char* name : names) {
        if (const double value = folder.number(name, 0); value > 0) return value;
    }
    return fallback;
}

double volts(const Folder& folder)
{
    const double value = firstPositive(folder, {"voltage_min_design", "voltage_now"}, 11.4 * micro);
    return value < micro ? value / 1e3 : value / micro; // some gauges count in thousandths
}

/// What the battery holds when full, in watt-hours; 0 where nothing says so.
double fullWattHours(const Folder& folder)
{
    double wattHours = firstPositive(folder, {"energy_full", "energy_full_design"}, 0) / micro;
    if (wattHours <= 0) {
        wattHours = firstPositive(folder, {"charge_full", "charge_full_design"}, 0) / micro * volts(folder);
    }
    if (wattHours < 1) wattHours *= 1e3;
    return wattHours < 1 ? 0 : wattHours;
}

/// The power that flows according to the capture, in watts, without its sign.
double capturedWatts(const Folder& folder)
{
    const double power = std::abs(folder.number("power_now", 0)) / micro;
    const double watts =
        power > 0 ? power : std::abs(folder.number("current_now", 0)) / micro * volts(folder);
    return std::min(watts, 200.0);
}

std::string level(const SimulatedBattery& battery)
{
    if (battery.isFull()) return "Full";
    if (battery.level() <= 3) return "Critical";
    return battery.level() <= 10 ? "Low" : "Normal";
}

/// Seconds until `wattHours` have gone at `watts`; 0 says unknown.
std::string seconds(double wattHours, double watts)
{
    return watts > 0 ? whole(wattHours / watts * secondsAnHour) : "0";
}

/// What the capture's threshold files say. A limit that it shows at work and no file tells of, such as one
/// set in the firmware's menu, is kept where the battery stood: else it would start to charge as soon as it
/// came to life.
ChargeThresholds capturedThresholds(const Folder& folder, double level)
{
    const auto percent = [&](const char* name, const char* olderName, double fallback) {
        const double value = folder.number(name, folder.number(olderName, fallback));
        return static_cast<int>(std::clamp(value, 0.0, 100.0));
    };
    const auto status = folder.text("status");
    const bool isMoving = status == "Charging" || status == "Discharging";
    const double unseen = isMoving || level > 98 ? 100 : level;
    return {.start = percent("charge_control_start_threshold", "charge_start_threshold", 0),
            .end = percent("charge_control_end_threshold", "charge_stop_threshold", unseen)};
}

} // namespace

std::optional<CapturedBattery> CapturedBattery::of(const Folder& folder)
{
    CapturedBattery captured;
    double level = folder.number("capacity", -1);
    for (auto [quantity, family] :
         {std::pair{&captured.charge_, "charge"}, std::pair{&captured.energy_, "energy"}}) {
        const std::string name = family;
        *quantity = {folder.number(name + "_now", -1), folder.number(name + "_full", 0)};
        const double ratio = quantity->full > 0 ? quantity->now / quantity->full : -1;
        if (0 <= ratio && ratio <= 1.1) {
            level = 100 * ratio;
        } else {
            quantity->full = 0;
        }
    }
    captured.make_.fullWattHours = fullWattHours(folder);
    if (level < 0 || captured.make_.fullWattHours <= 0) return std::nullopt;

    const auto status = folder.text("status");
    captured.isSigned_ = folder.has("scope"); // ACPI's batteries have none
    captured.make_.level = std::min(level, 100.0);
    captured.make_.designVoltage = volts(folder);
    captured.make_.isCharging = status == "Charging";
    if (status == "Charging" || status == "Discharging") {
        captured.make_.watts = (captured.make_.isCharging ? 1 : -1) * std::max(capturedWatts(folder), 0.001);
    }
    captured.make_.cycles = static_cast<int>(std::clamp(folder.number("cycle_count", 0), 0.0, 1e5));
    captured.make_.celsius = std::clamp(folder.number("temp", 250) / 10, -20.0, 80.0);
    captured.make_.thresholds = capturedThresholds(folder, level);
    return captured;
}

std::string CapturedBattery::status(const SimulatedBattery& battery)
{
    if (battery.watts() > 0) return "Charging";
    if (battery.watts() < 0) return "Discharging";
    return battery.isFull() ? "Full" : "Not charging";
}

/// A quantity at the battery's level now; in proportion to the capture where its full value is of no use.
double CapturedBattery::scaled(std::string_view name, const SimulatedBattery& battery) const
{
    const auto& quantity = name == "energy_now" ? energy_ : charge_;
    if (quantity.full > 0) return quantity.full * battery.level() / 100;
    return make_.level > 0 ? quantity.now * battery.level() / make_.level : quantity.now;
}

std::optional<std::string> CapturedBattery::text(std::string_view name, const SimulatedBattery& battery) const
{
    const double watts = isSigned_ ? battery.watts() : std::abs(battery.watts());
    if (name == "status") return status(battery);
    if (name == "capacity") return whole(std::floor(battery.level()));
    if (name == "capacity_level") return level(battery);
    if (name == "energy_now" || name == "charge_now") return whole(scaled(name, battery));
    if (name == "power_now") return whole(watts * micro);
    if (name == "current_now") return whole(watts / battery.volts() * micro);
    if (name == "voltage_now") return whole(battery.volts() * micro);
    if (name == "temp") return whole(battery.celsius() * 10);
    if (name == "cycle_count") return whole(battery.cycles());
    if (name == "time_to_empty_now" || name == "time_to_empty_avg") {
        return seconds(battery.wattHours(), -battery.watts());
    }
    if (name == "time_to_full_now" || name == "time_to_full_avg") {
        return seconds(battery.fullWattHours() - battery.wattHours(), battery.watts());
    }
    return std::nullopt;
}

} // namespace velmora
