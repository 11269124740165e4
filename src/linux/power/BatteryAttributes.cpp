// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "power/BatteryAttributes.h"

#include "base/Saturate.h"
#include "base/Text.h"
#include "base/Utf8.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace velmora {

namespace {

constexpr double micro = 1e-6;
constexpr double milli = 1e-3;
constexpr auto chargeTypes = "charge_types";
constexpr double minimumContent = 0.1; // Wh or Ah
constexpr double maximumContent = 1000;
constexpr double maximumOverFull = 1.1;
constexpr double threeCells = 11.1;  // V
constexpr double noise = 0.1;        // W
constexpr double maximumPower = 500; // W
constexpr std::size_t maximumName = 64;

std::string whole(double value)
{
    return std::to_string(truncated(std::round(value)));
}

std::optional<double> number(DeviceAttributes& battery, const std::string& name)
{
    const auto value = battery.integer(name);
    return value ? std::optional(static_cast<double>(*value)) : std::nullopt;
}

SupplyStatus readStatus(DeviceAttributes& battery)
{
    static constexpr std::pair<std::string_view, SupplyStatus> words[] = {
        {"Unknown", SupplyStatus::unknown},
        {"Charging", SupplyStatus::charging},
        {"Discharging", SupplyStatus::discharging},
        {"Not charging", SupplyStatus::notCharging},
        {"Full", SupplyStatus::full},
    };
    const auto text = battery.text("status");
    if (!text) return SupplyStatus::unknown;
    for (const auto& [word, status] : words) {
        if (*text == word) return status;
    }
    battery.complain("status",
                     "is '" + text->substr(0, 40) + "', which is no known status; taking it for Unknown");
    return SupplyStatus::unknown;
}

/// Volts; nothing where there is no number or no battery could have that.
std::optional<double> believedVoltage(std::optional<double> raw)
{
    if (!raw) return std::nullopt;
    const double volts = *raw < 1e6 ? *raw * milli : *raw * micro;
    return volts >= 1 && volts <= 100 ? std::optional(volts) : std::nullopt;
}

/// That by design is read when it is needed, which is for few batteries.
struct Voltages {
    DeviceAttributes& battery;
    std::optional<double> terminals = believedVoltage(number(battery, "voltage_now"));

    /// By which charge becomes energy.
    std::optional<double> nominal() const
    {
        const auto voltage = design();
        return voltage ? voltage : terminals;
    }

    /// At the terminals, or nominal.
    std::optional<double> now() const { return terminals ? terminals : design(); }

