// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Mutex.h"
#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/MainLoop.h"
#include "platform/NotificationCenter.h"

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace velmora {

/// Posts the notices of who governs charging, each kind at most once in a quarter of an hour. Nothing is sent
/// before the desktop has given leave, and what was held back is not sent later. The times are in memory
/// only: after a restart each may be sent at once.
///
/// Notices may be sent on any thread. Two of a kind in quick succession, before the desktop has taken the
/// first, may both be delivered.
class NotificationManager {
public:
    static constexpr std::chrono::seconds cooldownPeriod{900};
    /// The action of the travel notice that takes the charge back.
    static constexpr auto cancelTravelCharge = "cancel_travel_charge";

    /// The manager of this process. Main thread only.
    static NotificationManager& shared();

    /// Asks the current platform's desktop for leave.
    NotificationManager();
    NotificationManager(const NotificationManager&) = delete;
    NotificationManager& operator=(const NotificationManager&) = delete;

    void sendChargingPausedNotice();
    void sendChargingResumedNotice();
    void sendLowBatteryNotice() { tellLowBattery({}); }
    using Outcome = std::function<void(bool isTaken)>;
    /// The same notice, and says later on the main thread whether the desktop took it. One that failed or was
    /// not sent at all was not taken.
    void tellLowBattery(const Outcome& told);
    void sendThermalNotice();
    void sendOverrideCompleteNotice();
    /// `source` is a power source's name, "AC Power".
    void sendPowerSourceNotice(const std::string& source);
    /// The notice has an action that takes the charge back; who sends it listens for that.
    void sendSmartContextTravelNotice(const std::optional<std::string>& eventTitle);

    bool isAuthorized() const { return state_->isAuthorized; }

private:
    /// What outlives the manager while the desktop's answer is on its way.
    struct State {
        std::atomic<bool> isAuthorized = false;
        mutable Mutex mutex;
        /// When a notice of that identifier was last taken by the desktop, since boot: a clock that is set
        /// back would hold notices off for as long.
        std::map<std::string, std::chrono::milliseconds, std::less<>>
            lastSentTimestamps VELMORA_GUARDED_BY(mutex);
    };

    void requestAuthorization();
    void send(const std::string& id, std::string title, std::string body, InterruptionLevel priority,
              std::vector<NotificationAction> actions = {}, const Outcome& told = {});
    /// Whether leave is given and the cooldown over.
    bool isDue(const std::string& id) const;
    std::optional<std::chrono::milliseconds> lastSent(const std::string& id) const;

    std::shared_ptr<NotificationCenter> center_;
    std::shared_ptr<Clock> clock_;
    std::shared_ptr<Log> log_;
    std::shared_ptr<MainLoop> loop_;
    std::shared_ptr<State> state_ = std::make_shared<State>();
};

} // namespace velmora
