// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "Narrator.h"

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace velmora {

namespace {

constexpr int step = 5; // percent between two lines of one charge

std::string percent(int value)
{
    return std::to_string(value) + " %";
}

/// What flows, behind a comma; nothing where it is next to nothing.
std::string watts(double value)
{
    const auto whole = std::lround(std::abs(value));
    return whole > 0 ? ", " + std::to_string(whole) + " W" : "";
}

/// Why a plugged-in battery rests.
std::string resting(const LaptopLook::Battery& battery, bool wasCharging)
{
    if (battery.percent >= battery.thresholds.end) {
        return (wasCharging ? "stopped at the limit: " : "held at the limit: ") + percent(battery.percent);
    }
    // Below its start it only waits for its turn, which is another battery's.
    const bool waitsForStart = battery.percent >= battery.thresholds.start && battery.thresholds.start > 0;
    return "not charging at " + percent(battery.percent) +
           (waitsForStart ? ": it begins below " + percent(battery.thresholds.start) : "");
}

/// What was written, made fit for one line.
std::string quoted(std::string text)
{
    while (text.ends_with('\n')) text.pop_back();
    if (text.size() > 40) text = text.substr(0, 40) + "…";
    for (char& letter : text) {
        if (static_cast<unsigned char>(letter) < ' ') letter = '?';
    }
    return "\"" + text + "\"";
}

std::string sentence(const LaptopLook& look, const LaptopLook::Battery& battery, const std::string& before)
{
    const auto flow = percent(battery.percent) + watts(battery.watts);
    if (battery.status == "Charging") return "charging at " + flow;
    if (battery.status == "Discharging") {
        return (look.isPlugged ? "the charger is too weak, draining at " : "on battery at ") + flow;
    }
    if (battery.status == "Full") return "full";
    if (look.isPlugged) return resting(battery, before == "Charging");
    return battery.percent == 0 ? "empty: a real laptop would be off now" : "rests at " + flow;
}

} // namespace

std::vector<std::string> Narrator::tell(const LaptopLook& look,
                                        const std::vector<SimulatedLaptop::Write>& writes)
{
    hasSeveral_ = look.batteries.size() > 1;
    for (const auto& write : writes) tellWrite(write);
    tellPlug(look);
    for (const auto& battery : look.batteries) tellBattery(look, battery, told_[battery.name]);
    isFirst_ = false;
    return std::exchange(lines_, {});
}

void Narrator::tellWrite(const SimulatedLaptop::Write& write)
{
    const auto* const name = write.isSwitch                      ? "the laptop's own limit"
                             : write.threshold == Threshold::end ? "the limit"
                                                                 : "the start level";
    const auto what = name + (hasSeveral_ ? " of " + write.battery : "");
    const auto asked = quoted(write.asked);
    if (write.error) {
        lines_.push_back("refused: " + what + " cannot be " + asked + " (" + std::strerror(write.error) +
                         ")");
    } else if (write.isSwitch) {
        lines_.push_back("the system switched " + what +
                         (write.found < 100 ? " on: it holds " + percent(write.found) : " off"));
    } else if (std::atoi(write.asked.c_str()) != write.found) {
        lines_.push_back("the system set " + what + " to " + asked + ", the laptop made it " +
                         percent(write.found));
    } else {
        lines_.push_back("the system set " + what + " to " + percent(write.found));
    }
}

void Narrator::tellPlug(const LaptopLook& look)
{
    if (isFirst_ && look.batteries.empty()) lines_.push_back("no battery: always on mains");
    if (isFirst_ && !look.batteries.empty()) lines_.push_back(look.isPlugged ? "plugged in" : "on battery");
    if (!isFirst_ && look.isPlugged != wasPlugged_) {
        lines_.push_back(look.isPlugged ? "the charger was plugged in" : "the charger was unplugged");
    }
    wasPlugged_ = look.isPlugged;
}

void Narrator::tellBattery(const LaptopLook& look, const LaptopLook::Battery& battery, Told& told)
{
    if (!isFirst_ && battery.cycles > told.cycles)
        lines_.push_back(nameOf(battery.name) + "cycle " + std::to_string(battery.cycles) + " is completed");
    told.cycles = battery.cycles;
    const bool hasMoved = std::abs(battery.percent - told.percent) >= step;
    if (battery.status == told.status && !hasMoved) return;
    lines_.push_back(nameOf(battery.name) + sentence(look, battery, told.status));
    told = {battery.status, battery.percent, battery.cycles};
}

std::string Narrator::nameOf(const std::string& battery) const
{
    return hasSeveral_ ? battery + " " : "";
}

} // namespace velmora
