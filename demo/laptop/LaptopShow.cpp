// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopShow.h"

#include <charconv>
#include <cmath>

namespace velmora {

LaptopShow::LaptopShow(SharedLaptop& laptop, LaptopTree& tree, double speed, Tell tell)
    : laptop_(laptop), tree_(tree), speed_(speed), tell_(std::move(tell))
{
    follow();
}

void LaptopShow::pass(std::chrono::milliseconds time)
{
    const double seconds = std::chrono::duration<double>(time).count() * speed_;
    laptop_.with([&](SimulatedLaptop& laptop) { laptop.advance(seconds); });
    sinceAnnouncement_ += time;
    follow();
}

bool LaptopShow::command(std::string_view line)
{
    const auto blank = line.find(' ');
    const auto verb = line.substr(0, blank);
    const auto argument = blank == line.npos ? std::string_view() : line.substr(blank + 1);
    if (verb == "quit" && argument.empty()) return false;
    if (!line.empty() && !obey(verb, argument))
        tell_("not understood; say plug, unplug, load WATTS, level PERCENT, heat DEGREES, heat off, cycle or "
              "quit");
    follow();
    return true;
}

/// Whether it was understood.
bool LaptopShow::obey(std::string_view verb, std::string_view argument)
{
    double number = 0;
    const auto order = [this](const auto& act) { laptop_.with(act); };
    if ((verb == "plug" || verb == "unplug") && argument.empty()) {
        order([&](SimulatedLaptop& laptop) { laptop.plug(verb == "plug"); });
    } else if (verb == "load" && parseNumber(argument, 0, 150, number)) {
        order([&](SimulatedLaptop& laptop) { laptop.setLoad(number); });
        tell_("the machine draws " + std::string(argument) + " W");
    } else if (verb == "level" && parseNumber(argument, 0, 100, number)) {
        order([&](SimulatedLaptop& laptop) { laptop.setLevel(number); });
    } else if (verb == "heat" && parseNumber(argument, -20, 80, number)) {
        order([&](SimulatedLaptop& laptop) { laptop.setHeat(number); });
        tell_("the battery is kept at " + std::string(argument) + " °C");
    } else if (verb == "heat" && argument == "off") {
        order([](SimulatedLaptop& laptop) { laptop.setHeat(std::nullopt); });
        tell_("the battery is as warm as its current makes it");
    } else if (verb == "cycle" && argument.empty()) {
        order([](SimulatedLaptop& laptop) { laptop.addCycle(); });
    } else {
        return false;
    }
    return true;
}

void LaptopShow::follow()
{
    const auto [look, writes] =
        laptop_.with([](SimulatedLaptop& laptop) { return std::pair(laptop.look(), laptop.takeWrites()); });
    for (const auto& line : narrator_.tell(look, writes)) tell_(line);
    tree_.refresh();
    announce();
}

/// The first change at once, then what has gathered, at most once in a while.
void LaptopShow::announce()
{
    if (sinceAnnouncement_ < quietTime) return;
    for (const auto& supply :
         laptop_.with([](SimulatedLaptop& laptop) { return laptop.takeAnnouncements(); })) {
        tree_.announce(supply);
        sinceAnnouncement_ = std::chrono::milliseconds{0};
    }
}

bool parseNumber(std::string_view text, double lowest, double highest, double& number)
{
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc{} && end == text.data() + text.size();
    if (!isWhole || !std::isfinite(value) || value < lowest || value > highest) return false;
    number = value;
    return true;
}

} // namespace velmora
