// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#include "model/FleetPolling.h"

#include "model/BatteryModel.h"
#include "platform/Platform.h"

#include <utility>

namespace velmora {

FleetPolling::FleetPolling(BatteryModel& model, Hands hands)
    : model_(model),
      hands_(std::move(hands)),
      manager_(CloudKitManager::shared()),
      loop_(Platform::current().mainLoop),
      log_(Platform::current().log),
      commands_(model),
      inForceNews_(*loop_, quiet, [this] { saveInForce(); })
{
}

void FleetPolling::start()
{
    follow(manager_.hasDatabase.get());
    database_ = manager_.hasDatabase.observe([this](bool hasDatabase) { follow(hasDatabase); });
    uploads_ = manager_.lastSyncDate.observe([this](const auto&) {
        isListed_ = true;
        saveInForceSoon();
    });
}

/// Another database: what was asked of the one before is not answered any more.
void FleetPolling::follow(bool hasDatabase)
{
    listings_ = 0;
    isListed_ = false;
    recorded_.reset();
    commands_.forget();
    timer_ = hasDatabase ? loop_->every(interval, [this] { tick(); }) : nullptr;
    if (!hasDatabase && !model_.fleetStates.get().empty()) model_.fleetStates.set({});
}

void FleetPolling::tick()
{
    upload();
    poll();
    fetchStates();
}

/// A battery that nobody has told of yet is no news for the others.
void FleetPolling::upload()
{
    if (isHoldingBack_ || !hands_.isToldOf()) {
        isUploadDue_ = true;
        return;
    }
    manager_.syncState(model_.percentage.get(), model_.chargingState.get() == ChargingState::charging,
                       std::string(ThermalMonitorService::rawValue(model_.thermalState.get())));
}

void FleetPolling::poll()
{
    manager_.fetchLatestReport(std::nullopt, lifetime_.guard([this](const auto& own) { polled(own); }));
}

void FleetPolling::polled(const std::optional<DeviceReport>& own)
{
    commands_.read(own);
    isListed_ = own && own->lastUpdate; // another machine may have removed it
    recorded_ = own ? own->inForce : std::nullopt;
    // A listing that is still under way may show another machine first.
    const bool mayBeFirst = listings_ > 0 && isFirstDue();
    if (!mayBeFirst) applyCommand();
    saveInForce();
}

void FleetPolling::fetchStates()
{
    ++listings_;
    manager_.fetchAllDeviceStates(lifetime_.guard([this](auto states) { listed(std::move(states)); }));
}

void FleetPolling::listed(std::vector<SharedBatteryState> states)
{
    --listings_;
    const auto first = states.empty() ? std::nullopt : std::optional(states.front());
    model_.fleetStates.set(std::move(states));
    if (first && isFirstDue()) showFirst(*first);
    if (first) isFirstDone_ = true;
    applyCommand();
    saveInForce(); // at once: listings that come one after another would put off what comes soon
}

bool FleetPolling::isFirstDue() const
{
    return !isFirstDone_ && !model_.selectedDeviceID.get();
}

void FleetPolling::showFirst(const SharedBatteryState& first)
{
    model_.selectedDeviceID.set(first.deviceID);
    hands_.show(first);
    isWarned_ = false;
    holdBack();
}

/// A daemon that is missing is asked as soon as it appears.
void FleetPolling::holdBack()
{
    isHoldingBack_ = hands_.ask();
    asking_ = isHoldingBack_ && !isDaemonMissing_ ? loop_->every(patience, [this] { askAgain(); }) : nullptr;
}

void FleetPolling::askAgain()
{
    if (!std::exchange(isWarned_, true))
        log_->warning("BatteryModel",
                      "The daemon does not answer: changes made here are sent once it has told "
                      "this machine's state. It is asked again every five seconds.");
    hands_.ask();
}

void FleetPolling::applyCommand()
{
    if (isHoldingBack_) return;
    commands_.apply();
    commands_.settle();
}

void FleetPolling::answered()
{
    if (!std::exchange(isHoldingBack_, false)) return;
    asking_ = nullptr;
    commands_.apply();
    const auto fields = std::exchange(personsFields_, {});
    const bool isSendingDue = std::exchange(isSendingDue_, false);
    if (fields.any())
        model_.asPerson([&] {
            model_.followSettings(persons_, fields);
            model_.syncSettingsToDaemon();
        });
    else if (isSendingDue)
        model_.syncSettingsToDaemon();
    if (std::exchange(isUploadDue_, false)) upload();
    commands_.settle();
    saveInForceSoon();
}

void FleetPolling::changedByPerson(SettingsMask fields, const ChargingSettings& values)
{
    if (fields.none()) return;
    commands_.changedByPerson(fields, values);
    if (!isHoldingBack_) return commands_.settle();
    persons_ = combined(persons_, values, fields);
    personsFields_ |= fields;
}

void FleetPolling::acceptCommands(bool isAccepting)
{
    commands_.accept(isAccepting);
    saveInForceSoon();
}

void FleetPolling::settingsTold(const SettingsTold& told)
{
    personsFields_ &= ~told.byOthers; // which is newer
    commands_.settingsTold(told);
    if (!isHoldingBack_) commands_.settle();
    saveInForceSoon();
}

void FleetPolling::daemonAppeared()
{
    isDaemonMissing_ = false;
    if (isHoldingBack_) holdBack();
}

void FleetPolling::daemonGone()
{
    isDaemonMissing_ = true;
    asking_ = nullptr;
    commands_.daemonGone();
    saveInForceSoon();
}

void FleetPolling::saveInForceSoon()
{
    if (isListed_ && commands_.inForce() != recorded_) inForceNews_.poke();
}

/// Not before this machine's state: the others would see an empty battery.
void FleetPolling::saveInForce()
{
    const auto inForce = commands_.inForce();
    if (isHoldingBack_ || !isListed_ || !inForce || inForce == recorded_) return;
    recorded_ = inForce;
    manager_.saveInForce(*inForce);
}

} // namespace velmora
