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
    return text;
}

/// It has values that can be.
bool isCommand(const SharedBatteryState& state)
{
    return state.commandTimestamp && (isLimit(state.remoteChargeLimit.value_or(0)) || state.remoteAppleMode ||
                                      state.isStorageModeEnabled);
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
    isRewriteDue_ = true;
    if (!taken_ && own->inForce) taken_ = own->inForce->commandTaken; // by the run before this one
    warnIfNotTaken();
}

void RemoteCommands::apply()
{
    if (!std::exchange(isUnapplied_, false) || !isAccepting_ || !isFresh() || isOverruled()) return;
    applied_ = own_->state.commandTimestamp;
    if (isWrittenHere()) return; // with what was in force
    bool hasChanged = false;
    const auto assign = [&](auto& property, const auto& wanted) {
        if (!wanted || *wanted == property.get()) return;
        // What the daemon told last is echoed first: of a message only that counts which differs from the
        // one before.
        if (!std::exchange(hasChanged, true)) model_.syncSettingsToDaemon();
        property.set(*wanted);
    };
    const auto command = own_->state;
    if (isLimit(command.remoteChargeLimit.value_or(0)))
        assign(model_.customChargeLimit, command.remoteChargeLimit);
    assign(model_.isAppleRecommendedModeEnabled, command.remoteAppleMode);
    assign(model_.isStorageModeEnabled, command.isStorageModeEnabled);
    if (hasChanged) model_.syncSettingsToDaemon();
}

void RemoteCommands::changedByPerson(SettingsMask fields, const ChargingSettings& values)
{
    fields &= commandable();
    if (fields.none()) return;
    isOwnWish_ = true;
    remember(fields, values);
}

void RemoteCommands::remember(SettingsMask fields, const ChargingSettings& values)
{
    wish_ = Deed{.at = clock_->now(), .command = isFresh() ? own_->state.commandTimestamp : std::nullopt};
    wished_ = combined(wished_, values, fields);
    wishedFields_ |= fields;
}

/// What contradicts a person's wish in an answer to this client alone is a refusal; in an announcement it may
/// just be older.
void RemoteCommands::settingsTold(const SettingsTold& told)
{
    held_ = told.held;
    if (!std::exchange(isDaemonThere_, true)) isRefused_ = false;
    if (const auto others = told.byOthers & commandable(); others.any()) remember(others, told.held);
    if (!told.isAnswer || (differing(wished_, told.held) & wishedFields_).none()) return;
    wishedFields_.reset();
    wish_.reset();
    isOwnWish_ = false;
}

void RemoteCommands::settle()
{
    if (!isDaemonThere_) return;
    if (wish_ && (differing(wished_, *held_) & wishedFields_).none()) {
        wishedFields_.reset();
        deed_ = std::exchange(wish_, std::nullopt);
        isRewriteDue_ = true;
        if (std::exchange(isOwnWish_, false)) isRefused_ = false;
    }
    if (!wish_) rewrite();
    noteTaken();
}

/// A save that fails is made good after the next reading.
void RemoteCommands::rewrite()
{
    if (!isRewriteDue_ || !isFresh() || !isOverruled()) return;
    isRewriteDue_ = false;
    manager_.syncRemoteControl(held_->customChargeLimit, held_->isAppleRecommendedMode,
                               held_->isStorageModeEnabled, std::nullopt);
}

std::optional<SettingsInForce> RemoteCommands::inForce() const
{
    auto settings = own_ ? own_->inForce : std::nullopt;
    if (held_)
        settings = {.limit = held_->customChargeLimit,
                    .isAutoProtectOn = held_->isAppleRecommendedMode,
                    .isStorageModeOn = held_->isStorageModeEnabled};
    if (!settings) return std::nullopt;
    settings->acceptsCommands = isAccepting_ && isDaemonThere_ && !isRefused_;
    settings->commandTaken = taken_;
    return settings;
}

/// A time that is yet to come is fresh: the other machine's clock may be ahead.
bool RemoteCommands::isFresh() const
{
    return own_ && isCommand(own_->state) && clock_->now() - *own_->state.commandTimestamp < freshness;
}

/// By this run, to overrule another. What others write at the same time may not be told from it.
bool RemoteCommands::isWrittenHere() const
{
    const auto& origin = own_->commandOrigin;
    const auto last = manager_.lastOwnCommand();
    return last && own_->state.commandTimestamp <= last && origin &&
           origin->ends_with("(" + manager_.currentDeviceID() + ")");
}

bool RemoteCommands::isOverruled() const
{
    return isOverruledBy(deed_) || isOverruledBy(wish_);
}

/// A change that is yet to come was made before the clock was set back.
bool RemoteCommands::isOverruledBy(const std::optional<Deed>& deed) const
{
    const auto given = own_->state.commandTimestamp;
    return deed && (given == deed->command || (given < deed->at && deed->at <= clock_->now()));
}

bool RemoteCommands::isHeld() const
{
    const auto& command = own_->state;
    const auto limit = command.remoteChargeLimit.value_or(0);
    return isDaemonThere_ && (!isLimit(limit) || limit == held_->customChargeLimit) &&
           command.remoteAppleMode.value_or(held_->isAppleRecommendedMode) == held_->isAppleRecommendedMode &&
           command.isStorageModeEnabled.value_or(held_->isStorageModeEnabled) == held_->isStorageModeEnabled;
}

void RemoteCommands::noteTaken()
{
    const auto given = own_ ? own_->state.commandTimestamp : std::nullopt;
    if (!given || applied_ != given || taken_ == given || isOverruled() || !isHeld()) return;
    taken_ = given;
    isRefused_ = false;
    if (!isWrittenHere()) log_->info(category, "Took over a command of " + described() + ".");
}

/// Asked at a reading, so that what the reading before it had applied has had its time.
void RemoteCommands::warnIfNotTaken()
{
    const auto given = own_->state.commandTimestamp;
    if (!given || applied_ != given || taken_ == given || isOverruled() || isWrittenHere()) return;
    isRefused_ = true;
    applied_.reset(); // until it is tried again
    if (std::exchange(warnedOf_, given) == given) return;
    log_->warning(category, "Could not take over a command of " + described() +
                                ": the daemon does not hold to it. It is tried again each minute until it "
                                "is five minutes old; the other machines are told that this one takes none "
                                "until a change of its settings succeeds here.");
}

std::string RemoteCommands::described() const
{
    return originText(own_->commandOrigin) + ", given at " + timeText(*own_->state.commandTimestamp) + ": " +
           valuesText(own_->state);
}

} // namespace velmora
