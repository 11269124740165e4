// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopKinds.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <initializer_list>

namespace velmora {

namespace {

constexpr std::array<std::string_view, 6> kinds{"thresholds",        "end-only",  "two-batteries",
                                                "conservation-mode", "long-life", "none"};

class Composer {
public:
    void add(const std::string& folder, std::initializer_list<std::pair<const char*, std::string>> files)
    {
        for (const auto& [name, text] : files) machine_.values[folder + "/" + name] = text;
    }

    void addCharger() { add(supplyPath("AC"), {{"type", "Mains"}, {"online", "1"}}); }

    void addZone()
    {
        const auto milli = [](double celsius) { return std::to_string(std::llround(celsius) * 1000); };
        add(zone, {{"type", "acpitz"},
                   {"temp", "48000"},
                   {"mode", "enabled"},
                   {"policy", "step_wise"},
                   {"trip_point_0_type", "critical"},
                   {"trip_point_0_temp", milli(LaptopPhysics::criticalTrip)},
                   {"trip_point_1_type", "passive"},
                   {"trip_point_1_temp", milli(LaptopPhysics::passiveTrip)}});
    }

    /// A battery with 4 % wear; `wattHours` is what it was made for, `chargingWatts` what it takes now.
    void addBattery(const std::string& name, int wattHours, int chargingWatts, const char* model)
    {
        const int full = wattHours * 960'000;
        const int now = full / 100 * 70;
        add(supplyPath(name), {{"type", "Battery"},
                               {"status", chargingWatts > 0 ? "Charging" : "Not charging"},
                               {"present", "1"},
                               {"technology", "Li-poly"},
                               {"cycle_count", "118"},
                               {"voltage_min_design", "11520000"},
                               {"voltage_now", "11990000"},
                               {"power_now", std::to_string(chargingWatts * 1'000'000)},
                               {"energy_full_design", std::to_string(wattHours * 1'000'000)},
                               {"energy_full", std::to_string(full)},
                               {"energy_now", std::to_string(now)},
                               {"capacity", "70"},
                               {"capacity_level", "Normal"},
                               {"temp", "280"},
                               {"model_name", model},
                               {"manufacturer", "Velmora"}});
    }

    void addEnd(const std::string& name) { add(supplyPath(name), {{"charge_control_end_threshold", "100"}}); }
    void addStart(const std::string& name)
    {
        add(supplyPath(name), {{"charge_control_start_threshold", "0"}});
    }

    /// The firmware's own limit, off.
    void addConservationMode()
    {
        add("bus/platform/drivers/ideapad_acpi/VPC2004:00", {{"conservation_mode", "0"}});
    }
    void addLongLife(const std::string& name)
    {
        add(supplyPath(name), {{"charge_types", "Fast [Standard] Long_Life"}});
    }

    LaptopMake made(std::string_view driver)
    {
        return {.machine = machine_, .driver = ThresholdDriver::named(driver), .heatedZone = zone};
    }

private:
    static constexpr auto zone = "class/thermal/thermal_zone0";
    CapturedMachine machine_;
};

LaptopMake withOwnLimit(Composer& composer, std::string_view kind)
{
    composer.addBattery("BAT0", 57, 38, "SIM-INT");
    const bool hasSwitch = kind == "conservation-mode";
    hasSwitch ? composer.addConservationMode() : composer.addLongLife("BAT0");
    auto make = composer.made("ideapad");
    if (!hasSwitch) make.fixed = {.start = 75, .end = 80};
    return make;
}

} // namespace

std::span<const std::string_view> laptopKinds()
{
    return kinds;
}

std::optional<LaptopMake> laptopOfKind(std::string_view kind)
{
    if (std::ranges::find(kinds, kind) == kinds.end()) return std::nullopt;
    Composer composer;
    composer.addCharger();
    composer.addZone();
    if (kind == "none") return composer.made("thinkpad");
    if (kind == "conservation-mode" || kind == "long-life") return withOwnLimit(composer, kind);

    const bool hasTwo = kind == "two-batteries";
    composer.addBattery("BAT0", hasTwo ? 24 : 57, hasTwo ? 16 : 38, "SIM-INT");
    composer.addEnd("BAT0");
    if (kind == "end-only") return composer.made("asus");
    composer.addStart("BAT0");
    if (hasTwo) {
        composer.addBattery("BAT1", 48, 0, "SIM-EXT");
        composer.addEnd("BAT1");
        composer.addStart("BAT1");
    }
    return composer.made("thinkpad");
}

} // namespace velmora