    std::optional<double> design() const
    {
        const auto lowest = believedVoltage(number(battery, "voltage_min_design"));
        return lowest ? lowest : believedVoltage(number(battery, "voltage_max_design"));
    }
};

/// `energy_*` in Wh or `charge_*` in Ah.
struct Family {
    std::optional<double> now, full, design;
    double unit = micro; ///< what its numbers count, and the current's or power's with them
    bool isCharge = false;
};

void believeContent(DeviceAttributes& battery, const std::string& name, std::optional<double>& content)
{
    if (!content || (*content >= minimumContent && *content <= maximumContent)) return;
    battery.complain(name, "is " + whole(*content) + " Wh or Ah, which no battery holds; leaving it out");
    content.reset();
}

Family readFamily(DeviceAttributes& battery, const std::string& prefix)
{
    Family family;
    family.now = number(battery, prefix + "_now");
    family.full = number(battery, prefix + "_full");
    family.design = number(battery, prefix + "_full_design");
    const double largest = std::max(family.full.value_or(0), family.design.value_or(0));
    if (largest > 0 && largest * micro < minimumContent) family.unit = milli;
    for (auto* content : {&family.now, &family.full, &family.design}) {
        if (*content) **content *= family.unit;
    }
    believeContent(battery, prefix + "_full", family.full);
    believeContent(battery, prefix + "_full_design", family.design);
    if (family.now && (*family.now < 0 || *family.now > maximumContent * maximumOverFull)) {
        battery.complain(prefix + "_now",
                         "is " + whole(*family.now) + " Wh or Ah, which no battery holds; leaving it out");
        family.now.reset();
    }
    return family;
}

Family chooseFamily(DeviceAttributes& battery)
{
    const auto worth = [](const Family& family) { return (family.full ? 2 : 0) + (family.now ? 1 : 0); };
    Family energy = readFamily(battery, "energy");
    if (worth(energy) == 3) return energy;
    Family charge = readFamily(battery, "charge");
    charge.isCharge = true;
    return worth(charge) > worth(energy) || (!worth(energy) && charge.design) ? charge : energy;
}

std::optional<double> readCapacity(DeviceAttributes& battery)
{
    const auto capacity = number(battery, "capacity");
    if (!capacity) return std::nullopt;
    if (*capacity >= 0 && *capacity <= 100 * maximumOverFull) return std::min(*capacity, 100.0);
    battery.complain("capacity", "is " + whole(*capacity) + "%, more than any battery has; leaving it out");
    return std::nullopt;
}

/// Makes percentage and what is in the battery agree; the energy that makes it full is known.
void reconcile(DeviceAttributes& battery, BatteryReading& reading, std::optional<double> capacity)
{
    const double full = *reading.energyFull;
    auto& now = reading.energyNow;
    if (now && (*now > full * maximumOverFull || (*now == 0 && capacity > 1))) {
        battery.complain("energy_now or charge_now",
                         "is " + whole(*now) + " Wh against " + whole(full) + " when full; using capacity");
        now.reset();
    }
    if (now) now = std::min(*now, full);
    if (now && capacity == 0.0 && *now > full * 0.05) {
        battery.complain("capacity",
                         "is 0% with " + whole(*now) + " Wh left; using energy_now or charge_now");
        capacity.reset();
    }
    if (now && capacity && std::abs(*now / full * 100 - *capacity) > 10) {
        battery.complain("capacity",
                         "differs from energy_now or charge_now by more than 10 points; using capacity");
        now.reset();
    }
    if (!now && capacity) now = full * *capacity / 100;
    if (now) reading.percentage = capacity.value_or(*now / full * 100);
}

void readLevel(DeviceAttributes& battery, BatteryReading& reading)
{
    const auto capacity = readCapacity(battery);
    if (reading.energyFull) {
        reconcile(battery, reading, capacity);
    } else {
        reading.percentage = capacity;
    }
    if (reading.percentage) return;
    if (reading.status == SupplyStatus::full || battery.text("capacity_level") == "Full") {
        reading.percentage = 100;
    }
}

/// The magnitude with the sign that the status calls for; else the driver's own.
double withSign(double value, SupplyStatus status)
{
    if (status == SupplyStatus::charging) return std::abs(value);
    if (status == SupplyStatus::discharging) return -std::abs(value);
    return value;
}

/// Power at the terminals and rate of the energy, in W. `from` ends the names: "now" or "avg".
struct Flow {
    std::optional<double> power, rate;
};

Flow readFlow(DeviceAttributes& battery, const Family& family, const Voltages& voltages,
              const std::string& from)
{
    if (const auto power = number(battery, "power_" + from)) {
        const double watts = *power * (family.isCharge ? micro : family.unit);
        return {.power = watts, .rate = watts};
    }
    const auto current = number(battery, "current_" + from);
    if (!current) return {};
    const double amperes = *current * (family.isCharge ? family.unit : micro);
    const auto volts = voltages.now();
    const auto power = volts ? std::optional(amperes * *volts) : std::nullopt;
    if (!family.isCharge && power) return {.power = power, .rate = power};
    return {.power = power, .rate = amperes * voltages.nominal().value_or(threeCells)};
}

void readPower(DeviceAttributes& battery, const Family& family, const Voltages& voltages,
               BatteryReading& reading)
{
    Flow flow = readFlow(battery, family, voltages, "now");
    if (!flow.rate) flow = readFlow(battery, family, voltages, "avg");
    if (!flow.rate) return;
    if (std::abs(*flow.rate) >= maximumPower || std::abs(flow.power.value_or(0)) >= maximumPower) {
        return battery.complain("power_now or current_now",
                                "gives " + whole(*flow.rate) +
                                    " W, more than any laptop takes; leaving it out");
    }
    const bool isNoise = std::abs(flow.power.value_or(*flow.rate)) < noise;
    const auto settled = [&](double watts) { return isNoise ? 0 : withSign(watts, reading.status); };
    reading.rate = settled(*flow.rate);
    if (flow.power || isNoise) reading.power = settled(flow.power.value_or(0));
}

std::optional<std::chrono::seconds> readSeconds(DeviceAttributes& battery, const std::string& name)
{
    constexpr std::int64_t unknown = 65535; // a gauge's 16 bits, all set
    constexpr std::int64_t threeDays = std::chrono::seconds(std::chrono::days(3)).count();
    for (const auto* from : {"_now", "_avg"}) {
        const auto seconds = battery.integer(name + from);
        if (seconds && *seconds > 0 && *seconds <= threeDays && *seconds != unknown) {
            return std::chrono::seconds(*seconds);
        }
    }
    return std::nullopt;
}

std::optional<double> readTemperature(DeviceAttributes& battery)
{
    const auto tenths = number(battery, "temp");
    if (!tenths || *tenths == 0) return std::nullopt;
    if (*tenths >= -400 && *tenths <= 1200) return *tenths / 10;
    battery.complain("temp", "is " + whole(*tenths / 10) + " degrees, which no battery has; leaving it out");
    return std::nullopt;
}

/// Maker or model; some firmware writes blanks, or what is no text.
std::optional<std::string> readName(DeviceAttributes& battery, const char* attribute)
{
    const auto name = trimmed(printable(cleanUtf8(battery.fixedText(attribute).value_or(""))));
    return name.empty() ? std::nullopt : std::optional(std::string(utf8Prefix(name, maximumName)));
}

std::optional<double> healthOf(const Family& family)
{
    if (!family.full || !family.design) return std::nullopt;
    const double percent = *family.full / *family.design * 100;
    return percent >= 1 && percent <= 150 ? std::optional(std::min(percent, 100.0)) : std::nullopt;
}

std::optional<double> times(std::optional<double> content, double factor)
{
    return content ? std::optional(*content * factor) : std::nullopt;
}

std::optional<int> percentOf(const SysfsText& read)
{
    const auto value = parseInteger(read.text);
    return value && *value >= 0 && *value <= 100 ? std::optional(static_cast<int>(*value)) : std::nullopt;
}

/// The first of `names` that is there, and what it holds.
void readThreshold(DeviceAttributes& battery, std::initializer_list<const char*> names, std::string& file,
                   std::optional<int>& percent)
{
    for (const auto* name : names) {
        const auto read = battery.read(name);
        if (read.isAbsent()) continue;
        file = name;
        percent = percentOf(read);
        return;
    }
}

/// The word of `charge_types` in brackets; empty where none is.
std::string chosenOf(const std::string& types)
{
    const auto begin = types.find('[');
    const auto end = types.find(']', begin);
    return begin == types.npos || end == types.npos ? "" : types.substr(begin + 1, end - begin - 1);
}

bool isOffered(const std::string& types, const std::string& word)
{
    const auto blanked = ' ' + types + ' ';
    return chosenOf(types) == word || blanked.find(' ' + word + ' ') != std::string::npos;
}

/// "Long_Life" is a limit that the firmware holds, and "Standard" is none, as are others. A driver that shows
/// no choice at all has one that nobody knows.
std::optional<FixedLimiter> longLife(const DeviceAttributes& battery, const std::string& types)
{
    const std::string on = "Long_Life";
    const std::string off = "Standard";
    if (!isOffered(types, on) || !isOffered(types, off)) return std::nullopt;
    FixedLimiter limiter{.file = battery.path(chargeTypes), .on = on, .off = off};
    const auto chosen = chosenOf(types);
    if (!chosen.empty()) limiter.isOn = chosen == on;
    if (!chosen.empty() && chosen != on) limiter.off = chosen;
    return limiter;
}

} // namespace

