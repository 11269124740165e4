// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/ChargeActuator.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace velmora {

namespace {

constexpr auto chargeTypes = "charge_types";
constexpr auto customType = "Custom";

/// The first of `names` that is there; empty if none is.
std::filesystem::path firstOf(const std::filesystem::path& folder, std::initializer_list<const char*> names)
{
    for (const auto* name : names) {
        std::error_code ignored;
        if (std::filesystem::exists(folder / name, ignored)) return folder / name;
    }
    return {};
}

std::string sentence(const std::string& battery, const Thresholds& thresholds)
{
    std::string text = battery + ": charging stops at " + std::to_string(thresholds.end) + " %";
    if (thresholds.start) text += " and starts below " + std::to_string(*thresholds.start) + " %";
    return text;
}

} // namespace

Thresholds BatteryCharger::fitted(Thresholds wanted) const
{
    if (control == ChargeControl::endThreshold) wanted.start.reset();
    return family->fitted(wanted);
}

bool BatteryCharger::holds(const Thresholds& wanted) const
{
    if (control == ChargeControl::none) return true;
    const Thresholds aim = fitted(wanted);
    if (!isObeyed && aim.end < 100) return false;
    return inForce == aim || (settled && inForce && settled->written == aim && settled->shown == *inForce);
}

ChargeActuator::ChargeActuator(Sysfs sysfs, Log& log, std::chrono::milliseconds settle)
    : sysfs_(std::move(sysfs)), supplies_(sysfs_, log), complaints_(log, "ChargeActuator"), settle_(settle)
{
}

std::optional<int> ChargeActuator::percentAt(const std::filesystem::path& file) const
{
    if (file.empty()) return std::nullopt;
    const auto value = parseInteger(sysfs_.read(file.lexically_relative(sysfs_.root())).text);
    return value && *value >= 0 && *value <= 100 ? std::optional(static_cast<int>(*value)) : std::nullopt;
}

std::vector<ChargeActuator::Files> ChargeActuator::files()
{
    std::vector<Files> result;
    for (const auto& folder : supplies_.internalBatteryFolders()) {
        // The second names are those of thinkpad_acpi before Linux 5.9.
        result.push_back({folder,
                          firstOf(folder, {"charge_control_start_threshold", "charge_start_threshold"}),
                          firstOf(folder, {"charge_control_end_threshold", "charge_stop_threshold"})});
    }
    return result;
}

/// The driver made the files: as long as they are there it need not be searched for again at each look.
const DriverFamily& ChargeActuator::familyOf(const Files& files)
{
    const std::string name = files.folder.filename();
    if (files.end.empty()) families_.erase(name);
    if (const auto known = families_.find(name); known != families_.end()) return *known->second;
    const auto& family = driverFamily(sysfs_.root(), name);
    if (!files.end.empty()) families_.emplace(name, &family);
    return family;
}

std::vector<BatteryCharger> ChargeActuator::inspect()
{
    std::vector<BatteryCharger> result;
    for (const auto& one : files()) result.push_back(inspect(one));
    return result;
}

BatteryCharger ChargeActuator::inspect(const Files& files)
{
    BatteryCharger charger;
    charger.name = files.folder.filename();
    charger.family = &familyOf(files);
    if (files.end.empty()) return charger;
    charger.control = files.start.empty() ? ChargeControl::endThreshold : ChargeControl::thresholds;
    charger.isObeyed = obeysThresholds(files);
    const auto start = percentAt(files.start);
    const auto end = percentAt(files.end);
    // A start that cannot be read is taken for 0, so that a wanted one differs from it and is written.
    if (end)
        charger.inForce =
            Thresholds{files.start.empty() ? std::nullopt : std::optional(start.value_or(0)), *end};
    if (const auto found = settled_.find(charger.name); found != settled_.end())
        charger.settled = found->second;
    return charger;
}

