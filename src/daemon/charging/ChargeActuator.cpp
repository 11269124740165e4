// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "charging/ChargeActuator.h"

#include "base/FileDescriptor.h"
#include "power/BatteryAttributes.h"
#include "power/PlatformLimiters.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace velmora {

namespace {

constexpr auto chargeTypes = "charge_types";
constexpr auto customType = "Custom";

std::string sentence(const std::string& battery, const DriverFamily& family, const Thresholds& thresholds)
{
    if (family.fixed)
        return battery + ": the firmware's own limit is " + (thresholds.end < 100 ? "on" : "off");
    std::string text = battery + ": charging stops at " + std::to_string(thresholds.end) + "%";
    if (thresholds.start.value_or(0) > 0)
        text += " and starts below " + std::to_string(*thresholds.start) + "%";
    return text;
}

std::string brief(const DriverFamily& family, const Thresholds& thresholds)
{
    if (family.fixed) return thresholds.end < 100 ? "\"on\"" : "\"off\"";
    const std::string end = std::to_string(thresholds.end) + "%";
    return thresholds.start ? std::to_string(*thresholds.start) + " to " + end : end;
}

ChargeControl controlOf(const ChargeAttributes& attributes)
{
    if (attributes.fixed) return ChargeControl::fixedLimit;
    if (attributes.endFile.empty()) return ChargeControl::none;
    return attributes.startFile.empty() ? ChargeControl::endThreshold : ChargeControl::thresholds;
}

/// A start that cannot be read is taken for 0, so that a wanted one differs from it and is written.
std::optional<Thresholds> thresholdsOf(const ChargeAttributes& attributes, const DriverFamily& family)
{
    if (const auto& fixed = attributes.fixed)
        return fixed->isOn ? std::optional(heldBy(*family.fixed, *fixed->isOn)) : std::nullopt;
    if (!attributes.end) return std::nullopt;
    if (attributes.startFile.empty()) return Thresholds{std::nullopt, *attributes.end};
    return Thresholds{attributes.start.value_or(0), *attributes.end};
}

bool changed(const BatteryCharger& before, const BatteryCharger& after)
{
    return after.inForce && (after.inForce != before.inForce || after.isObeyed != before.isObeyed);
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
    return inForce == aim || deviates(wanted);
}

bool BatteryCharger::deviates(const Thresholds& wanted) const
{
    return deviation && control != ChargeControl::none && inForce == deviation->shown &&
           deviation->written == fitted(wanted);
}

/// The driver made the files: as long as they are there it need not be searched for again at each look.
const DriverFamily& ChargeActuator::familyOf(const std::string& name, const ChargeAttributes& attributes)
{
    const auto control = controlOf(attributes);
    auto& known = families_[name];
    const bool isKnown = known.family && known.control == control && control != ChargeControl::none;
    if (isKnown) return *known.family;
    const auto& family =
        driverFamily(sysfs_.root(), name, control, attributes.fixed ? attributes.fixed->module : "");
    known = {control, &family};
    return family;
}

std::vector<BatteryCharger> ChargeActuator::inspect(const std::vector<BatteryReading>& batteries)
{
    std::vector<BatteryCharger> result;
    result.reserve(batteries.size());
    for (const auto& battery : batteries) result.push_back(inspect(battery.name, battery.charge));
    return result;
}

BatteryCharger ChargeActuator::inspect(const std::string& name, const ChargeAttributes& attributes)
{
    BatteryCharger charger;
    charger.name = name;
    charger.control = controlOf(attributes);
    charger.family = &familyOf(name, attributes);
    if (charger.control == ChargeControl::none) return charger;
    if (attributes.fixed && attributes.fixed->isOn == false) offWords_[name] = attributes.fixed->off;
    charger.isObeyed = attributes.isObeyed;
    charger.inForce = thresholdsOf(attributes, *charger.family);
    if (const auto found = deviations_.find(name); found != deviations_.end())
        charger.deviation = found->second;
    return charger;
}

ChargeActuator::Files ChargeActuator::read(const std::string& name)
{
    const auto folder = std::filesystem::path("class/power_supply") / name;
    DeviceAttributes battery(sysfs_.root(), folder, complaints_);
    auto attributes = readChargeAttributes(battery);
    PlatformLimiters(sysfs_, complaints_).complete(attributes, true);
    return {sysfs_.root() / folder, std::move(attributes)};
}

ChargeActuator::Outcome ChargeActuator::apply(const std::vector<std::string>& batteries,
                                              const Thresholds& wanted, bool afresh)
{
    if (afresh) deviations_.clear();
    pending_.clear();
    batteries_ = batteries;
    Outcome outcome;
    for (const auto& name : batteries) apply(name, wanted, afresh, outcome);
    outcome.isSettling = !pending_.empty();
    return outcome;
}

void ChargeActuator::apply(const std::string& name, const Thresholds& wanted, bool afresh, Outcome& outcome)
{
    const Files files = read(name);
    const BatteryCharger before = inspect(name, files.attributes);
    const bool isTrusted = !afresh || !before.family->echoes || before.control == ChargeControl::none;
    if (before.holds(wanted) && isTrusted) {
        outcome.chargers.push_back(before);
        return;
    }
    const Thresholds aim = before.fitted(wanted);
    const auto from = isTrusted ? before.inForce : std::nullopt;
    const bool isWritten = write(files, before, from, aim);
    outcome.isRefused |= !isWritten;
    const BatteryCharger after = inspect(name, read(name).attributes);
    if (isWritten && after.inForce != aim) {
        pending_.insert_or_assign(name, Pending{aim, before});
        outcome.chargers.push_back(after);
    } else {
        if (isWritten) deviations_.erase(name);
        conclude({aim, before}, outcome);
    }
}

ChargeActuator::Outcome ChargeActuator::settle()
{
    Outcome outcome;
    for (const auto& name : batteries_) {
        const auto found = pending_.find(name);
        if (found == pending_.end()) {
            outcome.chargers.push_back(inspect(name, read(name).attributes));
            continue;
        }
        const auto shown = inspect(name, read(name).attributes).inForce;
        if (shown && *shown != found->second.aim) {
            deviations_.insert_or_assign(name, BatteryCharger::Deviation{found->second.aim, *shown});
        }
        conclude(found->second, outcome);
    }
    pending_.clear();
    return outcome;
}

/// The chargers as they are now, and what that changed.
void ChargeActuator::conclude(const Pending& write, Outcome& outcome)
{
    const auto& name = write.before.name;
    const auto after = inspect(name, read(name).attributes);
    const DriverFamily& family = *after.family;
    const std::string deviates = name + " deviates";
    if (after.deviation) {
        complaints_.raise(deviates, name + ": wrote " + brief(family, write.aim) + ", the driver reports " +
                                        brief(family, after.deviation->shown) +
                                        "; leaving it at that and trying again later.");
    } else if (after.inForce == write.aim) {
        complaints_.settle(deviates);
    }
    if (changed(write.before, after)) outcome.changes.push_back(sentence(name, family, *after.inForce) + ".");
    outcome.chargers.push_back(after);
}

bool ChargeActuator::write(const Files& files, const BatteryCharger& before,
                           const std::optional<Thresholds>& from, const Thresholds& to)
{
    const auto& fixed = files.attributes.fixed;
    if (fixed) {
        const auto known = offWords_.find(before.name);
        const auto& off = known == offWords_.end() ? fixed->off : known->second;
        return write(sysfs_.root() / fixed->file, to.end < 100 ? fixed->on : off);
    }
    if (!before.isObeyed && to.end < 100) write(files.folder / chargeTypes, customType);
    return writePair(files, *before.family, from, to);
}

bool ChargeActuator::writePair(const Files& files, const DriverFamily& family,
                               const std::optional<Thresholds>& from, const Thresholds& to)
{
    const bool hasStart = !files.attributes.startFile.empty();
    const bool startChanges = to.start && hasStart && (!from || to.start != from->start);
    const bool writesStart = startChanges && !family.startFollows;
    const bool writesEnd = !from || to.end != from->end || (startChanges && !writesStart);
    if (!writesStart) return !writesEnd || write(files.end(), to.end);
    if (!writesEnd) return write(files.start(), *to.start);
    // Drivers compare with the partner that they hold, which nobody knows here: one of the two orders passes.
    if (!from) {
        return (write(files.end(), to.end) && write(files.start(), *to.start)) ||
               (write(files.start(), *to.start) && write(files.end(), to.end));
    }

    // A start too near to the old end, or above it, has to wait for the new end.
    const bool endFirst = *to.start > from->end - family.gap;
    const auto first = endFirst ? files.end() : files.start();
    const auto second = endFirst ? files.start() : files.end();
    if (!write(first, endFirst ? to.end : *to.start)) return false;
    if (write(second, endFirst ? *to.start : to.end)) return true;
    write(first, endFirst ? from->end : from->start.value_or(0));
    return false;
}

bool ChargeActuator::write(const std::filesystem::path& file, const std::string& text)
{
    int error = 0;
    const FileDescriptor opened(open(file.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!opened) {
        error = errno;
    } else if (::write(opened.get(), text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        error = errno ? errno : EIO;
    }
    if (error == 0) {
        complaints_.settle(file);
        return true;
    }
    complaints_.raise(file, "Cannot write " + text + " to " + file.string() + ": " +
                                std::generic_category().message(error) + ".");
    return false;
}

} // namespace velmora
