// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "SimulatedLaptop.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <utility>

namespace velmora {

namespace {

struct ThresholdFile {
    std::string_view name;
    Threshold threshold;
};

/// With the older spelling that thinkpad_acpi still serves.
constexpr std::array thresholdFiles{
    ThresholdFile{"charge_control_start_threshold", Threshold::start},
    ThresholdFile{"charge_control_end_threshold", Threshold::end},
    ThresholdFile{"charge_start_threshold", Threshold::start},
    ThresholdFile{"charge_stop_threshold", Threshold::end},
};

constexpr std::string_view typesFile = "charge_types";

/// The switch of ideapad_laptop, which lies with its own device.
bool isConservationMode(std::string_view path)
{
    return path.starts_with("bus/platform/") && path.ends_with("/conservation_mode");
}

std::optional<Threshold> thresholdOf(std::string_view name)
{
    const auto found = std::ranges::find(thresholdFiles, name, &ThresholdFile::name);
    return found == thresholdFiles.end() ? std::nullopt : std::optional(found->threshold);
}

int valueOf(const ChargeThresholds& thresholds, Threshold which)
{
    return which == Threshold::start ? thresholds.start : thresholds.end;
}

/// The words that may be written to a uevent file.
bool isAction(std::string_view text)
{
    if (text.ends_with('\n')) text.remove_suffix(1);
    constexpr std::string_view actions[] = {"add",    "remove",  "change", "move",
                                            "online", "offline", "bind",   "unbind"};
    return std::ranges::find(actions, text) != std::end(actions);
}

std::vector<SimulatedBattery> packs(const LaptopParts& parts)
{
    std::vector<SimulatedBattery> result;
    for (const auto& battery : parts.batteries) result.emplace_back(battery.captured.make());
    return result;
}

} // namespace

SimulatedLaptop::SimulatedLaptop(const LaptopMake& make)
    : SimulatedLaptop(make, LaptopParts::of(make.machine))
{
}

SimulatedLaptop::SimulatedLaptop(LaptopMake make, const LaptopParts& parts)
    : make_(std::move(make)), chargers_(parts.chargers), physics_(packs(parts), parts.isPlugged, parts.load)
{
    for (const auto& [name, captured] : parts.batteries)
        batteries_.push_back({.name = name, .captured = captured, .announced = {}});
    for (const auto& [path, captured] : make_.machine.values)
        isConserving_ = isConserving_ || (isConservationMode(path) && captured == "1");
    for (std::size_t index = 0; index < batteries_.size(); ++index) bringToLife(index);
    addEventFiles();
    for (const auto& [path, captured] : make_.machine.values) {
        if (auto text = live(path)) told_.emplace(path, std::move(*text));
    }
    for (std::size_t index = 0; index < batteries_.size(); ++index)
        batteries_[index].announced = digest(index);
}

void SimulatedLaptop::bringToLife(std::size_t index)
{
    auto& battery = batteries_[index];
    battery.held = physics_.batteries()[index].thresholds;
    const auto types = make_.machine.values.find(supplyPath(battery.name) + "/" + std::string(typesFile));
    if (types != make_.machine.values.end()) battery.types = ChargeTypes(types->second);
    if (battery.types.offerLongLife()) battery.held = {};
    obey(index);
}

/// Firmware of some makers has the thresholds and does not look at them.
void SimulatedLaptop::obey(std::size_t index)
{
    const auto& battery = batteries_[index];
    auto& obeyed = physics_.batteries()[index].thresholds;
    obeyed = battery.types.obeyThresholds() ? battery.held : ChargeThresholds{};
    if (isConserving_ || battery.types.areLongLife()) obeyed = make_.fixed;
}

void SimulatedLaptop::addEventFiles()
{
    for (const auto& supply : supplyNames(make_.machine)) {
        make_.machine.values.try_emplace(supplyPath(supply) + "/uevent");
    }
}

void SimulatedLaptop::advance(double seconds)
{
    physics_.advance(seconds);
    announceChanges();
}

void SimulatedLaptop::plug(bool isPlugged)
{
    if (physics_.isPlugged() != isPlugged) {
        for (const auto& charger : chargers_) announce(charger);
    }
    physics_.plug(isPlugged);
    announceChanges();
}

void SimulatedLaptop::setLoad(double watts)
{
    physics_.setLoad(watts);
}

void SimulatedLaptop::setLevel(double percent)
{
    if (!std::isfinite(percent)) return;
    for (auto& battery : physics_.batteries()) battery.setLevel(percent);
    physics_.settle();
    announceChanges();
}

void SimulatedLaptop::setHeat(std::optional<double> celsius)
{
    for (auto& battery : physics_.batteries()) battery.setHeat(celsius);
    announceBatteries();
}

void SimulatedLaptop::addCycle()
{
    for (auto& battery : physics_.batteries()) battery.addCycle();
    announceBatteries();
}

LaptopLook SimulatedLaptop::look() const
{
    LaptopLook look{.isPlugged = physics_.isPlugged(), .load = physics_.load(), .batteries = {}};
    for (std::size_t index = 0; index < batteries_.size(); ++index) {
        const auto& battery = physics_.batteries()[index];
        look.batteries.push_back({.name = batteries_[index].name,
                                  .status = CapturedBattery::status(battery),
                                  .percent = static_cast<int>(battery.level()),
                                  .watts = battery.watts(),
                                  .thresholds = battery.thresholds,
                                  .cycles = battery.cycles()});
    }
    return look;
}

std::vector<std::string> SimulatedLaptop::paths() const
{
    std::vector<std::string> paths;
    for (const auto& [path, captured] : make_.machine.values) paths.push_back(path);
    for (const auto& [path, error] : make_.machine.errors) paths.push_back(path);
    return paths;
}

std::vector<std::string> SimulatedLaptop::folders() const
{
    std::vector<std::string> folders{"class/power_supply"};
    const bool hasControl = std::ranges::any_of(make_.machine.values, [](const auto& file) {
        const auto place = placeOf(file.first);
        return isConservationMode(file.first) ||
               (place && (thresholdOf(place->name) || place->name == typesFile));
    });
    if (hasControl && !make_.driver->module.empty())
        folders.push_back("module/" + std::string(make_.driver->module));
    return folders;
}

bool SimulatedLaptop::has(const std::string& path) const
{
    return make_.machine.values.contains(path) || make_.machine.errors.contains(path);
}

bool SimulatedLaptop::isWritable(const std::string& path) const
{
    if (isConservationMode(path)) return has(path);
    const auto place = placeOf(path);
    if (!place || !has(path)) return false;
    const bool isControl = thresholdOf(place->name) || place->name == typesFile;
    return place->name == "uevent" || (isControl && batteryNamed(place->supply));
}

SimulatedLaptop::Loaded SimulatedLaptop::load(const std::string& path) const
{
    if (const auto failed = make_.machine.errors.find(path); failed != make_.machine.errors.end()) {
        return {.bytes = {}, .error = failed->second};
    }
    const auto captured = make_.machine.values.find(path);
    if (captured == make_.machine.values.end()) return {.bytes = {}, .error = ENOENT};
    if (const auto place = placeOf(path); place && place->name == "uevent" && captured->second.empty()) {
        return {.bytes = uevent(place->supply)};
    }
    const auto now = live(path);
    const auto first = told_.find(path);
    return {.bytes = (now && now != first->second ? *now : captured->second) + "\n"};
}

int SimulatedLaptop::store(const std::string& path, std::string_view text)
{
    if (!has(path)) return ENOENT;
    if (!isWritable(path)) return EACCES;
    if (isConservationMode(path)) return conserve(text);
    const auto place = placeOf(path);
    if (place->name == "uevent") return isAction(text) ? 0 : EINVAL;

    const auto battery = *batteryNamed(place->supply);
    const auto which = thresholdOf(place->name);
    const int error = which ? storeInto(battery, *which, text) : batteries_[battery].types.store(text);
    obey(battery);
    if (!which && batteries_[battery].types.offerLongLife()) noteSwitch(battery, text, error);
    return error;
}

int SimulatedLaptop::conserve(std::string_view text)
{
    const auto word = text.ends_with('\n') ? text.substr(0, text.size() - 1) : text;
    const int error = word == "0" || word == "1" ? 0 : EINVAL;
    if (!error) isConserving_ = word == "1";
    for (std::size_t index = 0; index < batteries_.size(); ++index) {
        obey(index);
        noteSwitch(index, text, error);
    }
    return error;
}

void SimulatedLaptop::noteSwitch(std::size_t index, std::string_view text, int error)
{
    const int end = physics_.batteries()[index].thresholds.end;
    writes_.push_back({batteries_[index].name, Threshold::end, std::string(text), error, end, true});
}

int SimulatedLaptop::storeInto(std::size_t index, Threshold which, std::string_view text)
{
    auto& battery = batteries_[index];
    const int error = make_.driver->store(battery.held, which, text);
    writes_.push_back({battery.name, which, std::string(text), error, valueOf(battery.held, which), false});
    return error;
}

std::vector<SimulatedLaptop::Write> SimulatedLaptop::takeWrites()
{
    return std::exchange(writes_, {});
}

std::vector<std::string> SimulatedLaptop::takeAnnouncements()
{
    return std::exchange(announcements_, {});
}

std::optional<SimulatedLaptop::Place> SimulatedLaptop::placeOf(std::string_view path)
{
    const auto root = supplyPath("");
    if (!path.starts_with(root)) return std::nullopt;
    path.remove_prefix(root.size());
    const auto slash = path.find('/');
    if (slash == path.npos) return std::nullopt;
    return Place{std::string(path.substr(0, slash)), std::string(path.substr(slash + 1))};
}

std::optional<std::size_t> SimulatedLaptop::batteryNamed(std::string_view supply) const
{
    const auto found = std::ranges::find(batteries_, supply, &Battery::name);
    if (found == batteries_.end()) return std::nullopt;
    return static_cast<std::size_t>(found - batteries_.begin());
}

/// What a file that moves tells now; nothing for one that stays as captured.
std::optional<std::string> SimulatedLaptop::live(const std::string& path) const
{
    if (!make_.heatedZone.empty() && path == make_.heatedZone + "/temp") {
        return std::to_string(std::llround(physics_.processorCelsius()) * 1000);
    }
    if (isConservationMode(path)) return isConserving_ ? "1" : "0";
    const auto place = placeOf(path);
    if (!place) return std::nullopt;
    if (const auto index = batteryNamed(place->supply)) {
        const auto& battery = physics_.batteries()[*index];
        if (const auto which = thresholdOf(place->name))
            return std::to_string(valueOf(batteries_[*index].held, *which));
        if (place->name == typesFile) return batteries_[*index].types.text();
        return batteries_[*index].captured.text(place->name, battery);
    }
    const bool isCharger = std::ranges::find(chargers_, place->supply) != chargers_.end();
    if (isCharger && place->name == "online") return physics_.isPlugged() ? "1" : "0";
    return std::nullopt;
}

/// What the kernel would say of a supply; empty where one of its files fails in a way that keeps it from
/// speaking.
std::string SimulatedLaptop::uevent(const std::string& supply) const
{
    CapturedMachine now;
    const auto folder = supplyPath(supply) + "/";
    for (const auto& path : paths()) {
        if (!path.starts_with(folder) || path.ends_with("/uevent")) continue;
        auto [bytes, error] = load(path);
        if (error && error != ENODEV && error != ENODATA) return {};
        if (!error) now.values.emplace(path, bytes.substr(0, bytes.size() - 1));
    }
    return now.uevent(supply) + "\n";
}

void SimulatedLaptop::announce(const std::string& supply)
{
    const bool isPending = std::ranges::find(announcements_, supply) != announcements_.end();
    if (!isPending && !load(supplyPath(supply) + "/uevent").bytes.empty()) announcements_.push_back(supply);
}

void SimulatedLaptop::announceBatteries()
{
    for (const auto& battery : batteries_) announce(battery.name);
}

void SimulatedLaptop::announceChanges()
{
    for (std::size_t index = 0; index < batteries_.size(); ++index) {
        auto now = digest(index);
        if (now == batteries_[index].announced) continue;
        batteries_[index].announced = std::move(now);
        announce(batteries_[index].name);
    }
}

/// What is worth an announcement when it changes.
std::string SimulatedLaptop::digest(std::size_t battery) const
{
    const auto& pack = physics_.batteries()[battery];
    return CapturedBattery::status(pack) + " " + std::to_string(static_cast<int>(pack.level()));
}

} // namespace velmora
