// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/RemoteCommands.h"

#include "base/Moment.h"
#include "base/Text.h"
#include "base/Utf8.h"
#include "fleet/EcosystemSync.h"
#include "model/BatteryModel.h"
#include "platform/Platform.h"

#include <cmath>
#include <string>
#include <utility>

namespace velmora {

namespace {

constexpr auto category = "BatteryModel";

/// The settings that a command may carry.
SettingsMask commandable()
{
    return differing({},
                     {.isAppleRecommendedMode = false, .isStorageModeEnabled = true, .customChargeLimit = 0});
}

bool isLimit(double limit)
{
    return limit >= EcosystemSync::lowestLimit && limit <= EcosystemSync::highestLimit;
}

/// Another machine wrote it, so it may be anything.
std::string originText(const std::optional<std::string>& given)
{
    constexpr std::size_t longest = 120, read = 4 * longest; // bytes
    const auto origin = trimmed(printable(cleanUtf8(given.value_or("").substr(0, read))));
    return origin.empty() ? "a machine that did not say which" : std::string(utf8Prefix(origin, longest));
}

/// Its clock may be, too.
std::string timeText(Date given)
{
    const auto text = utcTime(given);
    return text.empty() ? "an unknown time" : text;
}

std::string valuesText(const SharedBatteryState& command)
{
    const auto onOff = [](bool isOn) { return isOn ? " on" : " off"; };
    std::string text;
    const auto add = [&](const std::string& value) { text += (text.empty() ? "" : ", ") + value; };
    if (const auto limit = command.remoteChargeLimit; limit && isLimit(*limit))
        add("limit " + std::to_string(std::lround(*limit)) + " %");
    if (command.remoteAppleMode) add(std::string("Auto-Protect") + onOff(*command.remoteAppleMode));
    if (command.isStorageModeEnabled) add(std::string("storage mode") + onOff(*command.isStorageModeEnabled));
    return text.empty() ? "no value that could be" : text;
}

} // namespace

RemoteCommands::RemoteCommands(BatteryModel& model)
    : model_(model),
      manager_(CloudKitManager::shared()),
      clock_(Platform::current().clock),
      log_(Platform::current().log)
{
}

void RemoteCommands::forget()
{
    own_.reset();
    isUnapplied_ = false;
    taken_.reset();
}

void RemoteCommands::read(const std::optional<DeviceReport>& own)
{
    isUnapplied_ = own.has_value();
    if (!own) return;
    own_ = own;
    if (!taken_ && own->inForce) taken_ = own->inForce->commandTaken; // by the run before this one
    warnIfNotTaken();
}

void RemoteCommands::apply()
{
    if (!std::exchange(isUnapplied_, false) || !isAccepting_ || !isFresh() || isOverruled()) return;
    bool hasChanged = false;
    const auto assign = [&](auto& property, const auto& wanted) {
        if (!wanted || *wanted == property.get()) return;
        // What the daemon told last is echoed first: of a message only that counts which differs from the
        // one before.
        if (!std::exchange(hasChanged, true)) model_.syncSettingsToDaemon();
        property.set(*wanted);
    };
    const auto command = own_->state;
    applied_ = command.commandTimestamp;
    if (isLimit(command.remoteChargeLimit.value_or(0)))
        assign(model_.customChargeLimit, command.remoteChargeLimit);
    assign(model_.isAppleRecommendedModeEnabled, command.remoteAppleMode);
    assign(model_.isStorageModeEnabled, command.isStorageModeEnabled);
    if (hasChanged) model_.syncSettingsToDaemon();
}

void RemoteCommands::changedByPerson(SettingsMask fields, const ChargingSettings& values)
{
    fields &= commandable();
    if (fields.none() || !isFresh()) return;
    overruled_ = own_->state.commandTimestamp;
    lastDeed_ = clock_->now();
    wished_ = combined(wished_, values, fields);
    wishedFields_ |= fields;
}

/// What contradicts a person's wish in an answer to this client alone is a refusal; in an announcement it may
/// just be older.
void RemoteCommands::settingsTold(const SettingsTold& told)
{
    held_ = told.held;
    isDaemonThere_ = true;
    changedByPerson(told.byOthers, told.held);
    if (!told.isAnswer || (differing(wished_, told.held) & wishedFields_).none()) return;
    wishedFields_.reset();
    overruled_.reset();
}

void RemoteCommands::settle()
{
    if (!isDaemonThere_) return;
    if (wishedFields_.any() && (differing(wished_, *held_) & wishedFields_).none()) {
        wishedFields_.reset();
        if (isFresh())
            manager_.syncRemoteControl(model_.customChargeLimit.get(),
                                       model_.isAppleRecommendedModeEnabled.get(),
                                       model_.isStorageModeEnabled.get(), std::nullopt);
    }
    noteTaken();
}

std::optional<SettingsInForce> RemoteCommands::inForce() const
{
    auto settings = own_ ? own_->inForce : std::nullopt;
    if (held_)
        settings = {.limit = held_->customChargeLimit,
                    .isAutoProtectOn = held_->isAppleRecommendedMode,
                    .isStorageModeOn = held_->isStorageModeEnabled};
    if (!settings) return std::nullopt;
    settings->acceptsCommands = isAccepting_ && isDaemonThere_;
    settings->commandTaken = taken_;
    return settings;
}

/// A time that is yet to come is fresh: the other machine's clock may be ahead.
bool RemoteCommands::isFresh() const
{
    const auto given = own_ ? own_->state.commandTimestamp : std::nullopt;
    return given && clock_->now() - *given < freshness;
}

bool RemoteCommands::isOwn() const
{
    return own_->commandOrigin && own_->commandOrigin->ends_with("(" + manager_.currentDeviceID() + ")");
}

/// A command of this machine's own that is older than a person's last change was on its way then.
bool RemoteCommands::isOverruled() const
{
    const auto given = own_->state.commandTimestamp;
    return overruled_ == given || (isOwn() && *given < lastDeed_);
}

bool RemoteCommands::isHeld() const
{
    const auto& command = own_->state;
    return isDaemonThere_ &&
           command.remoteChargeLimit.value_or(held_->customChargeLimit) == held_->customChargeLimit &&
           command.remoteAppleMode.value_or(held_->isAppleRecommendedMode) == held_->isAppleRecommendedMode &&
           command.isStorageModeEnabled.value_or(held_->isStorageModeEnabled) == held_->isStorageModeEnabled;
}

void RemoteCommands::noteTaken()
{
    const auto given = own_ ? own_->state.commandTimestamp : std::nullopt;
    if (!given || applied_ != given || taken_ == given || isOverruled() || !isHeld()) return;
    taken_ = given;
    if (!isOwn()) log_->info(category, "Took over a command of " + described() + ".");
}

/// Asked at a reading, so that what the reading before it had applied has had its time.
void RemoteCommands::warnIfNotTaken()
{
    const auto given = own_->state.commandTimestamp;
    if (!given || applied_ != given || taken_ == given || warnedOf_ == given || isOverruled()) return;
    warnedOf_ = given;
    log_->warning(category, "Could not take over a command of " + described() +
                                ": the daemon does not hold to it. It is tried again each minute until it "
                                "is five minutes old.");
}

std::string RemoteCommands::described() const
{
    return originText(own_->commandOrigin) + ", given at " + timeText(*own_->state.commandTimestamp) + ": " +
           valuesText(own_->state);
}

} // namespace velmora
