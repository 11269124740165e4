// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "LinuxPlatform.h"
#include "account/AccountSetup.h"
#include "alerts/CalendarConsent.h"
#include "alerts/ChargeNotices.h"
#include "alerts/TravelCharge.h"
#include "fleet/EcosystemSync.h"
#include "link/XPCClient.h"
#include "model/BatteryModel.h"

#include <functional>
#include <memory>
#include <optional>

namespace velmora {

/// The one model of this run and the services that feed it, created in the order of their dependencies. The
/// model's settings follow those that the daemon holds, and one preference that it does not. What the daemon
/// tells of charging becomes notices, as this user wants them, and what the calendar tells of journeys a
/// charge before them. Main thread only.
class App {
public:
    explicit App(LinuxPlatform& platform);

    BatteryModel& model() { return model_; }

    CalendarConsent& calendarConsent() { return calendarConsent_; }
    TravelCharge& travelCharge() { return travelCharge_; }
    EcosystemSync& ecosystemSync() { return ecosystemSync_; }
    AccountSetup& account() { return account_; }

    /// Has the daemon look at the machine, which it does seldom while the firmware holds the charge. What is
    /// new comes with its pushes.
    void askDaemon()
    {
        client_->fetchCurrentState([](const HSBatteryState&) {});
    }

    /// No daemon is running: the model shows its initial values, or the last ones received.
    bool isDaemonMissing() const { return client_->isDaemonMissing(); }
    /// Called when that may have changed.
    std::function<void()> onDaemonPresence;

    /// The daemon's last report of the charger; nothing without a daemon, or before its first report.
    std::optional<ChargerReport> charger() const { return client_->charger(); }
    /// Called when that has changed.
    std::function<void()> onChargerChange;

    /// Does what a person asks for, who may be asked for a password; see BatteryModel and XPCClient.
    void asPerson(const std::function<void()>& act) { model_.asPerson(act); }
    /// Why the daemon refused what a person asked for last, as one of `refusedTexts`; empty where it has not.
    /// Tells of a change as of one of the charger's.
    const std::string& refusal() const { return client_->refusal(); }

    /// The model's settings are those that the daemon holds for this user, no more the initial ones.
    bool hasSettings() const { return hasSettings_; }

private:
    void wireFleet();
    void rememberLowBatteryNotice();
    void takeEvent(const ChargeEvent& event);
    void takeLevel();
    NoticeWishes noticeWishes() const;
    TravelCharge::Hands travelHands();
    std::optional<TravelCharge::Charger> travelCharger() const;

    std::shared_ptr<XPCClient> client_;
    BatteryModel model_;
    ChargeNotices notices_;
    bool hasSettings_ = false;
    Subscription lowBatteryNotice_;
    CalendarConsent calendarConsent_;
    TravelCharge travelCharge_;
    EcosystemSync ecosystemSync_{CloudKitManager::shared()};
    AccountSetup account_;
    Subscription levels_;
    Subscription modelChanges_;
    Subscription heat_;
    Subscription commandsSwitch_;
};

} // namespace velmora