ChargeAttributes readChargeAttributes(DeviceAttributes& battery)
{
    ChargeAttributes charge;
    // The second names are those of thinkpad_acpi before Linux 5.9.
    readThreshold(battery, {"charge_control_end_threshold", "charge_stop_threshold"}, charge.endFile,
                  charge.end);
    const auto types = trimmed(battery.read(chargeTypes).text);
    if (charge.endFile.empty()) {
        charge.fixed = longLife(battery, types);
        return charge;
    }
    readThreshold(battery, {"charge_control_start_threshold", "charge_start_threshold"}, charge.startFile,
                  charge.start);
    charge.isObeyed = types.find("Custom") == std::string::npos || chosenOf(types) == "Custom";
    return charge;
}

BatteryReading readBattery(DeviceAttributes& battery)
{
    BatteryReading reading;
    const Family family = chooseFamily(battery);
    const Voltages voltages{battery};
    const double wattHours = family.isCharge ? voltages.nominal().value_or(threeCells) : 1.0;
    reading.status = readStatus(battery);
    reading.energyNow = times(family.now, wattHours);
    reading.energyFull = times(family.full ? family.full : family.design, wattHours);
    reading.energyFullDesign = times(family.design, wattHours);
    reading.health = healthOf(family);
    readLevel(battery, reading);
    readPower(battery, family, voltages, reading);

    if (const auto cycles = battery.integer("cycle_count"); cycles && *cycles > 0 && *cycles < 100'000) {
        reading.cycleCount = cycles;
    }
    reading.voltage = voltages.terminals;
    reading.temperature = readTemperature(battery);
    reading.manufacturer = readName(battery, "manufacturer");
    reading.model = readName(battery, "model_name");
    reading.charge = readChargeAttributes(battery);
    // Where energy and rate are known the driver's own times are not needed.
    if (reading.energyNow && reading.energyFull && reading.rate.value_or(0) != 0) return reading;
    reading.timeToFull = readSeconds(battery, "time_to_full");
    reading.timeToEmpty = readSeconds(battery, "time_to_empty");
    return reading;
}

} // namespace velmora
