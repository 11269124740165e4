// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "base/Observable.h"
#include "model/RemoteCommands.h"
#include "platform/Debouncer.h"
#include "platform/MainLoop.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace velmora {

class BatteryModel;

/// The model's share in the fleet. Once a minute it uploads this machine's state, takes over a command that
/// another machine has written into this machine's record, and lists the fleet. It sleeps while the manager
/// has no database.
///
/// The first device of the first listing is selected and shown. It may be another one: so the daemon is asked
/// for this machine's state right away, and nothing is sent, neither to the daemon nor to the others, until
/// it has answered. What was to be sent is sent then, and what a person has set meanwhile is set again, where
/// nobody has set it elsewhere since. The daemon is asked until it answers, whatever becomes of the database.
/// Main thread only.
class FleetPolling {
    Lifetime lifetime_;

public:
    /// What only the model itself can do.
    struct Hands {
        std::function<void(const SharedBatteryState&)> show; ///< a device's state, as if it were this one's
        /// Asks the daemon for its state and shows it, then calls `answered`; drops the answer to an older
        /// question. False where there is no daemon client to ask.
        std::function<bool()> ask;
        /// The model shows what was told of this machine, rather than what it has begun with.
        std::function<bool()> isToldOf;
    };

    static constexpr std::chrono::seconds interval{60};
    /// After which a daemon that has not answered is asked again.
    static constexpr std::chrono::seconds patience{5};
    /// After which the others are told what is in force here since.
    static constexpr std::chrono::seconds quiet{1};

    FleetPolling(BatteryModel& model, Hands hands);

    /// Begins to sleep or to tick, the first tick one interval after there is a database.
    void start();
    void tick();
    void fetchStates();
    /// Likewise, unless a listing is under way, whose answer is as good.
    void refresh()
    {
        if (listings_ == 0) fetchStates();
    }

    /// The daemon is to answer first.
    bool isHoldingBack() const { return isHoldingBack_; }
    /// All settings, once the daemon has answered.
    void sendLater() { isSendingDue_ = true; }
    void answered();

    /// A person has given these settings the values that they have in `values`.
    void changedByPerson(SettingsMask fields, const ChargingSettings& values);

    void acceptCommands(bool isAccepting);
    void settingsTold(const SettingsTold& told);
    /// Another daemon, of which nothing was asked yet.
    void daemonAppeared();
    void daemonGone();

private:
    void follow(bool hasDatabase);
    void upload();
    void poll();
    void polled(const std::optional<DeviceReport>& own);
    void listed(std::vector<SharedBatteryState> states);
    bool isFirstDue() const;
    void showFirst(const SharedBatteryState& first);
    void holdBack();
    void askAgain();
    void applyCommand();
    void saveInForce();
    void saveInForceSoon();

    BatteryModel& model_;
    Hands hands_;
    CloudKitManager& manager_;
    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<Log> log_;
    RemoteCommands commands_;
    Debouncer inForceNews_;
    bool isListed_ = false;                   ///< this machine has a record with its state
    std::optional<SettingsInForce> recorded_; ///< what that says to be in force
    int listings_ = 0;                        ///< under way
    bool isFirstDone_ = false;                ///< a device was shown, or chosen, at a first listing
    bool isDaemonMissing_ = false;
    bool isHoldingBack_ = false;
    bool isWarned_ = false; ///< of that
    bool isSendingDue_ = false;
    bool isUploadDue_ = false;
    SettingsMask personsFields_; ///< set by a person while the daemon's answer was waited for
    ChargingSettings persons_;
    MainLoop::Timer timer_;
    MainLoop::Timer asking_;
    Subscription database_;
    Subscription uploads_;
};

} // namespace velmora
