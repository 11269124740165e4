// SPDX-FileCopyrightText: 2026 The Velmora developers
// SPDX-License-Identifier: GPL-3.0-or-later

#pragma once

#include "charging/ChargePolicy.h"
#include "link/DaemonService.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace velmora {

/// Pauses and resumes charging by hand: takes the commands of clients, asks for their right, and answers each
/// once the charger has followed. Main thread only.
class ManualControl {
public:
    using Decided = std::function<void(const std::optional<Refusal>&)>;
    struct Ports {
        const ChargeReading& reading; ///< as last seen
        std::function<bool()> isChargingAllowed;
        /// Asks for the right to do what `what` says.
        std::function<void(const Caller&, const std::string& what, const Decided&)> authorise;
        /// Logs what was done, and by whom.
        std::function<void(const Caller&, const std::string& what)> logChange;
        std::function<void()> changed; ///< the charger is to follow; `answer` has to be called once it has
    };

    /// Clients that wait for the charger; those past it are answered at once.
    static constexpr std::size_t maximumWaiting = 32;

    /// `state` is that of the last run.
    ManualControl(Ports ports, const ManualCharging& state) : ports_(std::move(ports)), state_(state) {}

    const ManualCharging& state() const { return state_; }
    bool isAsSet() const { return state_.state == ManualCharging::State::asSet; }
    bool isPaused() const { return state_.state == ManualCharging::State::paused; }
    /// Somebody has paused charging and waits for the charger to follow.
    bool isPausing() const { return isPaused() && !waiting_.empty(); }

    /// See DaemonService::controlCharging.
    void control(const Caller& caller, ChargingCommand command, const DaemonService::ChargingReply& reply);

    /// The settings govern again.
    void end() { state_ = {}; }

    /// Answers all who wait.
    void answer();

private:
    ManualCharging after(ChargingCommand command) const;
    void obey(const Caller& caller, ChargingCommand command, const DaemonService::ChargingReply& reply);

    Ports ports_;
    ManualCharging state_;
    std::vector<DaemonService::ChargingReply> waiting_;
};

} // namespace velmora