ChargeActuator::Outcome ChargeActuator::apply(const Thresholds& wanted, bool afresh)
{
    if (afresh) settled_.clear();
    Outcome outcome;
    for (const auto& one : files()) apply(one, wanted, outcome);
    return outcome;
}

void ChargeActuator::apply(const Files& files, const Thresholds& wanted, Outcome& outcome)
{
    const BatteryCharger before = inspect(files);
    if (before.holds(wanted)) {
        outcome.chargers.push_back(before);
        return;
    }
    const Thresholds aim = before.fitted(wanted);
    if (!before.isObeyed && aim.end < 100) write(files.folder / chargeTypes, customType);
    const bool written = writePair(files, before.inForce, aim);
    const Thresholds shown = written ? readBack(files, aim) : aim;
    const std::string unlike = "unlike " + before.name;
    if (written && shown == aim) {
        settled_.erase(before.name);
        complaints_.settle(unlike);
    } else if (written) {
        settled_.insert_or_assign(before.name, BatteryCharger::Settled{aim, shown});
        complaints_.raise(unlike, "The charger made something else of what was written. Wanted: " +
                                      sentence(before.name, aim) +
                                      ". It shows: " + sentence(before.name, shown) + ".");
    }
    outcome.chargers.push_back(inspect(files));
    const auto& after = outcome.chargers.back();
    if (after.inForce && (after.inForce != before.inForce || after.isObeyed != before.isObeyed)) {
        outcome.changes.push_back(sentence(after.name, *after.inForce) + ".");
    }
}

bool ChargeActuator::writePair(const Files& files, const std::optional<Thresholds>& from,
                               const Thresholds& to)
{
    const DriverFamily& family = familyOf(files);
    const bool startChanges = to.start && !files.start.empty() && (!from || to.start != from->start);
    const bool writesStart = startChanges && !family.startFollows;
    const bool writesEnd = !from || to.end != from->end || (startChanges && !writesStart);
    if (!writesStart) return !writesEnd || write(files.end, to.end);
    if (!writesEnd) return write(files.start, *to.start);
    // Drivers compare with the partner that they hold, which nobody knows here: one of the two orders passes.
    if (!from) {
        return (write(files.end, to.end) && write(files.start, *to.start)) ||
               (write(files.start, *to.start) && write(files.end, to.end));
    }

    // A start too near to the old end, or above it, has to wait for the new end.
    const bool endFirst = *to.start > from->end - family.gap;
    const auto& first = endFirst ? files.end : files.start;
    const auto& second = endFirst ? files.start : files.end;
    if (!write(first, endFirst ? to.end : *to.start)) return false;
    if (write(second, endFirst ? *to.start : to.end)) return true;
    write(first, endFirst ? from->end : from->start.value_or(0));
    return false;
}

bool ChargeActuator::write(const std::filesystem::path& file, const std::string& text)
{
    int error = 0;
    const int fd = open(file.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (fd < 0) {
        error = errno;
    } else {
        if (::write(fd, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            error = errno ? errno : EIO;
        close(fd);
    }
    if (error == 0) {
        complaints_.settle(file);
        return true;
    }
    complaints_.raise(file, "Cannot write " + text + " to " + file.string() + ": " +
                                std::generic_category().message(error) + ".");
    return false;
}

Thresholds ChargeActuator::readBack(const Files& files, const Thresholds& written)
{
    const auto shown = [&] {
        return Thresholds{files.start.empty() ? std::nullopt : percentAt(files.start),
                          percentAt(files.end).value_or(100)};
    };
    const Thresholds first = shown();
    if (first == written || settle_.count() == 0) return first;
    std::this_thread::sleep_for(settle_);
    return shown();
}

/// dell-laptop and its like list their charge types and obey thresholds in "Custom" alone.
bool ChargeActuator::obeysThresholds(const Files& files) const
{
    const auto file = files.folder / chargeTypes;
    const std::string types = sysfs_.read(file.lexically_relative(sysfs_.root())).text;
    return types.find(customType) == std::string::npos || types.find("[Custom]") != std::string::npos;
}

} // namespace velmora
