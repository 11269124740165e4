// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "LaptopOptions.h"

#include "LaptopKinds.h"
#include "LaptopShow.h"

#include <cmath>
#include <getopt.h>
#include <iterator>
#include <stdexcept>

namespace velmora {

namespace {

constexpr option known[] = {
    {"into", required_argument, nullptr, 'i'},
    {"laptop", required_argument, nullptr, 'l'},
    {"driver", required_argument, nullptr, 'd'},
    {"speed", required_argument, nullptr, 's'},
    {"health", required_argument, nullptr, 'a'},
    {"level", required_argument, nullptr, 'p'},
    {"unplugged", no_argument, nullptr, 'u'},
    {"load", required_argument, nullptr, 'w'},
    {"heat", required_argument, nullptr, 't'},
    {"plain", no_argument, nullptr, 'f'},
    {"quiet", no_argument, nullptr, 'q'},
    {"hold-writes", required_argument, nullptr, 'h'},
    {nullptr, 0, nullptr, 0},
};

double number(const char* option, double lowest, double highest)
{
    double value = 0;
    if (parseNumber(optarg, lowest, highest, value)) return value;
    throw std::runtime_error("--" + std::string(option) + " takes a number from " +
                             std::to_string(static_cast<int>(lowest)) + " to " +
                             std::to_string(static_cast<int>(highest)) + ", not " + optarg);
}

void take(LaptopOptions& options, int letter)
{
    switch (letter) {
    case 'i':
        options.tree.folder = optarg;
        break;
    case 'l':
        options.laptop = optarg;
        break;
    case 'd':
        options.driver = optarg;
        break;
    case 's':
        options.speed = number("speed", 1, 3600);
        break;
    case 'a':
        options.health = number("health", 1, 150);
        break;
    case 'p':
        options.level = number("level", 0, 100);
        break;
    case 'w':
        options.load = number("load", 0, 150);
        break;
    case 't':
        options.heat = number("heat", -20, 80);
        break;
    case 'h':
        options.tree.heldWrite =
            std::chrono::milliseconds(static_cast<int>(1000 * number("hold-writes", 0, 60)));
        break;
    case 'u':
        options.isUnplugged = true;
        break;
    case 'f':
        options.tree.isPlain = true;
        break;
    case 'q':
        options.isQuiet = true;
        break;
    default:
        throw std::runtime_error(LaptopOptions::usage());
    }
}

/// A capture does not name its driver: one with an end alone is taken as the commonest of those, as is one
/// with a limit of its firmware's own.
std::optional<LaptopMake> captured(const std::string& file)
{
    LaptopMake make{.machine = CapturedMachine::load(file)};
    bool hasStart = false;
    bool hasOwnLimit = false;
    for (const auto& [path, value] : make.machine.values) {
        hasStart = hasStart || path.ends_with("_start_threshold");
        hasOwnLimit = hasOwnLimit || path.ends_with("/conservation_mode") ||
                      (path.ends_with("/charge_types") && value.find("Long_Life") != value.npos);
    }
    if (!hasStart) make.driver = ThresholdDriver::named(hasOwnLimit ? "ideapad" : "asus");
    return make;
}

/// dell-laptop's batteries list their charge types; as they leave the factory they obey no threshold.
void addChargeTypes(CapturedMachine& machine)
{
    constexpr std::string_view control = "/charge_control_end_threshold";
    for (const auto& supply : supplyNames(machine)) {
        if (machine.values.contains(supplyPath(supply) + std::string(control)))
            machine.values.try_emplace(supplyPath(supply) + "/charge_types",
                                       "Trickle Fast [Standard] Adaptive Custom");
    }
}

/// A battery that does not tell what it was made for stays as it is.
void wear(CapturedMachine& machine, double health)
{
    for (const auto& supply : supplyNames(machine)) {
        for (const std::string family : {"energy", "charge"}) {
            const Folder folder(machine, supplyPath(supply));
            const double design = folder.number(family + "_full_design", 0);
            const double full = folder.number(family + "_full", 0);
            if (design <= 0 || full <= 0) continue;
            const double worn = design * health / 100;
            const double now = folder.number(family + "_now", 0) / full * worn;
            machine.values[folder.pathOf(family + "_full")] = std::to_string(std::llround(worn));
            machine.values[folder.pathOf(family + "_now")] = std::to_string(std::llround(now));
        }
    }
}

template <typename Names>
std::string listed(const Names& names)
{
    std::string list;
    for (const auto& name : names) list += (list.empty() ? "" : ", ") + std::string(name);
    return list;
}

} // namespace

std::string LaptopOptions::usage()
{
    std::vector<std::string_view> drivers;
    for (const auto& driver : ThresholdDriver::all()) drivers.push_back(driver.name);
    return "velmora-laptop --into DIR [options]\n"
           "  --laptop KIND|FILE   " +
           listed(laptopKinds()) +
           ", or a captured FILE.sysfs\n"
           "  --driver NAME        whose rules the thresholds follow: " +
           listed(drivers) +
           "\n"
           "  --speed N            N seconds pass in one, 1 to 3600 (160)\n"
           "  --health PERCENT     what its batteries hold of what they were made for\n"
           "  --level PERCENT      charge at the beginning\n"
           "  --unplugged          begin on battery\n"
           "  --load WATTS         what the machine draws\n"
           "  --heat DEGREES       at which its batteries are kept, in °C\n"
           "  --hold-writes SECONDS  slow firmware\n"
           "  --plain              plain files rather than a mounted file system\n"
           "  --quiet              say no more than \"ready\"";
}

LaptopOptions LaptopOptions::parse(int argc, char** argv)
{
    LaptopOptions options;
    opterr = 0;
    optind = 1;
    for (int letter = 0; (letter = ::getopt_long(argc, argv, "", known, nullptr)) != -1;)
        take(options, letter);
    if (optind < argc || options.tree.folder.empty()) throw std::runtime_error(usage());
    return options;
}

LaptopMake LaptopOptions::make() const
{
    auto make = laptop.ends_with(".sysfs") ? captured(laptop) : laptopOfKind(laptop);
    if (!make)
        throw std::runtime_error("no laptop of kind " + laptop + "; there are " + listed(laptopKinds()));
    if (!driver.empty()) make->driver = ThresholdDriver::named(driver);
    if (!make->driver) throw std::runtime_error("no driver called " + driver);
    if (driver == "dell") addChargeTypes(make->machine);
    if (health) wear(make->machine, *health);
    return *make;
}

} // namespace velmora
