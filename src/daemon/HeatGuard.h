// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "base/Lifetime.h"
#include "charging/HeatPause.h"
#include "platform/Complaints.h"

#include <chrono>
#include <functional>
#include <optional>

namespace velmora {

/// Keeps a pause for heat from lasting after its reason is gone. The pause is saved in the state directory
/// before the charger is written to, so that it can be lifted after a crash, and it is lifted before the
/// machine sleeps. Main thread only.
class HeatGuard {
public:
    struct Ports {
        Log& log;
        /// Saves what the daemon remembers, `isNoted` with it; `done` is told whether that is on the disk.
        std::function<void(std::function<void(bool isSaved)> done)> save;
        /// Has the machine wait with its sleep until the pause is lifted, or no longer.
        std::function<void(bool)> delaySleep;
        std::function<void()> changed; ///< the charger is to be told anew
    };

    /// `isNoted`: the last run ended with a pause in force, as far as anybody knows. `patience`: see
    /// HeatPause.
    HeatGuard(Ports ports, bool isNoted, std::chrono::seconds patience);

    void observe(const HeatPause::Facts& facts, std::chrono::milliseconds sinceBoot);

    /// The level, whole percent, at which charging is to wait now; absent where it is not to.
    std::optional<int> pausedAt() const;
    bool isNoted() const { return isNoted_; }
    bool isCool() const { return rules_.isCool(); }
    /// See HeatPause::isPossible.
    bool isPossible() const { return rules_.isPossible(); }

    /// The charger has been told of the pause: whether for the first time since it began.
    bool isFirstAttempt();
    /// See HeatPause::giveUp.
    void giveUp(std::optional<int> end) { rules_.giveUp(end); }

    /// The charger has been told to do as without a pause; `isRestored`: and does.
    void lifted(bool isRestored);

    /// The machine is going to sleep. `done` is called once the charger does as without a pause, or cannot.
    /// Looks a minute later, by the time since boot, mean that it is awake, whether `wake` is called or not.
    void goToSleep(std::chrono::milliseconds sinceBoot, std::function<void()> done);
    void wake() { asleepSince_.reset(); }

private:
    void noted(bool isSaved);

    Lifetime lifetime_;
    Ports ports_;
    Complaints complaints_;
    HeatPause rules_;
    bool isNoted_;                                         ///< in what the daemon remembers
    bool isOnDisk_ = false;                                ///< the note of this pause
    bool isNew_ = false;                                   ///< the charger has not been told
    std::optional<std::chrono::milliseconds> asleepSince_; ///< since boot; or about to be
    std::function<void()> sleep_;                          ///< waits for the charger
};

} // namespace velmora
